int work(int n) {
	int sum = 0, i;
	for (i = 0; i < n; ++i) { if (n & i) sum += i; else sum -= i; }
  {a();}b();
    switch (n) { case 1: sum = 1; break; case 2: sum = 2; break; default: sum = 3; }
	    again();	tabs(	);
    abort(); // cannot happen
    if (sum < 0 || sum > 9) note("<b>&</b>");
x
    return sum;
}
int idle(void) { return 0; }
int last(void) { return 1; }