(property_name) @property
(string_value) @string
(comment) @comment
(integer_value) @number
