int before = 1;

int first(int x) {
    if (x > 1 && x < 9)
        return 1;
    return 0;
}

int second(void) {
    return 2;
}
int third(void) { return 3; }
