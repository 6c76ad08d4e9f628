; inherits: _ecmascript
; TypeScript.

; Types
(type_identifier) @type
(predefined_type) @type.builtin
(predefined_type "void" @type.builtin
  (#set! "priority" "10"))
(this_type) @type.builtin
(existential_type) @type.builtin
(type_parameter name: (type_identifier) @type.parameter)
(mapped_type_clause name: (type_identifier) @type.parameter)
(infer_type (type_identifier) @type.parameter)
(class_declaration name: (type_identifier) @type.declaration)
(abstract_class_declaration name: (type_identifier) @type.declaration)
(class name: (type_identifier) @type.declaration)
(interface_declaration name: (type_identifier) @type.declaration)
(type_alias_declaration name: (type_identifier) @type.declaration)
(enum_declaration name: (identifier) @type.declaration)
(extends_clause value: (identifier) @type.class)
(extends_clause value: (member_expression property: (property_identifier) @type.class))
(nested_type_identifier module: (identifier) @namespace.path
  (#set! "priority" "10"))
(nested_type_identifier module: (nested_identifier (_) @namespace.path)
  (#set! "priority" "10"))
(internal_module name: (identifier) @namespace.declaration)
(internal_module name: (nested_identifier (_) @namespace.declaration))
(module name: (identifier) @namespace.declaration)
(module name: (nested_identifier (_) @namespace.declaration))
((type_identifier) @type.builtin
  (#eq? @type.builtin
    "Array" "ArrayBuffer" "ArrayLike" "AsyncGenerator" "AsyncIterable" "AsyncIterator" "Awaited" "BigInt" "Boolean"
    "DataView" "Date" "Error" "Exclude" "Extract" "Float32Array" "Float64Array" "Function" "Generator" "Int16Array"
    "Int32Array" "Int8Array" "Iterable" "IterableIterator" "Iterator" "Map" "NonNullable" "Number" "Object" "Omit"
    "Parameters" "Partial" "Pick" "Promise" "PromiseLike" "Readonly" "ReadonlyArray" "ReadonlyMap" "ReadonlySet"
    "Record" "RegExp" "Required" "ReturnType" "Set" "String" "Symbol" "Uint16Array" "Uint32Array" "Uint8Array"
    "WeakMap" "WeakRef" "WeakSet" "bigint")
  (#set! "priority" "5"))

; Members
(enum_body name: (property_identifier) @constant.enumerator)
(enum_assignment name: (property_identifier) @constant.enumerator)
(method_signature name: [(property_identifier) (private_property_identifier)] @function.method.declaration)
(abstract_method_signature name: [(property_identifier) (private_property_identifier)] @function.method.declaration)
(function_signature name: (identifier) @function.declaration)
(public_field_definition
  name: [(property_identifier) (private_property_identifier)] @function.method.declaration
  value: [(arrow_function) (function_expression)])
(property_signature
  name: (property_identifier) @function.method.declaration
  type: (type_annotation (function_type)))

; Parameters
(required_parameter pattern: (identifier) @variable.parameter)
(optional_parameter pattern: (identifier) @variable.parameter)
(required_parameter pattern: (rest_pattern (identifier) @variable.parameter))
(required_parameter pattern: (array_pattern (identifier) @variable.parameter))
(required_parameter pattern: (object_pattern (shorthand_property_identifier_pattern) @variable.parameter))
(required_parameter
  pattern: (object_pattern
    (object_assignment_pattern left: (shorthand_property_identifier_pattern) @variable.parameter)))
(required_parameter pattern: (object_pattern (pair_pattern value: (identifier) @variable.parameter)))
(required_parameter name: (identifier) @variable.parameter)
(optional_parameter name: (identifier) @variable.parameter)
(index_signature name: (identifier) @variable.parameter)
(type_predicate name: (identifier) @variable.parameter)
(asserts (identifier) @variable.parameter)

(template_literal_type "`" @string.template)
(template_literal_type (string_fragment) @string.template)
(template_type) @embedded
(template_type ["${" "}"] @punctuation.bracket.substitution)

; Words
[(accessibility_modifier) (override_modifier)] @keyword.modifier
["abstract" "accessor" "declare" "readonly"] @keyword.modifier
["enum" "global" "implements" "interface" "module" "namespace" "type"] @keyword.declaration
["asserts" "infer" "is" "keyof" "satisfies"] @keyword.expression
(as_expression "as" @keyword.expression
  (#set! "priority" "10"))
(mapped_type_clause "as" @keyword.expression
  (#set! "priority" "10"))
(conditional_type "extends" @keyword.expression
  (#set! "priority" "10"))
(import_require_clause "require" @keyword.module)
(import_require_clause source: (string) @string.path)

; Signs
["?:" "-?:" "+?:"] @operator
["{|" "|}"] @punctuation.bracket
(type_arguments ["<" ">"] @punctuation.bracket)
(type_parameters ["<" ">"] @punctuation.bracket)
(conditional_type ":" @operator
  (#set! "priority" "10"))
