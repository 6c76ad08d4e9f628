; Sections, behind their headings
((atx_heading (atx_h1_marker)) @start.before
  (#set! "scope.extend")
  (#set! "scope.level" "1")
  (#set! "scope.byLine")
  (#set! "role" "heading"))
((atx_heading (atx_h2_marker)) @start.before
  (#set! "scope.extend")
  (#set! "scope.level" "2")
  (#set! "scope.byLine")
  (#set! "role" "heading"))
((atx_heading (atx_h3_marker)) @start.before
  (#set! "scope.extend")
  (#set! "scope.level" "3")
  (#set! "scope.byLine")
  (#set! "role" "heading"))
((atx_heading (atx_h4_marker)) @start.before
  (#set! "scope.extend")
  (#set! "scope.level" "4")
  (#set! "scope.byLine")
  (#set! "role" "heading"))
((atx_heading (atx_h5_marker)) @start.before
  (#set! "scope.extend")
  (#set! "scope.level" "5")
  (#set! "scope.byLine")
  (#set! "role" "heading"))
((atx_heading (atx_h6_marker)) @start.before
  (#set! "scope.extend")
  (#set! "scope.level" "6")
  (#set! "scope.byLine")
  (#set! "role" "heading"))
((setext_heading (setext_h1_underline)) @start.before
  (#set! "scope.extend")
  (#set! "scope.level" "1")
  (#set! "scope.byLine")
  (#set! "role" "heading"))
((setext_heading (setext_h2_underline)) @start.before
  (#set! "scope.extend")
  (#set! "scope.level" "2")
  (#set! "scope.byLine")
  (#set! "role" "heading"))

; Blocks: the first line stays in sight. Those of HTML fold by their elements.
((fenced_code_block . (fenced_code_block_delimiter) @start (code_fence_content) (fenced_code_block_delimiter) @end)
  (#set! "scope.byLine")
  (#set! "role" "block"))
([
    (pipe_table)
    (block_quote)
    (indented_code_block)
    (minus_metadata)
    (plus_metadata)
  ] @subtree
  (#set! "scope.byLine")
  (#set! "role" "block"))
; An item has all blank lines behind it in its node: only those of several lines fold.
((list_item) @subtree
  (#match? @subtree "[\\r\\n]\\s*\\S")
  (#set! "scope.byLine")
  (#set! "role" "block"))
