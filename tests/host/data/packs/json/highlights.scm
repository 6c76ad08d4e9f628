(string) @string
(number) @number
[(true) (false) (null)] @constant.builtin
