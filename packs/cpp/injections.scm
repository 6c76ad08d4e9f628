; inherits: c

; R"sql(…)sql": a delimiter that is a language's name says what the string holds.
((raw_string_literal
  delimiter: (raw_string_delimiter) @injection.language
  (raw_string_content) @injection.content)
  (#set! "injection.reset"))
