((class_declaration name: (_) @name) @subtree
 (#set! "role" "class"))
((method_definition name: (_) @name parameters: (_) @arguments.target) @subtree
 (#set! "arguments.query" "arguments")
 (#set! "scope.level" "2")
 (#set! "role" "function-or-method"))
((lexical_declaration (variable_declarator name: (_) @name)) @subtree
 (#set! "role" "variable"))
