; Style sheets, and the declarations of a style attribute, which are a style sheet without rules.

[(comment) (js_comment)] @comment

; Selectors
(tag_name) @tag
(class_selector (class_name) @selector.class)
(id_selector (id_name) @selector.id)
(pseudo_class_selector (class_name) @selector.pseudo)
(pseudo_element_selector "::" . (tag_name) @selector.pseudo)
(attribute_selector (attribute_name) @attribute)
(universal_selector) @selector.universal
(nesting_selector) @selector.nesting
(namespace_name) @namespace
(keyframes_name) @label
[(from) (to)] @selector.keyframe
(pseudo_class_selector ":" @punctuation.delimiter)
(pseudo_element_selector "::" @punctuation.delimiter)
(class_selector "." @punctuation.delimiter)
(id_selector "#" @punctuation.delimiter)

; Properties and values
(property_name) @property
((property_name) @variable.custom
  (#match? @variable.custom "^--"))
(feature_name) @property
(plain_value) @constant
((plain_value) @variable.custom
  (#match? @variable.custom "^--"))
; The last declaration of a style attribute may lack its semicolon, which is an error outside a block.
(ERROR (tag_name) @property.declaration . ":")

(color_value) @number.color
[(integer_value) (float_value)] @number
(unit) @number.unit
(string_value) @string
(escape_sequence) @string.escape
(function_name) @function.call
((call_expression
  (function_name) @_name
  (arguments (plain_value) @string.url))
  (#match? @_name "^(?i)url(-prefix)?$"))

; Words
[
  "@charset"
  "@import"
  "@keyframes"
  "@media"
  "@namespace"
  "@scope"
  "@supports"
  (at_keyword)
] @keyword.directive
["and" "or" "not" "only" "of" "selector"] @keyword.expression
[(important) (important_value)] @keyword.modifier
(keyword_query) @constant

; Signs
[">" "~" "+" "-" "*" "/" "|" "=" "^=" "$=" "*=" "~=" "|="] @operator
["," ";" ":"] @punctuation.delimiter
["(" ")" "[" "]" "{" "}"] @punctuation.bracket
