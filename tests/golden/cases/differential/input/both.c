int same(int n) { return n; }
int more(int n) {
    if (n)
        return 1;
    return 0;
}
int grown(int n) { return n ? 1 : 0; }
int missing(void) { return 2; }
