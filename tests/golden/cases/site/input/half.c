int half(int n) {
    return n > 0 ? n / 2 : 0;
}
int never(int n) {
    return n;
}
int tail(int n) {
    while (n) --n;
    return n; }
int none(int n) { return n; }
int many(int n) { return n; } // NEVER
int pair(void) { if (x()) y(); }
