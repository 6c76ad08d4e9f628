; Elements in JavaScript and TypeScript.

(jsx_opening_element name: (identifier) @tag (#set! "priority" "10"))
(jsx_closing_element name: (identifier) @tag (#set! "priority" "10"))
(jsx_self_closing_element name: (identifier) @tag (#set! "priority" "10"))

((jsx_opening_element name: (identifier) @tag.component)
  (#match? @tag.component "^[A-Z]")
  (#set! "priority" "10"))
((jsx_closing_element name: (identifier) @tag.component)
  (#match? @tag.component "^[A-Z]")
  (#set! "priority" "10"))
((jsx_self_closing_element name: (identifier) @tag.component)
  (#match? @tag.component "^[A-Z]")
  (#set! "priority" "10"))

(jsx_opening_element name: (member_expression (_) @tag.component) (#set! "priority" "10"))
(jsx_closing_element name: (member_expression (_) @tag.component) (#set! "priority" "10"))
(jsx_self_closing_element name: (member_expression (_) @tag.component) (#set! "priority" "10"))

(jsx_attribute . [(property_identifier) (jsx_namespace_name)] @attribute
  (#set! "priority" "10"))
(jsx_namespace_name (identifier) @tag
  (#set! "priority" "10"))
(jsx_attribute (jsx_namespace_name (identifier) @attribute)
  (#set! "priority" "20"))
(jsx_attribute "=" @punctuation.delimiter)

(jsx_expression) @embedded
(jsx_expression ["{" "}"] @punctuation.bracket.substitution)
(html_character_reference) @character.entity

(jsx_opening_element ["<" ">"] @punctuation.bracket)
(jsx_closing_element ["</" ">"] @punctuation.bracket)
(jsx_self_closing_element ["<" "/>"] @punctuation.bracket)
