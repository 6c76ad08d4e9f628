; inherits: c
; C++.

; Names
(namespace_identifier) @namespace
(namespace_definition name: (namespace_identifier) @namespace.declaration)
(namespace_definition name: (nested_namespace_specifier (namespace_identifier) @namespace.declaration))
(namespace_alias_definition name: (namespace_identifier) @namespace.declaration)
; What a name is qualified with may as well be a type: the capital tells.
((namespace_identifier) @type.class
  (#match? @type.class "^[A-Z]")
  (#set! "priority" "5"))
(using_declaration "namespace" (identifier) @namespace)
((using_declaration (qualified_identifier name: (identifier) @type))
  (#match? @type "^[A-Z]"))
(auto) @type.builtin
(this) @variable.builtin
(literal_suffix) @function.literal

; Types: where they are made
(class_specifier name: (type_identifier) @type.declaration body: (_))
(class_specifier name: (qualified_identifier name: (type_identifier) @type.declaration) body: (_))
(struct_specifier name: (qualified_identifier name: (type_identifier) @type.declaration) body: (_))
(alias_declaration name: (type_identifier) @type.declaration)
(concept_definition name: (identifier) @type.declaration)
(type_parameter_declaration (type_identifier) @type.parameter)
(optional_type_parameter_declaration name: (type_identifier) @type.parameter)
(variadic_type_parameter_declaration (type_identifier) @type.parameter)

; Functions: where they are made
(function_declarator declarator: (field_identifier) @function.method.declaration)
(function_declarator declarator: (qualified_identifier name: (identifier) @function.declaration))
(function_declarator
  declarator: (qualified_identifier name: (qualified_identifier name: (identifier) @function.declaration)))
(function_declarator
  declarator: (qualified_identifier
    name: (qualified_identifier name: (qualified_identifier name: (identifier) @function.declaration))))
(function_declarator declarator: (template_function name: (identifier) @function.declaration))
(destructor_name (identifier) @function.constructor)
(destructor_name "~" @function.constructor)
(operator_name "operator" @keyword.declaration)

; and where they are called
(call_expression function: (qualified_identifier name: (identifier) @function.call))
(call_expression function: (qualified_identifier name: (qualified_identifier name: (identifier) @function.call)))
(call_expression
  function: (qualified_identifier
    name: (qualified_identifier name: (qualified_identifier name: (identifier) @function.call))))
(template_function name: (identifier) @function.call)
(template_method name: (field_identifier) @function.method)
(call_expression
  function: (field_expression field: (qualified_identifier name: (field_identifier) @function.method)))
((template_function name: (identifier) @keyword.expression)
  (#eq? @keyword.expression "const_cast" "dynamic_cast" "reinterpret_cast" "static_cast")
  (#set! "priority" "10"))

; Parameters
(parameter_declaration declarator: (reference_declarator (identifier) @variable.parameter))
(parameter_declaration
  declarator: (pointer_declarator declarator: (reference_declarator (identifier) @variable.parameter)))
(optional_parameter_declaration declarator: (identifier) @variable.parameter)
(optional_parameter_declaration declarator: (pointer_declarator declarator: (identifier) @variable.parameter))
(optional_parameter_declaration declarator: (reference_declarator (identifier) @variable.parameter))
(variadic_parameter_declaration declarator: (variadic_declarator (identifier) @variable.parameter))
(variadic_parameter_declaration
  declarator: (reference_declarator (variadic_declarator (identifier) @variable.parameter)))

; Literals
(raw_string_literal) @string
(raw_string_literal ["(" ")"] @string.delimiter
  (#set! "priority" "10"))

; Words
["catch" "co_return" "co_yield" "throw" "try"] @keyword.control
[
  "class"
  "concept"
  "namespace"
  "template"
  "typename"
  "using"
] @keyword.declaration
[
  (access_specifier)
  (virtual_specifier)
  "virtual"
  "constexpr"
  "explicit"
  "friend"
  "inline"
  "noexcept"
  (ref_qualifier)
] @keyword.modifier
[
  "and"
  "and_eq"
  "bitand"
  "bitor"
  "co_await"
  "compl"
  "decltype"
  "delete"
  "new"
  "not"
  "not_eq"
  "or"
  "or_eq"
  "requires"
  "static_assert"
  "xor"
  "xor_eq"
] @keyword.expression
(default_method_clause "default" @keyword.modifier
  (#set! "priority" "10"))
(delete_method_clause "delete" @keyword.modifier
  (#set! "priority" "10"))
(alignas_qualifier ["alignas" "_Alignas"] @keyword.modifier)

; Signs
["<=>" "->*" ".*" "()" "[]" "\"\""] @operator
(lambda_default_capture) @operator
(template_argument_list ["<" ">"] @punctuation.bracket)
(template_parameter_list ["<" ">"] @punctuation.bracket)
