[
  (array)
  (object)
] @indent.begin

(array "]" @indent.branch)
(object "}" @indent.branch)

(comment) @indent.auto

; The same while a piece doesn't parse.
(ERROR ["{" "["] @indent.begin)
(ERROR ["}" "]"] @indent.end)
