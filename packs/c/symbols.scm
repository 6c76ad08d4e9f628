; inherits: _c
; C.

; Functions: what stands outside of code. In a body, `Lock lock(mutex);` would look like one.
((_
  [
    (function_definition type: (_) declarator: [
      (function_declarator declarator: (identifier) @name parameters: (_) @arguments.target)
      (pointer_declarator declarator: (function_declarator declarator: (identifier) @name parameters: (_) @arguments.target))
      (pointer_declarator declarator: (pointer_declarator declarator: (function_declarator declarator: (identifier) @name parameters: (_) @arguments.target)))
    ])
    (declaration type: (_) declarator: [
      (function_declarator declarator: (identifier) @name parameters: (_) @arguments.target)
      (pointer_declarator declarator: (function_declarator declarator: (identifier) @name parameters: (_) @arguments.target))
      (pointer_declarator declarator: (pointer_declarator declarator: (function_declarator declarator: (identifier) @name parameters: (_) @arguments.target)))
    ])
  ] @subtree) @_parent
  (#has-type? @_parent
    "translation_unit" "declaration_list" "linkage_specification" "friend_declaration"
    "preproc_ifdef" "preproc_if" "preproc_else" "preproc_elif")
  (#set! "arguments.query" "arguments")
  (#set! "role" "function"))

