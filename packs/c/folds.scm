; C.

; Bodies of functions fold as such, other blocks as blocks. The line of a brace stays in sight.
((function_definition body: (compound_statement "{" @start "}" @end))
  (#set! "scope.byLine")
  (#set! "role" "function"))
((_ (compound_statement "{" @start "}" @end)) @_parent
  (#not-has-type? @_parent "function_definition" "lambda_expression")
  (#set! "scope.byLine")
  (#set! "role" "block"))
([
    (field_declaration_list "{" @start "}" @end)
    (enumerator_list "{" @start "}" @end)
  ]
  (#set! "scope.byLine")
  (#set! "role" "type"))
([
    (declaration_list "{" @start "}" @end)
    (initializer_list "{" @start "}" @end)
  ]
  (#set! "scope.byLine")
  (#set! "role" "block"))
; Lists whose bracket ends its line. Where something follows it, that is what folds.
([
    (argument_list "(" @start ")" @end)
    (parameter_list "(" @start ")" @end)
  ] @_list
  (#match? @_list "^.[ \\t]*[\\r\\n]")
  (#set! "scope.byLine")
  (#set! "role" "block"))

; Branches of the preprocessor, each up to the next one
([
    (preproc_if condition: (_) @start !alternative "#endif" @end)
    (preproc_if condition: (_) @start alternative: (_) @end)
    (preproc_ifdef name: (_) @start !alternative "#endif" @end)
    (preproc_ifdef name: (_) @start alternative: (_) @end)
    (preproc_elif condition: (_) @start alternative: (_) @end)
    (preproc_elif condition: (_) @start !alternative) @end.after
    (preproc_else "#else" @start) @end.after
  ]
  (#set! "scope.byLine")
  (#set! "role" "block"))

((preproc_function_def value: (_) @subtree)
  (#set! "role" "function"))
