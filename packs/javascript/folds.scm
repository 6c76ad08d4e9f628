; inherits: _ecmascript, _jsx
