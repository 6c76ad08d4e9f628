((script_element (start_tag) @_tag (raw_text) @injection.content)
 (#not-contains? @_tag "json")
 (#set! "injection.language" "js"))

((script_element
  (start_tag (attribute (quoted_attribute_value (attribute_value) @_type)))
  (raw_text) @injection.content)
 (#eq? @_type "application/json")
 (#set! "injection.language" "json"))

((style_element (raw_text) @injection.content)
 (#set! "injection.language" "css"))

((attribute (attribute_name) @_name (quoted_attribute_value (attribute_value) @injection.content))
 (#match? @_name "^on")
 (#set! "injection.language" "JavaScript")
 (#set! "injection.reset"))

((attribute (attribute_name) @_name (quoted_attribute_value (attribute_value) @injection.content))
 (#eq? @_name "style")
 (#set! "injection.language" "css")
 (#set! "injection.combined"))
