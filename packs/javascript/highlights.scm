; inherits: _ecmascript, _jsx
; JavaScript, with elements.

((class_declaration name: (identifier) @type.declaration)
  (#set! "priority" "5"))
((class name: (identifier) @type.declaration)
  (#set! "priority" "5"))
((class_heritage (identifier) @type.class)
  (#set! "priority" "5"))
(class_heritage (member_expression property: (property_identifier) @type.class))

(field_definition
  property: [(property_identifier) (private_property_identifier)] @function.method.declaration
  value: [(arrow_function) (function_expression)])

(formal_parameters (identifier) @variable.parameter)
(formal_parameters (assignment_pattern left: (identifier) @variable.parameter))
(formal_parameters (rest_pattern (identifier) @variable.parameter))
(formal_parameters (array_pattern (identifier) @variable.parameter))
(formal_parameters (object_pattern (shorthand_property_identifier_pattern) @variable.parameter))
(formal_parameters
  (object_pattern (object_assignment_pattern left: (shorthand_property_identifier_pattern) @variable.parameter)))
(formal_parameters (object_pattern (rest_pattern (identifier) @variable.parameter)))
(formal_parameters (object_pattern (pair_pattern value: (identifier) @variable.parameter)))
(formal_parameters
  (assignment_pattern left: (object_pattern (shorthand_property_identifier_pattern) @variable.parameter)))

; The grammar joins these two words into one token.
"static get" @keyword.modifier

(export_specifier "default" @keyword.module
  (#set! "priority" "10"))
(import_specifier name: "default" @keyword.module
  (#set! "priority" "10"))
