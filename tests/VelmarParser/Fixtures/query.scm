; Names of functions and their comments.
(function_definition
  name: (identifier) @function.name
  body: (block . (expression_statement (string))? @function.doc))

[
  "if"
  "else"
] @keyword

((identifier) @constant
  (#match? @constant "^[A-Z_]+$"))

(comment)+ @comment
(_ !value) @bare
(ERROR) @error
