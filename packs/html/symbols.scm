; Elements that shape a page, by their tags, ids and classes. What only marks words up, and paragraphs, are left out.
((element (start_tag (tag_name) @name) @displayname.target) @subtree
  (#match? @name "(?i)-|^(?:html|head|body|header|footer|main|nav|section|article|aside|hgroup|search|div|fieldset|details|dialog|figure|template|ul|ol|menu|dl|picture|svg|canvas|audio|video|iframe|object|form|select|textarea|button|output|progress|meter|table|noscript|map|slot)$")
  (#set! "displayname.query" "label")
  (#set-by-case-match! @name "role"
    "(?i)^head$" "tag-head"
    "(?i)^body$" "tag-body"
    "(?i)^(?:header|footer|main|nav|section|article|aside|hgroup|search)$" "tag-section"
    "(?i)^(?:div|fieldset|details|dialog|figure|template)$" "tag-container"
    "(?i)^(?:ul|menu|dl)$" "tag-ul"
    "(?i)^ol$" "tag-ol"
    "(?i)^(?:picture|svg|canvas)$" "tag-image"
    "(?i)^(?:audio|video|iframe|object)$" "tag-media"
    "(?i)^form$" "tag-form"
    "(?i)^(?:select|textarea|button|output|progress|meter)$" "tag-form-field"
    "-" "tag-framework"
    "tag"))

; Those that have no end tag: the node of the element goes on to the next one.
((element [(start_tag (tag_name) @name) (self_closing_tag (tag_name) @name)] @displayname.target @subtree)
  (#match? @name "(?i)^(?:base|embed|img|input|link|meta)$")
  (#set! "displayname.query" "label")
  (#set-by-case-match! @name "role"
    "(?i)^meta$" "tag-meta"
    "(?i)^(?:link|base)$" "tag-link"
    "(?i)^img$" "tag-image"
    "(?i)^embed$" "tag-media"
    "tag-form-field"))
((element (self_closing_tag (tag_name) @name) @displayname.target) @subtree
  (#match? @name "-")
  (#set! "displayname.query" "label")
  (#set! "role" "tag-framework"))

; The others have a place where they have an id.
((element
  [
    (start_tag (tag_name) @name (attribute (attribute_name) @_attribute))
    (self_closing_tag (tag_name) @name (attribute (attribute_name) @_attribute))
  ] @displayname.target) @subtree
  (#match? @name "(?i)^(?:a|abbr|b|cite|code|dd|dfn|dt|em|i|label|li|p|pre|q|small|span|strong|tbody|td|th|tr)$")
  (#match? @_attribute "(?i)^id$")
  (#set! "displayname.query" "label")
  (#set-by-case-match! @name "role"
    "(?i)^a$" "tag-anchor"
    "(?i)^(?:li|dd|dt)$" "tag-li"
    "tag"))

; Headings and the title, by what they say
((element (start_tag (tag_name) @_tag)) @name.target @subtree
  (#match? @_tag "(?i)^h[1-6]$")
  (#set! "name.query" "text")
  (#set-by-case-match! @_tag "scope.level" "1" "1" "2" "2" "3" "3" "4" "4" "5" "5" "6" "6")
  (#set! "role" "tag-heading"))
((element (start_tag (tag_name) @_tag)) @name.target @subtree
  (#match? @_tag "(?i)^title$")
  (#set! "name.query" "text")
  (#set! "role" "tag-title"))

([
    (script_element (start_tag (tag_name) @name) @displayname.target)
    (style_element (start_tag (tag_name) @name) @displayname.target)
  ] @subtree
  (#set! "displayname.query" "label")
  (#set! "role" "tag-script")
  (#set-if-match! @name "(?i)^style$" "role" "tag-style"))
