; JSON, also with comments.

(comment) @comment

; The value of a pair keeps the plain selector; its key has one of its own, of the same lexical class.
(string) @string
(pair key: (string) @string.key)
(escape_sequence) @string.escape

(number) @number
[(true) (false) (null)] @constant.builtin

["," ":"] @punctuation.delimiter
["[" "]" "{" "}"] @punctuation.bracket
