; inherits: _c

; A namespace doesn't deepen what is in it. Access specifiers stand as deep as their class.
(access_specifier) @indent.branch

([
  (condition_clause)
  (template_argument_list)
  (template_parameter_list)
] @indent.align (#set! "indent.levels" "2"))
[
  (co_return_statement)
  (co_yield_statement)
  (throw_statement)
] @indent.align

; Initializers stand behind their colon, which stands two levels deeper than the constructor.
((field_initializer_list) @indent.begin (#set! "indent.body" "") (#set! "indent.levels" "2"))
(field_initializer_list) @indent.align
((base_class_clause) @indent.begin (#set! "indent.body" "") (#set! "indent.levels" "2"))

([
  (alias_declaration)
  (concept_definition)
  (static_assert_declaration)
] @indent.begin (#set! "indent.levels" "2"))
((for_range_loop right: (_) @indent.begin)
  (#set! "indent.body" "") (#set! "indent.levels" "2"))
((requires_clause) @indent.begin (#set! "indent.body" "") (#set! "indent.levels" "1"))
; The body of a lambda is as deep as what it is the value of.
(declaration declarator: (init_declarator value: (lambda_expression))) @indent.ignore
(return_statement (lambda_expression)) @indent.ignore
(requirement_seq) @indent.begin
(requirement_seq "}" @indent.branch)

((for_range_loop body: [
  (break_statement)
  (continue_statement)
  (expression_statement)
  (for_range_loop)
  (for_statement)
  (if_statement)
  (return_statement)
  (switch_statement)
  (while_statement)
] @indent.begin) (#set! "indent.body" "") (#set! "indent.levels" "1"))
((for_statement body: (for_range_loop) @indent.begin)
  (#set! "indent.body" "") (#set! "indent.levels" "1"))
((if_statement consequence: [
  (co_return_statement)
  (for_range_loop)
  (throw_statement)
] @indent.begin) (#set! "indent.body" "") (#set! "indent.levels" "1"))
((else_clause [
  (co_return_statement)
  (for_range_loop)
  (throw_statement)
] @indent.begin) (#set! "indent.body" "") (#set! "indent.levels" "1"))

(raw_string_literal) @indent.auto

; The brace of a namespace whose end is missing.
(ERROR "namespace" . [(namespace_identifier) (nested_namespace_specifier)]? . "{" @indent.ignore)
