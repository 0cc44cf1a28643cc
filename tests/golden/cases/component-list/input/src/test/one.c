int test(void) { return 1; }
