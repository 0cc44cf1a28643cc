int order(int n) {
    a(); b(); c();
    d();
    e(); // OFF
}
int missing(void) { return 1; }
int off(void) { return 1; } // OFF
int all_off(void) {
    return 1; } // OFF
