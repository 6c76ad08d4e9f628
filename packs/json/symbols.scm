; Members, by their keys
((pair key: (string) @name) @subtree
  (#strip! @name "^\"|\"$")
  (#set! "role" "property"))

; Objects in a list, by the first thing that each says
((array (object . (pair value: [(string) (number) (true) (false) (null)] @name)) @subtree)
  (#strip! @name "^\"|\"$")
  (#set! "role" "block"))
((array (object . (pair key: (string) @name value: [(object) (array)])) @subtree)
  (#strip! @name "^\"|\"$")
  (#set! "role" "block"))
