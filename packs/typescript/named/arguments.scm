; What a function is given, by name; patterns in place of names stand as they are.
(formal_parameters [
  (required_parameter pattern: [(identifier) (object_pattern) (array_pattern)] @name type: (type_annotation (_) @type)?)
  (required_parameter pattern: (rest_pattern (_) @name) type: (type_annotation (_) @type)?)
  (optional_parameter pattern: (_) @name type: (type_annotation (_) @type)?)
] @subtree)
(arrow_function parameter: (identifier) @name @subtree)
