((class_body "{" @start "}" @end)
 (#set! "role" "type"))
(statement_block "{" @start "}" @end)
