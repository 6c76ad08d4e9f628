; inherits: _ecmascript
; JavaScript.

((field_definition property: (_) @name value: (_)? @_value) @subtree
  (#not-has-type? @_value "arrow_function" "function_expression" "generator_function")
  (#set! "role" "property")
  (#set-if-match! @subtree "^static\\s" "role" "static-property"))
((field_definition
  property: (_) @name
  value: [
    (arrow_function parameters: (_) @arguments.target)
    (arrow_function parameter: (_) @arguments.target)
    (function_expression parameters: (_) @arguments.target)
  ]) @subtree
  (#set! "arguments.query" "arguments")
  (#set! "role" "method"))
