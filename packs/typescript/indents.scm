; inherits: _ecmascript

[
  (enum_body)
  (interface_body)
  (object_type)
  (tuple_type)
  (type_arguments)
  (type_parameters)
] @indent.begin

(enum_body "}" @indent.branch)
(interface_body "}" @indent.branch)
(object_type "}" @indent.branch)
(tuple_type "]" @indent.branch)
(type_arguments ">" @indent.branch)
(type_parameters ">" @indent.branch)

[
  (public_field_definition)
  (type_alias_declaration)
] @indent.begin
