int plain(int n) { return n ? 1 : 0; }
int other(int n) { return n; }
int lined(int n) { return n; }
