int other(void) { return 0; }
