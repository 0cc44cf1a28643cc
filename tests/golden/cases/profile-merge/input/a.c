int f(int n)
{
    if (n)
        return 1;
    return 2;
}
int g(void) { return 3; }
