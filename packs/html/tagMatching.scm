([
  (element
    (start_tag (tag_name) @tag.start.name) @tag.start
    (end_tag (tag_name) @tag.end.name) @tag.end)
  (script_element
    (start_tag (tag_name) @tag.start.name) @tag.start
    (end_tag (tag_name) @tag.end.name) @tag.end)
  (style_element
    (start_tag (tag_name) @tag.start.name) @tag.start
    (end_tag (tag_name) @tag.end.name) @tag.end)
])
