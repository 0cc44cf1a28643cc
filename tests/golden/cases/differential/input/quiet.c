int quiet(void) { return 1; }
