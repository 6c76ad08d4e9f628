["const" "function"] @keyword
(number) @number
(comment) @comment
(string) @string
(template_string) @string.template
(template_substitution) @embedded
((identifier) @constant.builtin
 (#eq? @constant.builtin "nothing")
 (#set! "priority" "2"))
(identifier) @variable
(call_expression function: (identifier) @function.call)
(regex) @regex
