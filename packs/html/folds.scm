; What stands between the tags. The line of the end tag stays in sight.
([
    (element (start_tag) @start (end_tag) @end)
    (script_element (start_tag) @start (end_tag) @end)
    (style_element (start_tag) @start (end_tag) @end)
  ]
  (#set! "scope.byLine")
  (#set! "role" "tag"))
; A tag of several lines
([
    (start_tag (tag_name) @start ">" @end)
    (self_closing_tag (tag_name) @start "/>" @end)
  ]
  (#set! "scope.byLine")
  (#set! "role" "tag"))
