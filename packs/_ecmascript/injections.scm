; Languages within JavaScript and TypeScript. Templates take the look of their language in place of a string's;
; their substitutions stay with this layer.

((comment) @injection.content
  (#match? @injection.content "^/\\*\\*[^*/]")
  (#set! "injection.language" "jsdoc"))

((regex pattern: (regex_pattern) @injection.content)
  (#set! "injection.language" "regex"))

; html`…`, sql`…`: the tag names the language. A tag that isn't a language's name injects nothing.
((call_expression
  function: (identifier) @injection.language
  arguments: (template_string [(string_fragment) @injection.content (escape_sequence) @injection.content (template_substitution)]*))
  (#not-match? @injection.language "^(svg|keyframes|injectGlobal|createGlobalStyle|raw|String)$")
  (#set! "injection.reset"))
((call_expression
  function: (identifier) @_tag
  arguments: (template_string [(string_fragment) @injection.content (escape_sequence) @injection.content (template_substitution)]*))
  (#set-by-case-eq! @_tag "injection.language"
    "svg" "html"
    "keyframes" "css"
    "injectGlobal" "css"
    "createGlobalStyle" "css")
  (#set! "injection.reset"))

; styled.button`…`, styled(Button)`…`, styled.button.attrs({…})`…`, css.global`…`: what the tag's text starts with tells. A
; pattern for each form says the same and takes the runtime ten times as long to compile.
((call_expression
  function: [(member_expression) (call_expression)] @_tag
  arguments: (template_string
    [(string_fragment) @injection.content (escape_sequence) @injection.content (template_substitution)]*))
  (#match? @_tag "^(styled|css|keyframes)\\s*[.(\\[]")
  (#set! "injection.language" "css")
  (#set! "injection.reset"))

; /* html */ `…`: a comment in front of a template names its language. Each pattern has its one root: for a pair of
; neighbours without a parent the runtime goes through all statements of a file at every key.
([(arguments
    (comment) @_language
    .
    (template_string [(string_fragment) @injection.content (escape_sequence) @injection.content (template_substitution)]*))
  (array
    (comment) @_language
    .
    (template_string [(string_fragment) @injection.content (escape_sequence) @injection.content (template_substitution)]*))
  (arrow_function
    (comment) @_language
    .
    (template_string [(string_fragment) @injection.content (escape_sequence) @injection.content (template_substitution)]*))
  (assignment_expression
    (comment) @_language
    .
    (template_string [(string_fragment) @injection.content (escape_sequence) @injection.content (template_substitution)]*))
  (pair
    (comment) @_language
    .
    (template_string [(string_fragment) @injection.content (escape_sequence) @injection.content (template_substitution)]*))
  (parenthesized_expression
    (comment) @_language
    .
    (template_string [(string_fragment) @injection.content (escape_sequence) @injection.content (template_substitution)]*))
  (return_statement
    (comment) @_language
    .
    (template_string [(string_fragment) @injection.content (escape_sequence) @injection.content (template_substitution)]*))
  (variable_declarator
    (comment) @_language
    .
    (template_string [(string_fragment) @injection.content (escape_sequence) @injection.content (template_substitution)]*))]
  (#match? @_language "^/\\*\\s*[\\w+-]+\\s*\\*/$")
  (#set-by-case-match! @_language "injection.language"
    "^/\\*\\s*css\\s*\\*/$" "css"
    "^/\\*\\s*(html|svg)\\s*\\*/$" "html"
    "^/\\*\\s*(javascript|js)\\s*\\*/$" "javascript"
    "^/\\*\\s*json\\s*\\*/$" "json"
    "^/\\*\\s*(markdown|md)\\s*\\*/$" "markdown"
    "^/\\*\\s*sql\\s*\\*/$" "sql"
    "^/\\*\\s*(typescript|ts)\\s*\\*/$" "typescript"
    "^/\\*\\s*ya?ml\\s*\\*/$" "yaml")
  (#set! "injection.reset"))
