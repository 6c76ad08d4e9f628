; A text that is a colour as a style sheet would write it.
((string (string_fragment) @subtree)
  (#match? @subtree "^(#([0-9A-Fa-f]{3,4}|[0-9A-Fa-f]{6}|[0-9A-Fa-f]{8})|(rgb|hsl)a?\\([^()]*\\))$"))
