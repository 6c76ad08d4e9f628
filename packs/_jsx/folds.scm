; Elements
((jsx_element open_tag: (_) @start close_tag: (_) @end)
  (#set! "scope.byLine")
  (#set! "role" "tag"))
((jsx_self_closing_element name: (_) @start "/>" @end)
  (#set! "scope.byLine")
  (#set! "role" "tag"))
