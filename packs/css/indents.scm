[
  (arguments)
  (block)
  (declaration)
  (keyframe_block_list)
] @indent.begin

(arguments ")" @indent.branch)
(block "}" @indent.branch)
(keyframe_block_list "}" @indent.branch)

(comment) @indent.auto

; The same while a piece doesn't parse.
(ERROR ["{" "("] @indent.begin)
(ERROR ["}" ")"] @indent.end)
