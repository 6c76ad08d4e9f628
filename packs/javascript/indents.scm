; inherits: _ecmascript, _jsx

(field_definition) @indent.begin
