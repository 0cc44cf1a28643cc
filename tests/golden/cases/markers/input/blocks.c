int blocks(int n) {
    // BEGIN
    n += 1;
    // BEGIN
    n += 2;
    // END
    n += 3;
    // END
    n += 4; /* BEGIN */ n += 5; /* END */
    n += 6;
    // BEGIN
    n += 7;
    return n;
}
