; What JavaScript and TypeScript declare.

; Functions, also as the values of variables and properties
([
    (function_declaration name: (_) @name parameters: (_) @arguments.target)
    (generator_function_declaration name: (_) @name parameters: (_) @arguments.target)
  ] @subtree
  (#set! "arguments.query" "arguments")
  (#set! "role" "function"))
((variable_declarator
  name: (identifier) @name
  value: [
    (arrow_function parameters: (_) @arguments.target)
    (arrow_function parameter: (_) @arguments.target)
    (function_expression parameters: (_) @arguments.target)
    (generator_function parameters: (_) @arguments.target)
  ]) @subtree
  (#set! "arguments.query" "arguments")
  (#set! "role" "function"))
((assignment_expression
  left: [(identifier) (member_expression)] @name
  right: [
    (arrow_function parameters: (_) @arguments.target)
    (arrow_function parameter: (_) @arguments.target)
    (function_expression parameters: (_) @arguments.target)
    (generator_function parameters: (_) @arguments.target)
  ]) @subtree
  (#set! "arguments.query" "arguments")
  (#set! "role" "function"))
((pair
  key: (_) @name
  value: [
    (arrow_function parameters: (_) @arguments.target)
    (arrow_function parameter: (_) @arguments.target)
    (function_expression parameters: (_) @arguments.target)
    (generator_function parameters: (_) @arguments.target)
  ]) @subtree
  (#set! "arguments.query" "arguments")
  (#set! "role" "method"))

; Classes and their methods. An accessor says so in front of its name.
((class_declaration name: (_) @name) @subtree
  (#set! "role" "class"))
([
    (variable_declarator name: (identifier) @name value: (class))
    (assignment_expression left: [(identifier) (member_expression)] @name right: (class))
  ] @subtree
  (#set! "role" "class"))
((method_definition name: (_) @name parameters: (_) @arguments.target) @subtree
  (#set! "arguments.query" "arguments")
  (#set! "role" "method")
  (#set-if-eq! @name "constructor" "role" "constructor")
  (#set-if-match! @subtree "^(?:(?:public|private|protected|static|override|readonly|async|abstract|declare|accessor)\\s+)*static\\s" "role" "static-method")
  (#set-if-match! @subtree "^(?:(?:public|private|protected|static|override|readonly|async|abstract|declare|accessor)\\s+)*get\\s+[^\\s(]" "role" "getter")
  (#set-if-match! @subtree "^(?:(?:public|private|protected|static|override|readonly|async|abstract|declare|accessor)\\s+)*set\\s+[^\\s(]" "role" "setter"))

; Variables of the file itself
([
    (program (lexical_declaration kind: _ @_kind (variable_declarator name: (identifier) @name !value) @subtree))
    (program (lexical_declaration kind: _ @_kind (variable_declarator name: (identifier) @name value: (_) @_value) @subtree))
    (program (variable_declaration (variable_declarator name: (identifier) @name !value) @subtree))
    (program (variable_declaration (variable_declarator name: (identifier) @name value: (_) @_value) @subtree))
    (export_statement (lexical_declaration kind: _ @_kind (variable_declarator name: (identifier) @name !value) @subtree))
    (export_statement
      (lexical_declaration kind: _ @_kind (variable_declarator name: (identifier) @name value: (_) @_value) @subtree))
  ]
  (#not-has-type? @_value "arrow_function" "function_expression" "generator_function" "class")
  (#set! "role" "variable")
  (#set-if-eq! @_kind "const" "role" "constant"))

; Suites and cases of tests
((call_expression
  function: (identifier) @name
  arguments: (arguments . [(string (string_fragment) @name) (template_string (string_fragment) @name)]
                        . [(arrow_function) (function_expression)])) @subtree
  (#any-eq? @name "describe" "suite" "context" "it" "test")
  (#set! "role" "block"))
