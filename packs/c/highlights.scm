; C, and the part of C++ that is C. Only nodes that both grammars have, in places that both allow.
;
; Where two patterns capture one node, the one of higher priority wins, and then the longer selector. Priorities
; rise with what a pattern knows: 0 the kind of node or its place, 5 its kind and text, 10 an exception from these.

; Names by their kind
(identifier) @variable
(field_identifier) @property
(type_identifier) @type
(statement_identifier) @label
[(primitive_type) (sized_type_specifier)] @type.builtin
((identifier) @constant.uppercase
  (#match? @constant.uppercase "^_*[A-Z][A-Z\\d_]+$")
  (#set! "priority" "5"))
(enumerator name: (identifier) @constant.enumerator
  (#set! "priority" "10"))

; Types: where they are made
(struct_specifier name: (type_identifier) @type.declaration body: (_))
(union_specifier name: (type_identifier) @type.declaration body: (_))
(enum_specifier name: (type_identifier) @type.declaration body: (_))
(type_definition declarator: (type_identifier) @type.declaration)

; Functions: where they are made, and where they are called
(function_declarator declarator: (identifier) @function.declaration)
(call_expression function: (identifier) @function.call)
((call_expression function: (identifier) @function.macro)
  (#match? @function.macro "^_*[A-Z][A-Z\\d_]+$")
  (#set! "priority" "10"))
(call_expression function: (field_expression field: (field_identifier) @function.method))

(parameter_declaration declarator: (identifier) @variable.parameter)
(parameter_declaration declarator: (pointer_declarator declarator: (identifier) @variable.parameter))
(parameter_declaration
  declarator: (pointer_declarator declarator: (pointer_declarator declarator: (identifier) @variable.parameter)))
(parameter_declaration declarator: (array_declarator declarator: (identifier) @variable.parameter))
(parameter_declaration
  declarator: (pointer_declarator declarator: (array_declarator declarator: (identifier) @variable.parameter)))
(parameter_declaration
  declarator: (function_declarator
    declarator: (parenthesized_declarator (pointer_declarator declarator: (identifier) @variable.parameter))))

; The preprocessor
[
  "#define"
  "#elif"
  "#elifdef"
  "#elifndef"
  "#else"
  "#endif"
  "#if"
  "#ifdef"
  "#ifndef"
  "#include"
  (preproc_directive)
] @keyword.directive
(preproc_defined "defined" @keyword.directive)
(preproc_def name: (identifier) @constant.macro
  (#set! "priority" "10"))
(preproc_function_def name: (identifier) @function.macro
  (#set! "priority" "10"))
(preproc_params (identifier) @variable.parameter
  (#set! "priority" "10"))
(preproc_call argument: (preproc_arg) @string.directive)
; A body of one token, which isn't worth a layer of its own.
((preproc_def value: (preproc_arg) @number)
  (#match? @number "^\\s*[-+]?\\.?\\d[\\w.']*\\s*$"))
((preproc_def value: (preproc_arg) @string)
  (#match? @string "^\\s*\\w*\"[^\"]*\"\\s*$"))

; Literals
(comment) @comment
((comment) @comment.doc
  (#match? @comment.doc "^(///[^/]|///$|//!|/\\*\\*[^*/]|/\\*!)"))
(string_literal) @string
(char_literal) @string.char
(system_lib_string) @string.path
(preproc_include path: (string_literal) @string.path)
(escape_sequence) @string.escape
(number_literal) @number
[(true) (false) (null)] @constant.builtin

; Words
[
  "break"
  "case"
  "continue"
  "default"
  "do"
  "else"
  "for"
  "goto"
  "if"
  "return"
  "switch"
  "while"
  "__except"
  "__finally"
  "__leave"
  "__try"
] @keyword.control
["enum" "struct" "typedef" "union"] @keyword.declaration
[
  (storage_class_specifier)
  (type_qualifier)
  (ms_call_modifier)
  "extern"
  "__attribute"
  "__attribute__"
  "__declspec"
  "__extension__"
  "__based"
  "__unaligned"
  "_unaligned"
] @keyword.modifier
[
  "_Alignof"
  "__alignof"
  "__alignof__"
  "_alignof"
  "alignof"
  "offsetof"
  "sizeof"
] @keyword.expression
["__asm" "__asm__" "asm" "_Generic"] @keyword.expression
(gnu_asm_qualifier) @keyword.modifier

; Attributes
(attribute prefix: (identifier) @namespace.path)
(attribute name: (identifier) @attribute
  (#set! "priority" "10"))
(attribute_specifier (argument_list (identifier) @attribute
  (#set! "priority" "10")))
(attribute_specifier (argument_list (call_expression function: (identifier) @attribute
  (#set! "priority" "10"))))
(ms_declspec_modifier (identifier) @attribute
  (#set! "priority" "10"))

; Signs
[
  "!" "!=" "%" "%=" "&" "&&" "&=" "*" "*=" "+" "++" "+=" "-" "--" "-=" "->" "..." "/" "/=" "<" "<<" "<<=" "<=" "="
  "==" ">" ">=" ">>" ">>=" "?" "^" "^=" "|" "|=" "||" "~"
] @operator
(conditional_expression ":" @operator
  (#set! "priority" "10"))
["," "." ":" ";" "::"] @punctuation.delimiter
["(" ")" "[" "]" "{" "}" "[[" "]]"] @punctuation.bracket
