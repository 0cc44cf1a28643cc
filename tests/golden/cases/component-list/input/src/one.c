int one(void) { return 1; } // MARK
// FROM
int two(void) { return 2; }
// TO
int three(void) { return 3; }
int four(void) { return 4; } // SKIP
