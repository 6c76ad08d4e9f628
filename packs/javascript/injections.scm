; inherits: _ecmascript
