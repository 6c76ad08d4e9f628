(text) @subtree
(comment) @subtree

; What readers of the page get to see or hear.
((attribute
  (attribute_name) @_name
  (quoted_attribute_value (attribute_value) @subtree))
  (#eq? @_name "abbr" "alt" "aria-description" "aria-label" "label" "placeholder" "summary" "title"))
