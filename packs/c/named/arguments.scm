; The arguments of a function with a name: those of a pointer to one, or of a macro's use, are others.
(function_declarator
  declarator: (identifier)
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
        (function_declarator
          declarator: (parenthesized_declarator (pointer_declarator declarator: (identifier) @name)))
      ]) @subtree))
(preproc_params (identifier) @name @subtree)
