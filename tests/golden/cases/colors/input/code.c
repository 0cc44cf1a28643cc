/* all classes */
int f(void) { a(); b();
    c(); /* X */
}
int g(void) { return 1; }
