; inherits: typescript, _jsx
