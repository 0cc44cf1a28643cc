#include "h.h"
#define MAX(a, b) ((a) > (b) ? (a) : (b))

static int local(int n) {
    int r = 0;
    for (int i = 0; i < n; i++) {
        if ((i && r) || n > 100)
            r += MAX(i, 2);
        else
            r--;
    }
    return r > 0 && n < 50 ? r : -r;
}

int never(int a) {
    while (a)
        a--;
    return a;
}

int main(int argc, char** argv) {
    (void)argv;
    return local(argc) + inl(argc) > 1000;
}
