; The body of a macro is code of this language, unless it is a lone token. Each body is a text of its own: what one
; of them leaves open doesn't reach the next.
([
    (preproc_def value: (preproc_arg) @injection.content)
    (preproc_function_def value: (preproc_arg) @injection.content)
  ]
  (#match? @injection.content "\\w\\s*\\W+\\s*\\w|\\(|\\{")
  (#set! "injection.self"))
