; Rules, by their selectors; a rule for one simple selector is of that selector's kind.
((rule_set (selectors) @name) @subtree
  (#set! "role" "style-ruleset")
  (#set-if-match! @name "^#[\\w-]+$" "role" "style-id")
  (#set-if-match! @name "^\\.[\\w-]+$" "role" "style-class")
  (#set-if-match! @name "^:[\\w-]+$" "role" "style-pseudoclass")
  (#set-if-match! @name "^::[\\w-]+$" "role" "style-pseudoelement"))

; Directives, with what stands in front of their blocks
([
    (media_statement "@media" @name . [(_) ","]+ @name . (block))
    (supports_statement "@supports" @name . (_)+ @name . (block))
    (keyframes_statement [(at_keyword) "@keyframes"] @name . (keyframes_name) @name)
    (import_statement "@import" @name . (_) @name)
    (charset_statement "@charset" @name . (_) @name)
    (namespace_statement "@namespace" @name . (_)+ @name . ";")
    (at_rule (at_keyword) @name . (block))
    (at_rule (at_keyword) @name . [(_) ","]+ @name . [(block) ";"])
  ] @subtree
  (#replace! @name " ," ",")
  (#set! "role" "style-directive"))

; Properties of one's own
((declaration (property_name) @name) @subtree
  (#match? @name "^--")
  (#set! "role" "variable"))
