; inherits: typescript, _jsx
; TypeScript with elements.
