int stray(int n) {
    n += 1; // NEVER
    n += 2; // END
    n += 3; // NEVER
    return n;
}
