; inherits: _ecmascript
; TypeScript.

; Types
((abstract_class_declaration name: (_) @name) @subtree
  (#set! "role" "class"))
((interface_declaration name: (_) @name) @subtree
  (#set! "role" "interface"))
((type_alias_declaration name: (_) @name) @subtree
  (#set! "role" "type"))
((enum_declaration name: (_) @name) @subtree
  (#set! "role" "enum"))
([
    (enum_body name: (_) @name @subtree)
    (enum_assignment name: (_) @name) @subtree
  ]
  (#set! "role" "enum-member"))
([
    (internal_module name: (_) @name)
    (module name: (_) @name)
  ] @subtree
  (#strip! @name "[\"']")
  (#set! "role" "package"))

; Members
((public_field_definition name: (_) @name value: (_)? @_value) @subtree
  (#not-has-type? @_value "arrow_function" "function_expression" "generator_function")
  (#set! "role" "property")
  (#set-if-match! @subtree "^(?:(?:public|private|protected|static|override|readonly|async|abstract|declare|accessor)\\s+)*static\\s" "role" "static-property"))
((public_field_definition
  name: (_) @name
  value: [
    (arrow_function parameters: (_) @arguments.target)
    (arrow_function parameter: (_) @arguments.target)
    (function_expression parameters: (_) @arguments.target)
  ]) @subtree
  (#set! "arguments.query" "arguments")
  (#set! "role" "method"))
([
    (method_signature name: (_) @name parameters: (_) @arguments.target)
    (abstract_method_signature name: (_) @name parameters: (_) @arguments.target)
  ] @subtree
  (#set! "arguments.query" "arguments")
  (#set! "role" "method"))
((interface_body (property_signature name: (_) @name) @subtree)
  (#set! "role" "property"))
((function_signature name: (_) @name parameters: (_) @arguments.target) @subtree
  (#set! "arguments.query" "arguments")
  (#set! "role" "function"))

; What is only declared
((ambient_declaration
  [
    (lexical_declaration kind: _ @_kind (variable_declarator name: (identifier) @name) @subtree)
    (variable_declaration (variable_declarator name: (identifier) @name) @subtree)
  ])
  (#set! "role" "variable")
  (#set-if-eq! @_kind "const" "role" "constant"))
