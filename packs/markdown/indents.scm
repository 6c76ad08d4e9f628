; Blanks in front of a line have a meaning here: they say what the line belongs to.
[
  (list_item)
  (fenced_code_block)
  (html_block)
  (indented_code_block)
] @indent.auto
