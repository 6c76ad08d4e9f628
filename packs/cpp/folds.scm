; inherits: c
; C++.

((lambda_expression body: (compound_statement "{" @start "}" @end))
  (#set! "scope.byLine")
  (#set! "role" "function"))
([
    (template_parameter_list "<" @start ">" @end)
    (template_argument_list "<" @start ">" @end)
    (requirement_seq "{" @start "}" @end)
    (field_initializer_list) @subtree
  ]
  (#set! "scope.byLine")
  (#set! "role" "block"))
((raw_string_literal (raw_string_content) @subtree)
  (#set! "scope.byLine")
  (#set! "role" "block"))
