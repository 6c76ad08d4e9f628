([
    (object "{" @start "}" @end)
    (array "[" @start "]" @end)
  ]
  (#set! "scope.byLine")
  (#set! "role" "block"))
