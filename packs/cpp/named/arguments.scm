; inherits: c

(function_declarator
  declarator: (identifier)
  parameters: (parameter_list
    (parameter_declaration
      (type_qualifier)? @type
      type: (_) @type
      declarator: [
        (reference_declarator "&" @type (identifier) @name)
        (reference_declarator "&&" @type (identifier) @name)
        (pointer_declarator "*" @type declarator: (reference_declarator "&" @type (identifier) @name))
      ]) @subtree))
(function_declarator
  declarator: [
    (field_identifier)
    (qualified_identifier)
    (operator_name)
    (template_function)
  ]
  parameters: (parameter_list
    (parameter_declaration
      (type_qualifier)? @type
      type: (_) @type
      declarator: [
        (identifier) @name
        (pointer_declarator "*" @type declarator: (identifier) @name)
        (pointer_declarator "*" @type declarator: (pointer_declarator "*" @type declarator: (identifier) @name))
        (array_declarator declarator: (identifier) @name)
        (pointer_declarator "*" @type declarator: (array_declarator declarator: (identifier) @name))
        (reference_declarator "&" @type (identifier) @name)
        (reference_declarator "&&" @type (identifier) @name)
        (pointer_declarator "*" @type declarator: (reference_declarator "&" @type (identifier) @name))
        (function_declarator
          declarator: (parenthesized_declarator (pointer_declarator declarator: (identifier) @name)))
      ]) @subtree))

; Arguments with a default, and packs of them
(function_declarator
  declarator: [
    (identifier)
    (field_identifier)
    (qualified_identifier)
    (operator_name)
    (template_function)
  ]
  parameters: (parameter_list
    [
      (optional_parameter_declaration
        (type_qualifier)? @type
        type: (_) @type
        declarator: [
          (identifier) @name
          (pointer_declarator "*" @type declarator: (identifier) @name)
          (reference_declarator "&" @type (identifier) @name)
          (reference_declarator "&&" @type (identifier) @name)
        ])
      (variadic_parameter_declaration
        (type_qualifier)? @type
        type: (_) @type
        declarator: [
          (variadic_declarator (identifier) @name)
          (reference_declarator "&" @type (variadic_declarator (identifier) @name))
          (reference_declarator "&&" @type (variadic_declarator (identifier) @name))
        ])
    ] @subtree))
