; inherits: _c
