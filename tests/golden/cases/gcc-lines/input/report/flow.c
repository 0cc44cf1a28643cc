static int f(int x) {
    if (x)
        return 1;
    return 0;
}
#ifdef OTHER
static int f(int x) {
    return x;
}
#endif
int outer(int n) {
    run([](int i) {
        return i;
    });
    run([](int i) { return i; }); run([] { return 2; });
    try {
        n = 2;
    }
    catch (...) {
        n = 3;
    }
    return n; }
int one(void) { return 1; } int two(void) { return 2; }
int macro_end(void)
{
    return 3;
END_OF_FUNCTION
