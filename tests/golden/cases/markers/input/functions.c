int kept(void)
{ return 1; }
/* NEVER */
/*********/
int gone(void)
// NEVER
{ return 2; }

int back(void)
{ return 3; }
// NEVER
int line(void)
{ return 4; }
// NEVER
{ last(); }
int tail;
