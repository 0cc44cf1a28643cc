#include "shared.h"

static int helper(int i) {
    return i ? 1 : 0;
}

int library(int x) {
    return only_library(x) + helper(x);
}
