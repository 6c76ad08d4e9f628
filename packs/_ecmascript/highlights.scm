; What JavaScript and TypeScript share. Only nodes that both grammars have, in places that both allow.
;
; Where two patterns capture one node, the one of higher priority wins, and then the longer selector. Priorities
; rise with what a pattern knows: 0 the kind of node or its place, 4 its kind and text, 5 a telling place (and text),
; 6 a call, 10 an exception from all of these.

; Names by their kind
(identifier) @variable
[(shorthand_property_identifier) (shorthand_property_identifier_pattern)] @variable
(property_identifier) @property
(private_property_identifier) @property.private
(statement_identifier) @label

((identifier) @constant.uppercase
  (#match? @constant.uppercase "^_*[A-Z][A-Z\\d_]+$")
  (#set! "priority" "4"))

((identifier) @variable.builtin
  (#eq? @variable.builtin
    "arguments" "console" "document" "exports" "global" "globalThis" "module" "navigator" "process" "self" "window"
    "__dirname" "__filename")
  (#set! "priority" "4"))
((identifier) @type.builtin
  (#eq? @type.builtin
    "AbortController" "AbortSignal" "AggregateError" "Array" "ArrayBuffer" "Atomics" "BigInt" "BigInt64Array"
    "BigUint64Array" "Boolean" "Buffer" "DataView" "Date" "Error" "EvalError" "Event" "EventTarget"
    "FinalizationRegistry" "Float32Array" "Float64Array" "Function" "Int16Array" "Int32Array" "Int8Array" "Intl"
    "Iterator" "JSON" "Map" "Math" "Number" "Object" "Promise" "Proxy" "RangeError" "ReferenceError" "Reflect"
    "RegExp" "Set" "SharedArrayBuffer" "String" "Symbol" "SyntaxError" "TextDecoder" "TextEncoder" "TypeError"
    "URIError" "URL" "URLSearchParams" "Uint16Array" "Uint32Array" "Uint8Array" "Uint8ClampedArray" "WeakMap"
    "WeakRef" "WeakSet")
  (#set! "priority" "10"))
((call_expression function: (identifier) @function.builtin)
  (#eq? @function.builtin
    "clearImmediate" "clearInterval" "clearTimeout" "decodeURI" "decodeURIComponent" "encodeURI"
    "encodeURIComponent" "eval" "fetch" "isFinite" "isNaN" "parseFloat" "parseInt" "queueMicrotask"
    "requestAnimationFrame" "require" "setImmediate" "setInterval" "setTimeout" "structuredClone")
  (#set! "priority" "10"))

; Types, as far as a value's place and its capital tell
((new_expression constructor: (identifier) @type.class)
  (#match? @type.class "^_?[A-Z]")
  (#set! "priority" "5"))
(new_expression constructor: (identifier) @type.class)
(new_expression constructor: (member_expression property: (property_identifier) @type.class))
((member_expression object: (identifier) @type.class)
  (#match? @type.class "^[A-Z](?![A-Z\\d_]+$)"))
((binary_expression operator: "instanceof" right: (identifier) @type.class)
  (#match? @type.class "^[A-Z]")
  (#set! "priority" "5"))

; Functions: where they are made
((function_declaration name: (identifier) @function.declaration)
  (#set! "priority" "5"))
((generator_function_declaration name: (identifier) @function.declaration)
  (#set! "priority" "5"))
((function_expression name: (identifier) @function.declaration)
  (#set! "priority" "5"))
((generator_function name: (identifier) @function.declaration)
  (#set! "priority" "5"))
(method_definition name: [(property_identifier) (private_property_identifier)] @function.method.declaration)
((method_definition name: (property_identifier) @function.constructor)
  (#eq? @function.constructor "constructor")
  (#set! "priority" "10"))
((variable_declarator
  name: (identifier) @function.declaration
  value: [(arrow_function) (function_expression) (generator_function)])
  (#set! "priority" "5"))
((assignment_expression
  left: [
    (identifier) @function.declaration
    (member_expression property: (property_identifier) @function.method.declaration)
  ]
  right: [(arrow_function) (function_expression) (generator_function)])
  (#set! "priority" "5"))
(pair
  key: (property_identifier) @function.method.declaration
  value: [(arrow_function) (function_expression) (generator_function)])

; and where they are called
((call_expression function: (identifier) @function.call)
  (#set! "priority" "6"))
(call_expression function: (member_expression property: (property_identifier) @function.method))
(call_expression function: (member_expression property: (private_property_identifier) @function.method.private))

(arrow_function parameter: (identifier) @variable.parameter)
(catch_clause parameter: (identifier) @variable.parameter)

; Decorators
(decorator "@" @attribute)
(decorator
  [
    (identifier) @attribute
    (member_expression property: (property_identifier) @attribute)
    (call_expression function: (identifier) @attribute)
    (call_expression function: (member_expression property: (property_identifier) @attribute))
  ]
  (#set! "priority" "10"))

; Literals
(comment) @comment
((comment) @comment.doc
  (#match? @comment.doc "^/\\*\\*[^*/]"))
(hash_bang_line) @comment.directive

(string) @string
(pair key: (string) @string.key)
(import_statement source: (string) @string.path)
(export_statement source: (string) @string.path)
(escape_sequence) @string.escape
; A template is captured in pieces: what stands in its substitutions is code, also for whoever asks for strings.
(template_string "`" @string.template)
(template_string (string_fragment) @string.template)
(template_substitution) @embedded
(template_substitution ["${" "}"] @punctuation.bracket.substitution)

(regex) @regex
(regex "/" @regex.delimiter)
(regex_flags) @regex.flag

(number) @number
[(true) (false) (null) (undefined)] @constant.builtin
((identifier) @constant.builtin
  (#eq? @constant.builtin "Infinity" "NaN")
  (#set! "priority" "10"))
[(this) (super)] @variable.builtin

; Words
[
  "break"
  "case"
  "catch"
  "continue"
  "debugger"
  "default"
  "do"
  "else"
  "finally"
  "for"
  "if"
  "return"
  "switch"
  "throw"
  "try"
  "while"
  "with"
] @keyword.control
[
  "class"
  "const"
  "extends"
  "function"
  "let"
  "using"
  "var"
] @keyword.declaration
["as" "export" "from" "import"] @keyword.module
["async" "get" "set" "static"] @keyword.modifier
[
  "await"
  "delete"
  "in"
  "instanceof"
  "meta"
  "new"
  "of"
  "target"
  "typeof"
  "void"
  "yield"
] @keyword.expression
(export_statement "default" @keyword.module
  (#set! "priority" "10"))

; Signs
[
  "!" "!=" "!==" "%" "%=" "&" "&&" "&&=" "&=" "*" "**" "**=" "*=" "+" "++" "+=" "-" "--" "-=" "..." "/" "/=" "<"
  "<<" "<<=" "<=" "=" "==" "===" "=>" ">" ">=" ">>" ">>=" ">>>" ">>>=" "?" "??" "??=" "^" "^=" "|" "|=" "||" "||="
  "~"
] @operator
(ternary_expression ":" @operator
  (#set! "priority" "10"))
(optional_chain) @operator
["," "." ":" ";"] @punctuation.delimiter
["(" ")" "[" "]" "{" "}"] @punctuation.bracket
