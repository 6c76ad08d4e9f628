; The blocks of Markdown. Text within a block belongs to the layer of "markdown_inline", which paints over this.

; Headings
(atx_heading (atx_h1_marker)) @markup.heading.level-one
(atx_heading (atx_h2_marker)) @markup.heading.level-two
(atx_heading (atx_h3_marker)) @markup.heading.level-three
(atx_heading (atx_h4_marker)) @markup.heading.level-four
(atx_heading (atx_h5_marker)) @markup.heading.level-five
(atx_heading (atx_h6_marker)) @markup.heading.level-six
(setext_heading (setext_h1_underline)) @markup.heading.level-one
(setext_heading (setext_h2_underline)) @markup.heading.level-two
[
  (atx_h1_marker)
  (atx_h2_marker)
  (atx_h3_marker)
  (atx_h4_marker)
  (atx_h5_marker)
  (atx_h6_marker)
  (setext_h1_underline)
  (setext_h2_underline)
] @punctuation.marker

; Quotes, lists and rules
(block_quote) @markup.quote
(block_quote_marker) @punctuation.marker
; What stands in front of a block's later lines: markers of quotes and the indent of lists.
(block_continuation) @punctuation.marker
[
  (list_marker_dot)
  (list_marker_minus)
  (list_marker_parenthesis)
  (list_marker_plus)
  (list_marker_star)
] @markup.list
(task_list_marker_checked) @markup.list.checked
(task_list_marker_unchecked) @markup.list.unchecked
(thematic_break) @markup.rule

; Code
(code_fence_content) @markup.code
(indented_code_block) @markup.code
(fenced_code_block_delimiter) @punctuation.marker
(info_string) @markup.info
(language) @markup.info.language

; Definitions of links
(link_reference_definition (link_label) @markup.reference)
(link_reference_definition (link_destination) @markup.url)
(link_reference_definition (link_title) @string)
(link_reference_definition ":" @punctuation.delimiter)

; Tables
(pipe_table_header (pipe_table_cell) @markup.table.header)
(pipe_table_header "|" @punctuation.delimiter)
(pipe_table_row "|" @punctuation.delimiter)
(pipe_table_delimiter_row) @punctuation.delimiter

(backslash_escape) @character.escape
[(entity_reference) (numeric_character_reference)] @character.entity

[(minus_metadata) (plus_metadata)] @markup.metadata
