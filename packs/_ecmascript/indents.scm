; Lines inside brackets are a level deeper, and so is what continues a statement.

[
  (arguments)
  (array)
  (array_pattern)
  (class_body)
  (export_clause)
  (formal_parameters)
  (named_imports)
  (object)
  (object_pattern)
  (parenthesized_expression)
  (statement_block)
  (subscript_expression)
  (switch_body)
  (template_substitution)
] @indent.begin

(arguments ")" @indent.branch)
(array "]" @indent.branch)
(array_pattern "]" @indent.branch)
(class_body "}" @indent.branch)
(export_clause "}" @indent.branch)
(formal_parameters ")" @indent.branch)
(named_imports "}" @indent.branch)
(object "}" @indent.branch)
(object_pattern "}" @indent.branch)
(parenthesized_expression ")" @indent.branch)
(statement_block "}" @indent.branch)
(subscript_expression "]" @indent.branch)
(switch_body "}" @indent.branch)
(template_substitution "}" @indent.branch)

; A case has no token that closes it.
([
  (switch_case)
  (switch_default)
] @indent.begin (#set! "indent.open" ""))

[
  (lexical_declaration)
  (return_statement)
  (throw_statement)
  (variable_declaration)
] @indent.begin
(expression_statement (_) @indent.begin)
(pair value: (_) @indent.begin)
(arrow_function) @indent.begin

; Statements without braces.
((if_statement consequence: [
  (break_statement)
  (continue_statement)
  (expression_statement)
  (for_in_statement)
  (for_statement)
  (if_statement)
  (return_statement)
  (throw_statement)
  (while_statement)
] @indent.begin) (#set! "indent.body" ""))
((else_clause [
  (break_statement)
  (continue_statement)
  (expression_statement)
  (for_in_statement)
  (for_statement)
  (return_statement)
  (throw_statement)
  (while_statement)
] @indent.begin) (#set! "indent.body" ""))
((for_statement body: [
  (expression_statement)
  (for_in_statement)
  (for_statement)
  (if_statement)
  (return_statement)
] @indent.begin) (#set! "indent.body" ""))
((for_in_statement body: [
  (expression_statement)
  (for_in_statement)
  (for_statement)
  (if_statement)
  (return_statement)
] @indent.begin) (#set! "indent.body" ""))
((while_statement body: [
  (expression_statement)
  (if_statement)
] @indent.begin) (#set! "indent.body" ""))

; Text whose blanks count, or belong to the writer.
[
  (comment)
  (template_string)
] @indent.auto

; The same while a piece doesn't parse.
(ERROR ["{" "(" "[" "${"] @indent.begin)
(ERROR ["}" ")" "]"] @indent.end)
