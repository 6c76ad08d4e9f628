; inherits: _jsx
