; What an element holds is a level deeper, and so are the attributes of a tag that goes on in another line.

[
  (element)
  (script_element)
  (style_element)
  (start_tag)
  (self_closing_tag)
] @indent.begin

(end_tag) @indent.branch
(start_tag ">" @indent.branch)
(self_closing_tag "/>" @indent.branch)

; The head and the body stand where the page begins.
((element (start_tag (tag_name) @_name)) @indent.ignore
  (#match? @_name "^[hH][tT][mM][lL]$"))

(comment) @indent.auto
; Its blanks are shown.
((element (start_tag (tag_name) @_name) (text) @indent.auto)
  (#eq? @_name "pre" "textarea"))
