(character_class) @regex.class
(start_assertion) @regex.anchor
