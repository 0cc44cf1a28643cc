/* Definitions that declare their parameters in front of the body. */
int add(a, b)
    int a; char *b[];
{
    return a + *b[0];
}

static int
never(a) int a;
{
    return a;
}

struct point { int x, y; }; static struct point
make(int x,
#ifdef OTHER
     int z
#else
     int y
#endif
     )
{
    struct point p = { .x = x, .y = y };
    return p;
}

#ifdef OTHER
int either(void) {
#else
int either(int a) {
#endif
    if (a > 5)
        a = 1;
    else
    {
        /* comment */
        a = 2;
    }
    if (a > 5) {
        a = 1; } else {
        a = 2; }
    return a;
}

int main(void)
{
    char c = 1; char *s[] = { &c };
    return add(1, s) + make(1, 2).x + either(3) < 3;
}
