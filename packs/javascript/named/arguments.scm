; What a function is given, by name; patterns in place of names stand as they are.
(formal_parameters [
  (identifier) @name
  (object_pattern) @name
  (array_pattern) @name
  (assignment_pattern left: (_) @name)
  (rest_pattern (_) @name)
] @subtree)
(arrow_function parameter: (identifier) @name @subtree)
