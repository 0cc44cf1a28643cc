int g(void) { return 1; }
