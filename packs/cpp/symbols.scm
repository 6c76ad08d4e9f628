; inherits: _c
; C++.

; Namespaces
((namespace_definition name: (_) @name) @subtree
  (#set! "role" "package"))
((namespace_definition "namespace" @name !name) @subtree
  (#replace! @name "namespace" "(anonymous namespace)")
  (#set! "role" "package"))

; Types
((class_specifier name: (_) @name body: (_)) @subtree
  (#set! "role" "class"))
((struct_specifier name: [(template_type) (qualified_identifier)] @name body: (_)) @subtree
  (#set! "role" "struct"))
((union_specifier name: [(template_type) (qualified_identifier)] @name body: (_)) @subtree
  (#set! "role" "union"))
((enum_specifier name: (qualified_identifier) @name body: (_)) @subtree
  (#set! "role" "enum"))
((concept_definition name: (_) @name) @subtree
  (#set! "role" "type"))
((_ (alias_declaration name: (_) @name) @subtree) @_parent
  (#has-type? @_parent
    "translation_unit" "declaration_list" "linkage_specification" "friend_declaration"
    "preproc_ifdef" "preproc_if" "preproc_else" "preproc_elif"
    "field_declaration_list" "template_declaration")
  (#set! "role" "type"))

; Functions: what stands outside of code. In a body, `Lock lock(mutex);` would look like one.
((_
  [
    (function_definition type: (_) declarator: [
      (function_declarator declarator: [(identifier) (operator_name) (template_function)] @name parameters: (_) @arguments.target)
      (pointer_declarator declarator: (function_declarator declarator: [(identifier) (operator_name) (template_function)] @name parameters: (_) @arguments.target))
      (reference_declarator (function_declarator declarator: [(identifier) (operator_name) (template_function)] @name parameters: (_) @arguments.target))
    ])
    (declaration type: (_) declarator: [
      (function_declarator declarator: [(identifier) (operator_name)] @name parameters: (_) @arguments.target)
      (pointer_declarator declarator: (function_declarator declarator: [(identifier) (operator_name)] @name parameters: (_) @arguments.target))
      (reference_declarator (function_declarator declarator: [(identifier) (operator_name)] @name parameters: (_) @arguments.target))
    ])
  ] @subtree) @_parent
  (#has-type? @_parent
    "translation_unit" "declaration_list" "linkage_specification" "friend_declaration"
    "preproc_ifdef" "preproc_if" "preproc_else" "preproc_elif")
  (#set! "arguments.query" "arguments")
  (#set! "role" "function"))

; Templates: in a class or not
((template_declaration
  [
    (function_definition declarator: [
      (function_declarator declarator: [(identifier) (operator_name) (template_function)] @name parameters: (_) @arguments.target)
      (pointer_declarator declarator: (function_declarator declarator: [(identifier) (operator_name) (template_function)] @name parameters: (_) @arguments.target))
      (reference_declarator (function_declarator declarator: [(identifier) (operator_name) (template_function)] @name parameters: (_) @arguments.target))
    ])
    (declaration declarator: [
      (function_declarator declarator: [(identifier) (operator_name)] @name parameters: (_) @arguments.target)
      (pointer_declarator declarator: (function_declarator declarator: [(identifier) (operator_name)] @name parameters: (_) @arguments.target))
      (reference_declarator (function_declarator declarator: [(identifier) (operator_name)] @name parameters: (_) @arguments.target))
    ])
  ] @subtree)
  (#set! "arguments.query" "arguments")
  (#set! "role" "function-or-method"))

; Members of a class, in it
((field_declaration_list
  [
    (field_declaration type: (_) declarator: [
      (function_declarator declarator: [(field_identifier) (operator_name)] @name parameters: (_) @arguments.target)
      (pointer_declarator declarator: (function_declarator declarator: [(field_identifier) (operator_name)] @name parameters: (_) @arguments.target))
      (reference_declarator (function_declarator declarator: [(field_identifier) (operator_name)] @name parameters: (_) @arguments.target))
    ])
    (function_definition declarator: [
      (function_declarator declarator: [(field_identifier) (operator_name)] @name parameters: (_) @arguments.target)
      (pointer_declarator declarator: (function_declarator declarator: [(field_identifier) (operator_name)] @name parameters: (_) @arguments.target))
      (reference_declarator (function_declarator declarator: [(field_identifier) (operator_name)] @name parameters: (_) @arguments.target))
    ])
  ] @subtree)
  (#set! "arguments.query" "arguments")
  (#set! "role" "method")
  (#set-if-match! @subtree "^(?:\\[\\[[^\\]]*\\]\\]\\s*)?(?:(?:inline|constexpr|consteval)\\s+)*static\\b" "role" "static-method"))
((field_declaration_list
  [
    (function_definition !type
      declarator: (function_declarator declarator: (identifier) @name parameters: (_) @arguments.target))
    (declaration !type
      declarator: (function_declarator declarator: (identifier) @name parameters: (_) @arguments.target))
  ] @subtree)
  (#set! "arguments.query" "arguments")
  (#set! "role" "constructor"))
((field_declaration_list
  [
    (function_definition declarator: (function_declarator declarator: (destructor_name) @name))
    (declaration declarator: (function_declarator declarator: (destructor_name) @name))
  ] @subtree)
  (#set! "role" "destructor"))
([
    (function_definition declarator: (operator_cast) @name)
    (declaration declarator: (operator_cast) @name)
  ] @subtree
  (#replace! @name "\s*\([^()]*\)[^()]*$" "")
  (#set! "role" "method"))

; Members of a class, or of a namespace, outside of it: the name tells what isn't merely one of both.
([
    (function_definition declarator: [
      (function_declarator declarator: (qualified_identifier) @name parameters: (_) @arguments.target)
      (pointer_declarator declarator: (function_declarator declarator: (qualified_identifier) @name parameters: (_) @arguments.target))
      (reference_declarator (function_declarator declarator: (qualified_identifier) @name parameters: (_) @arguments.target))
    ])
    (function_definition
      declarator: (qualified_identifier name: (operator_cast declarator: (_ parameters: (_) @arguments.target))) @name)
    (function_definition
      declarator: (qualified_identifier
        name: (qualified_identifier name: (operator_cast declarator: (_ parameters: (_) @arguments.target)))) @name)
  ] @subtree
  (#replace! @name "(operator [^(]*?)\\s*\\(\\).*$" "$1")
  (#set! "arguments.query" "arguments")
  (#set! "role" "function-or-method")
  (#set-if-match! @name "(?:^|::)~" "role" "destructor")
  (#set-if-match! @name "(?:^|::)(\\w+)(?:<.*>)?::\\1$" "role" "constructor"))

; Macros that make functions, such as TEST(Range, IsEmpty) { … }: all of it is the name.
((_
  (function_definition !type declarator: (function_declarator declarator: (identifier)) @name) @subtree) @_parent
  (#has-type? @_parent
    "translation_unit" "declaration_list" "linkage_specification" "friend_declaration"
    "preproc_ifdef" "preproc_if" "preproc_else" "preproc_elif")
  (#set! "role" "function"))
