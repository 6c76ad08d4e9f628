; The tags of one stretch of text are read together, so that a start tag finds its end tag.
((html_tag) @injection.content
  (#set! "injection.language" "html")
  (#set! "injection.combined"))
