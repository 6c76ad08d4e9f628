; Doc comments of JavaScript and TypeScript. The whole is a comment; types and names inside it look like their
; likes in code and carry "doc", so that a theme can dim them.

; The grammar gives up on many comments of one line and calls them an error as a whole.
[(document) (ERROR)] @comment.doc

(tag_name) @comment.doc.annotation

; Types are one token in this grammar.
(type) @type.doc

; What follows a tag is either the name of what it documents or a path to something elsewhere.
(tag (identifier) @variable.doc)
(ERROR (identifier) @variable.doc)
(tag (member_expression) @variable.doc)
(tag (path_expression) @variable.doc)
(tag (qualified_expression) @variable.doc)
(optional_identifier (identifier) @variable.doc)
(optional_identifier value: (_) @constant.doc)

(inline_tag (description) @markup.link.doc)

(code_block) @markup.code.doc
(code_block_language) @label.doc

(tag ["{" "}"] @punctuation.bracket.doc)
(ERROR ["{" "}"] @punctuation.bracket.doc)
(inline_tag ["{" "}"] @punctuation.bracket.doc)
(optional_identifier ["[" "]"] @punctuation.bracket.doc)
