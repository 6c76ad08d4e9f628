; The text within a block of Markdown.

(emphasis) @markup.italic
(strong_emphasis) @markup.bold
; Asked of the nodes, since the runtime takes long to compile a pattern of one in the other.
((strong_emphasis) @markup.bold.italic
  (#has-parent? @markup.bold.italic "emphasis"))
((emphasis) @markup.bold.italic
  (#has-parent? @markup.bold.italic "strong_emphasis"))
(strikethrough) @markup.strikethrough
(emphasis_delimiter) @punctuation.marker

(code_span) @markup.code
(link_text (code_span) @markup.code.link)
(code_span_delimiter) @punctuation.marker
(latex_block) @markup.math
(latex_span_delimiter) @punctuation.marker

; Links and images
(link_text) @markup.link
(image_description) @markup.image
(link_label) @markup.reference
(shortcut_link (link_text) @markup.link.reference)
(link_destination) @markup.url
[(uri_autolink) (email_autolink)] @markup.url
(link_title) @string
(inline_link ["[" "]" "(" ")"] @punctuation.bracket)
(full_reference_link ["[" "]"] @punctuation.bracket)
(collapsed_reference_link ["[" "]"] @punctuation.bracket)
(shortcut_link ["[" "]"] @punctuation.bracket)
(image ["!" "[" "]" "(" ")"] @punctuation.bracket)

(backslash_escape) @character.escape
[(entity_reference) (numeric_character_reference)] @character.entity
