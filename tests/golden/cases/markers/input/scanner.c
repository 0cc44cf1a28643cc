int scanner(int n) { /**/
    n += 1; // NEVER
    n += 2; /* closed */ // NEVER
    n += 3; /*/ NEVER */
    n += 4; '// NEVER
    n += 5; '// NEVER
    return n;
}
// NEVER
