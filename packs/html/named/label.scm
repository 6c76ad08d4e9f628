; What an element is called in a style sheet: its tag, with its id and its classes; and where it gets something from.
((tag_name) @result)
((attribute
  (attribute_name) @_name
  [(attribute_value) @result (quoted_attribute_value (attribute_value) @result)])
  (#match? @_name "(?i)^id$")
  (#prefix! @result "#"))
((attribute
  (attribute_name) @_name
  [(attribute_value) @result (quoted_attribute_value (attribute_value) @result)])
  (#match? @_name "(?i)^class$")
  (#replace! @result "\\s+" ".")
  (#prefix! @result "."))
((attribute
  (attribute_name) @_name
  [(attribute_value) @result (quoted_attribute_value (attribute_value) @result)])
  (#match? @_name "(?i)^(?:name|src|href|action)$")
  (#prefix! @result " "))
