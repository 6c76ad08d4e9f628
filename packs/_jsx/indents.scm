[
  (jsx_element)
  (jsx_expression)
  (jsx_opening_element)
  (jsx_self_closing_element)
] @indent.begin

(jsx_closing_element) @indent.branch
(jsx_expression "}" @indent.branch)
(jsx_opening_element ">" @indent.branch)
(jsx_self_closing_element "/>" @indent.branch)
