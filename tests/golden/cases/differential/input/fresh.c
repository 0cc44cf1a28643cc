int first(void) { return 1; }
int second(void) { return 2; }
