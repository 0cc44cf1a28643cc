int lines(int n) {
    if (n < 0) // NEVER
        n = 0;
    if (n > 9) /* not here */ n = 9; /* some NEVER more */
    /* NEVER
     */ n = 1;
    char c = '"'; // NEVER
    const char* s = "// NEVER";
    n += 2; /** NEVER **/
    const char* t = "\""; // NEVER
    return n;
}
