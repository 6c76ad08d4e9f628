((regex_pattern) @injection.content
 (#set! "injection.language" "regex"))

((comment) @injection.content
 (#match? @injection.content "^/\\*\\*")
 (#set! "injection.language" "jsdoc"))
