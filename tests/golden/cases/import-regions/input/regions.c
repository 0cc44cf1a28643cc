int next_code(void)
{ if (c)
    { one(); } ;) }
  /* a } b */ // c
#if 1 \
  || more
	 two();
}
int no_join(void)
{ if (c) one();
  else two();
  { if (d) e(); } ; // end
}
int break_in_do_while(void)
{ do x(); while (a || b);
  rest(); }
int one_start(void)
{ a ? b : c; d ? e && f : g; }
int macro_arguments(void)
{ if (c)
    LOG ("a)\"", ')', /* ) */ (x),
         y);
  next(); }
int skipped(void)
{ if (c) { x(); }
#if OLD
  old();
#endif
  now(); }
int nested(void)
{ run([](int x) {
      // comment
      return x;
  }, 0); f();
  int y =
    run([]() { return 1; });
}
int everything(void)
{ if (c) x(); }
void slash(int n) { if (n) { } /*/ a(); */ b(); }
void hex(int n) { if (n) M(0xab'cd); c(); }
int system_macro(int c)
{ if (c)
    return 1;
  else // known by what it makes of "fail"
    fail() << 2; }
int arguments_in_gap(int c)
{ if (c) LOG(a,
 else_b); else f;}
