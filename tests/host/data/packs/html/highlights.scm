(tag_name) @tag
(attribute_name) @attribute
(quoted_attribute_value) @string
(entity) @character.escape
["<" ">" "</" "="] @punctuation
