; A fragment has no name.
(jsx_element
  open_tag: (jsx_opening_element name: (_)? @tag.start.name) @tag.start
  close_tag: (jsx_closing_element name: (_)? @tag.end.name) @tag.end)
