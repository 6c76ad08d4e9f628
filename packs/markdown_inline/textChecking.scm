; All of the text but what isn't prose: there a stretch ends, and behind it the next one starts.
(inline) @start.before
(inline) @end.after

[
  (code_span)
  (email_autolink)
  (html_tag)
  (latex_block)
  (link_destination)
  (link_label)
  (uri_autolink)
] @end
[
  (code_span)
  (email_autolink)
  (html_tag)
  (latex_block)
  (link_destination)
  (link_label)
  (uri_autolink)
] @start
