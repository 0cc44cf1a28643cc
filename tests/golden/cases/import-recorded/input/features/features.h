// A header with code for the importer's tests.
#pragma once

inline int twice(int value) {
    return value * 2;
}

template <typename T> T larger(T a, T b) {
    if (a < b)
        return b;
    return a;
}

static int local_in_header(int value) { return value > 0 ? value : -value; }
