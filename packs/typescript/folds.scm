; inherits: _ecmascript
; TypeScript.

([
    (interface_body "{" @start "}" @end)
    (enum_body "{" @start "}" @end)
    (object_type "{" @start "}" @end)
  ]
  (#set! "scope.byLine")
  (#set! "role" "type"))
((type_parameters "<" @start ">" @end)
  (#set! "scope.byLine")
  (#set! "role" "block"))
