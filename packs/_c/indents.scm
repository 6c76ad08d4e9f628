; Lines inside braces are a level deeper; what continues a statement is two levels deeper, or aligned with what it continues.

[
  (compound_statement)
  (field_declaration_list)
  (enumerator_list)
] @indent.begin

(compound_statement "}" @indent.branch)
(field_declaration_list "}" @indent.branch)
(enumerator_list "}" @indent.branch)

; The labels of a switch stand as deep as the switch, also where one opens a block.
(case_statement) @indent.branch
(case_statement (compound_statement) @indent.ignore)
(case_statement (compound_statement "}" @indent.dedent))

; Lists in parentheses are aligned with what the first line has of them.
([
  (argument_list)
  (parameter_list)
  (parenthesized_expression)
  (initializer_list)
  (subscript_expression)
] @indent.align (#set! "indent.levels" "2"))

(argument_list ")" @indent.branch)
(parameter_list ")" @indent.branch)
(parenthesized_expression ")" @indent.branch)
(initializer_list "}" @indent.branch)

; Operands stand below each other, and so does what follows a word.
(binary_expression) @indent.align
(return_statement) @indent.align

; What else goes on in another line.
([
  (declaration)
  (field_declaration)
  (type_definition)
] @indent.begin (#set! "indent.levels" "2"))
((expression_statement (_) @indent.begin) (#set! "indent.levels" "2"))

((for_statement condition: (_) @indent.begin)
  (#set! "indent.body" "") (#set! "indent.levels" "2"))

; A label of a jump stands out.
(labeled_statement label: (_) @indent.dedent)

; Statements without braces.
((if_statement consequence: [
  (break_statement)
  (continue_statement)
  (do_statement)
  (expression_statement)
  (for_statement)
  (goto_statement)
  (if_statement)
  (return_statement)
  (switch_statement)
  (while_statement)
] @indent.begin) (#set! "indent.body" "") (#set! "indent.levels" "1"))
((else_clause [
  (break_statement)
  (continue_statement)
  (do_statement)
  (expression_statement)
  (for_statement)
  (goto_statement)
  (return_statement)
  (switch_statement)
  (while_statement)
] @indent.begin) (#set! "indent.body" "") (#set! "indent.levels" "1"))
((while_statement body: [
  (break_statement)
  (continue_statement)
  (expression_statement)
  (for_statement)
  (if_statement)
  (return_statement)
  (switch_statement)
  (while_statement)
] @indent.begin) (#set! "indent.body" "") (#set! "indent.levels" "1"))
((for_statement body: [
  (break_statement)
  (continue_statement)
  (expression_statement)
  (for_statement)
  (if_statement)
  (return_statement)
  (switch_statement)
  (while_statement)
] @indent.begin) (#set! "indent.body" "") (#set! "indent.levels" "1"))

; Directives start their line; the lines of a macro and of a comment stay as they are.
[
  "#if"
  "#ifdef"
  "#ifndef"
  "#elif"
  "#else"
  "#endif"
  "#define"
  "#include"
  (preproc_directive)
] @indent.zero
[
  (comment)
  (preproc_def)
  (preproc_function_def)
] @indent.auto

; The same while a piece doesn't parse.
(ERROR ["{" "(" "["] @indent.begin)
(ERROR ["}" ")" "]"] @indent.end)
