(formal_parameters (identifier) @name @subtree)
