([
    (block "{" @start "}" @end)
    (keyframe_block_list "{" @start "}" @end)
  ]
  (#set! "scope.byLine")
  (#set! "role" "block"))
