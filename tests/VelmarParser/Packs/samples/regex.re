^(?:a|b)+?(?<name>[^a-z\d_\u0041]){2,3}?\k<name>\1\bx*\B\p{Lu}\p{Script=Greek}.[[:alpha:]](?=x)(?<!y)\u{1F600}\cA\n\/(?i:q?)$
