// The shapes of code that gcov's lines tell little of.
#include "shape.h"

template <class T> T half(T value) {
    if (value > 8)
        return 8;
    return value / 2;
}

static int twice(int x) { return x > 4 ? x : x * 2; }

static int never_called(int x) {
    return x + 1;
}

template <class F> int apply(F function, int times) {
    int sum = 0;
    for (int i = 0; i < times; ++i)
        sum += function(i);
    return sum;
}

int lambdas(int n) {
    int seen = 0;
    int sum = apply([](int i) { return i * i; }, 3);
    sum += apply(
        [&seen, n](int i) {
            ++seen;
            return i + n;
        },
        2);
    sum += apply([](int i) {
        return i;
    }, n);
    return sum + seen;
}

int guarded(int x) {
    loud watcher;
    try {
        if (x > 100)
            throw x;
        x += watcher.area();
    } catch (int) {
        return -1;
    }
    return x;
}

int table(int i) {
    static const int squares[] = {
#include "squares.inc"
    };
    switch (i) {
#include "cases.inc"
    }
    return squares[0];
}

int main() {
    loud shape;
    int sum = half(3) + twice(2);
    sum += static_cast<int>(half(9.0));
    sum += lambdas(0) + guarded(sum) + table(1) + other(&shape);
    return sum > 1000; }
