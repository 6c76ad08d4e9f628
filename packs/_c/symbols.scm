; What C and C++ share

; Variables of the file; in a body, they are no part of an outline.
((_
  (declaration
    declarator: [
      (identifier) @name
      (pointer_declarator declarator: (identifier) @name)
      (array_declarator declarator: (identifier) @name)
      (init_declarator declarator: [
        (identifier) @name
        (array_declarator declarator: (identifier) @name)
        (pointer_declarator declarator: (identifier) @name)
        (pointer_declarator declarator: (array_declarator declarator: (identifier) @name))
      ])
    ]) @subtree) @_parent
  (#has-type? @_parent
    "translation_unit" "declaration_list" "linkage_specification" "friend_declaration"
    "preproc_ifdef" "preproc_if" "preproc_else" "preproc_elif")
  (#set! "role" "variable")
  (#set-if-match! @subtree "^(?:\\[\\[[^\\]]*\\]\\]\\s*)?(?:(?:static|inline|extern|thread_local)\\s+)*(?:constexpr|const)\\b" "role" "constant"))

; Types
((struct_specifier name: (type_identifier) @name body: (_)) @subtree
  (#set! "role" "struct"))
((union_specifier name: (type_identifier) @name body: (_)) @subtree
  (#set! "role" "union"))
((enum_specifier name: (type_identifier) @name body: (_)) @subtree
  (#set! "role" "enum"))
((type_definition type: (struct_specifier !name body: (_)) declarator: (type_identifier) @name) @subtree
  (#set! "role" "struct"))
((type_definition type: (union_specifier !name body: (_)) declarator: (type_identifier) @name) @subtree
  (#set! "role" "union"))
((type_definition type: (enum_specifier !name body: (_)) declarator: (type_identifier) @name) @subtree
  (#set! "role" "enum"))

; Other names for types. A structure that gets a second name has its line already.
((type_definition
  type: [
    (primitive_type)
    (sized_type_specifier)
    (type_identifier)
    (struct_specifier !body)
    (union_specifier !body)
    (enum_specifier !body)
  ]
  declarator: [
    (type_identifier) @name
    (pointer_declarator declarator: (type_identifier) @name)
    (array_declarator declarator: (type_identifier) @name)
    (function_declarator declarator: (parenthesized_declarator (pointer_declarator declarator: (type_identifier) @name)))
  ]) @subtree
  (#set! "role" "type"))

; Members
((field_declaration
  declarator: [
    (field_identifier) @name
    (pointer_declarator declarator: (field_identifier) @name)
    (pointer_declarator declarator: (pointer_declarator declarator: (field_identifier) @name))
    (array_declarator declarator: (field_identifier) @name)
    (pointer_declarator declarator: (array_declarator declarator: (field_identifier) @name))
    (function_declarator declarator: (parenthesized_declarator (pointer_declarator declarator: (field_identifier) @name)))
  ]) @subtree
  (#set! "role" "property")
  (#set-if-match! @subtree "^(?:(?:inline|constexpr|mutable|const)\\s+)*static\\b" "role" "static-property"))
((enumerator name: (_) @name) @subtree
  (#set! "role" "enum-member"))

; Macros. One without a value guards a header or is a switch.
((preproc_def name: (_) @name value: (_)) @subtree
  (#set! "role" "constant"))
((preproc_function_def name: (_) @name parameters: (_) @arguments.target) @subtree
  (#set! "arguments.query" "arguments")
  (#set! "role" "function"))
