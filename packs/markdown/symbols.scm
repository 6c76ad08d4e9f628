; A heading stands for all that follows, up to the next one that isn't of a deeper level.
((atx_heading (atx_h1_marker) heading_content: (inline) @name) @start.before
  (#set! "scope.extend")
  (#set! "scope.level" "1")
  (#strip! @name "\\s+#+\\s*$")
  (#set! "role" "heading"))
((atx_heading (atx_h2_marker) heading_content: (inline) @name) @start.before
  (#set! "scope.extend")
  (#set! "scope.level" "2")
  (#strip! @name "\\s+#+\\s*$")
  (#set! "role" "heading"))
((atx_heading (atx_h3_marker) heading_content: (inline) @name) @start.before
  (#set! "scope.extend")
  (#set! "scope.level" "3")
  (#strip! @name "\\s+#+\\s*$")
  (#set! "role" "heading"))
((atx_heading (atx_h4_marker) heading_content: (inline) @name) @start.before
  (#set! "scope.extend")
  (#set! "scope.level" "4")
  (#strip! @name "\\s+#+\\s*$")
  (#set! "role" "heading"))
((atx_heading (atx_h5_marker) heading_content: (inline) @name) @start.before
  (#set! "scope.extend")
  (#set! "scope.level" "5")
  (#strip! @name "\\s+#+\\s*$")
  (#set! "role" "heading"))
((atx_heading (atx_h6_marker) heading_content: (inline) @name) @start.before
  (#set! "scope.extend")
  (#set! "scope.level" "6")
  (#strip! @name "\\s+#+\\s*$")
  (#set! "role" "heading"))
((setext_heading heading_content: (paragraph) @name (setext_h1_underline)) @start.before
  (#set! "scope.extend")
  (#set! "scope.level" "1")
  (#set! "role" "heading"))
((setext_heading heading_content: (paragraph) @name (setext_h2_underline)) @start.before
  (#set! "scope.extend")
  (#set! "scope.level" "2")
  (#set! "role" "heading"))
