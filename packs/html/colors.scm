; Styles are in another language; these are attributes that are colours of their own.
((attribute
  (attribute_name) @_name
  (quoted_attribute_value (attribute_value) @subtree))
  (#eq? @_name
    "alink" "bgcolor" "color" "fill" "flood-color" "lighting-color" "link" "stop-color" "stroke" "text" "vlink")
  (#not-match? @subtree "^(none|inherit|url\\(.*)$"))
((attribute
  (attribute_name) @_name
  (quoted_attribute_value (attribute_value) @subtree))
  (#eq? @_name "content")
  (#match? @subtree "^#[0-9A-Fa-f]{3,8}$"))
