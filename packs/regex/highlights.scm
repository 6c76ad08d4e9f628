; Regular expressions in the syntax of ECMAScript. Everything is of the class "regex", so that the layer reads
; as one literal to whoever asks for its lexical classes.

(pattern) @regex

(any_character) @regex.class
(character_class) @regex.class
(character_class_escape) @regex.class
(posix_character_class) @regex.class
(class_character) @regex.class
(class_range "-" @regex.quantifier)
(character_class "^" @regex.quantifier)

[
  (control_escape)
  (control_letter_escape)
  (decimal_escape)
  (identity_escape)
] @regex.escape
; The grammar wraps this one, and only this one, into a class escape of the same range.
(unicode_character_escape) @regex.escape.unicode

[
  (start_assertion)
  (end_assertion)
  (boundary_assertion)
  (non_boundary_assertion)
] @regex.anchor

(one_or_more "+" @regex.quantifier)
(zero_or_more "*" @regex.quantifier)
(optional "?" @regex.quantifier)
(count_quantifier) @regex.quantifier
(lazy) @regex.quantifier
(alternation "|" @regex.quantifier)

; The marks that open and close a group, with what they say about it: "(?:", "(?<name>", "(?=".
["(" ")" "(?" "(?:" "(?<" "(?P<"] @regex.group
(lookaround_assertion ["=" "!" "<"] @regex.group)
(named_capturing_group ">" @regex.group)
(inline_flags_group ":" @regex.group)
(flags) @regex.flag

(group_name) @regex.name
(backreference_escape) @regex.escape
(named_group_backreference) @regex.escape
[(unicode_property_name) (unicode_property_value)] @regex.name
