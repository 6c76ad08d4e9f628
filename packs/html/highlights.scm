; HTML. What stands in scripts, styles and handlers belongs to the injected languages.

(comment) @comment
(doctype) @keyword.directive

(tag_name) @tag
((tag_name) @tag.custom
  (#contains? @tag.custom "-"))
(erroneous_end_tag_name) @tag.invalid

(attribute_name) @attribute
(quoted_attribute_value) @string
(attribute_value) @string
((attribute
  (attribute_name) @_name
  [
    (attribute_value) @string.url
    (quoted_attribute_value (attribute_value) @string.url)
  ])
  (#match? @_name "^(?i)(action|cite|data|formaction|href|poster|src|srcset)$"))

(entity) @character.entity

; Text that an element sets apart looks like it.
((element (start_tag (tag_name) @_name) (text) @markup.heading)
  (#match? @_name "^(?i)(h[1-6]|title)$"))
((element (start_tag (tag_name) @_name) (text) @markup.bold)
  (#match? @_name "^(?i)(b|strong)$"))
((element (start_tag (tag_name) @_name) (text) @markup.italic)
  (#match? @_name "^(?i)(dfn|em|i)$"))
((element (start_tag (tag_name) @_name) (text) @markup.code)
  (#match? @_name "^(?i)(code|kbd|samp|tt)$"))
((element (start_tag (tag_name) @_name) (text) @markup.link)
  (#match? @_name "^(?i)a$"))
((element (start_tag (tag_name) @_name) (text) @markup.strikethrough)
  (#match? @_name "^(?i)(del|s|strike)$"))

["<" "</" "<!" ">" "/>"] @punctuation.bracket
"=" @punctuation.delimiter
