; Scripts without a type and a language are JavaScript.
((script_element
  (start_tag (attribute)* @_attribute)
  (raw_text) @injection.content)
  (#not-match? @_attribute "^(?i)(type|lang)\\s*=")
  (#set! "injection.language" "javascript"))

; Scripts with a type: one that isn't listed (a template, a shader) stays text. "lang" says more than "type".
((script_element
  (start_tag
    (attribute
      (attribute_name) @_name
      [
        (attribute_value) @_type
        (quoted_attribute_value (attribute_value) @_type)
      ])) @_tag
  (raw_text) @injection.content)
  (#match? @_name "^(?i)type$")
  (#not-match? @_tag "(?i)\\slang\\s*=")
  (#set-by-case-match! @_type "injection.language"
    "^(?i)\\s*(module|((text|application)/)?(x-)?(java|ecma|live)script[\\d.]*|text/babel)\\s*(;|$)" "javascript"
    "^(?i)\\s*(application/([\\w.+-]+\\+)?json[5c]?|text/json|importmap|speculationrules)\\s*(;|$)" "json"
    "^(?i)\\s*((text|application)/)?(x-)?typescript\\s*(;|$)" "typescript"
    "^(?i)\\s*text/(x-)?markdown\\s*(;|$)" "markdown"))

; An empty type means the default.
((script_element
  (start_tag
    (attribute
      (attribute_name) @_name
      (quoted_attribute_value . "\"" . "\""))) @_tag
  (raw_text) @injection.content)
  (#match? @_name "^(?i)type$")
  (#not-match? @_tag "(?i)\\slang\\s*=")
  (#set! "injection.language" "javascript"))

; Scripts and styles that name their language.
((script_element
  (start_tag
    (attribute
      (attribute_name) @_name
      [
        (attribute_value) @injection.language
        (quoted_attribute_value (attribute_value) @injection.language)
      ]))
  (raw_text) @injection.content)
  (#match? @_name "^(?i)lang$"))
((style_element
  (start_tag
    (attribute
      (attribute_name) @_name
      [
        (attribute_value) @injection.language
        (quoted_attribute_value (attribute_value) @injection.language)
      ]))
  (raw_text) @injection.content)
  (#match? @_name "^(?i)lang$"))

; Other styles.
((style_element
  (start_tag (attribute)* @_attribute)
  (raw_text) @injection.content)
  (#not-match? @_attribute "^(?i)(type|lang)\\s*=")
  (#set! "injection.language" "css"))
((style_element
  (start_tag
    (attribute
      (attribute_name) @_name
      [
        (attribute_value) @_type
        (quoted_attribute_value (attribute_value) @_type)
      ])) @_tag
  (raw_text) @injection.content)
  (#match? @_name "^(?i)type$")
  (#not-match? @_tag "(?i)\\slang\\s*=")
  (#set-by-case-match! @_type "injection.language"
    "^(?i)\\s*text/css\\s*(;|$)" "css"
    "^(?i)\\s*text/(x-)?scss\\s*(;|$)" "scss"
    "^(?i)\\s*text/(x-)?less\\s*(;|$)" "less"))

; Event handlers and style attributes. They take the look of their own language in place of a string's.
((attribute
  (attribute_name) @_name
  [
    (attribute_value) @injection.content
    (quoted_attribute_value (attribute_value) @injection.content)
  ])
  (#match? @_name "^(?i)on[a-z]+$")
  (#set! "injection.language" "javascript")
  (#set! "injection.reset"))
((attribute
  (attribute_name) @_name
  [
    (attribute_value) @injection.content
    (quoted_attribute_value (attribute_value) @injection.content)
  ])
  (#match? @_name "^(?i)style$")
  (#set! "injection.language" "css")
  (#set! "injection.reset"))
