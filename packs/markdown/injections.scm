; Code in fences, by the first word of the info string.
((fenced_code_block
  (info_string (language) @injection.language)
  (code_fence_content) @injection.content)
  (#set! "injection.reset"))

; Front matter
((minus_metadata) @injection.content
  (#set! "injection.language" "yaml")
  (#set! "injection.reset"))
((plus_metadata) @injection.content
  (#set! "injection.language" "toml")
  (#set! "injection.reset"))

; A tag that one block opens is often closed in another, so all blocks of HTML are read as one text.
((html_block) @injection.content
  (#set! "injection.language" "html")
  (#set! "injection.combined"))

((inline) @injection.content
  (#set! "injection.language" "markdown_inline"))
((pipe_table_cell) @injection.content
  (#set! "injection.language" "markdown_inline"))
