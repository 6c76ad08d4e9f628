; The line of a closing brace stays in sight.
([
    (function_declaration body: (statement_block "{" @start "}" @end))
    (generator_function_declaration body: (statement_block "{" @start "}" @end))
    (function_expression body: (statement_block "{" @start "}" @end))
    (generator_function body: (statement_block "{" @start "}" @end))
    (arrow_function body: (statement_block "{" @start "}" @end))
    (method_definition body: (statement_block "{" @start "}" @end))
  ]
  (#set! "scope.byLine")
  (#set! "role" "function"))
((_ (statement_block "{" @start "}" @end)) @_parent
  (#not-has-type? @_parent
    "function_declaration" "generator_function_declaration" "function_expression" "generator_function"
    "arrow_function" "method_definition")
  (#set! "scope.byLine")
  (#set! "role" "block"))
((class_body "{" @start "}" @end)
  (#set! "scope.byLine")
  (#set! "role" "type"))
([
    (object "{" @start "}" @end)
    (object_pattern "{" @start "}" @end)
    (switch_body "{" @start "}" @end)
    (named_imports "{" @start "}" @end)
    (export_clause "{" @start "}" @end)
    (template_string "`" @start "`" @end)
  ]
  (#set! "scope.byLine")
  (#set! "role" "block"))
; Lists whose bracket ends its line. Where something follows it, that is what folds.
([
    (array "[" @start "]" @end)
    (arguments "(" @start ")" @end)
    (formal_parameters "(" @start ")" @end)
    (parenthesized_expression "(" @start ")" @end)
  ] @_list
  (#match? @_list "^.[ \\t]*[\\r\\n]")
  (#set! "scope.byLine")
  (#set! "role" "block"))

; A case, up to the next one
([
    (switch_case value: (_) . ":" @start) @end.after
    (switch_default ":" @start) @end.after
  ]
  (#set! "role" "block"))
