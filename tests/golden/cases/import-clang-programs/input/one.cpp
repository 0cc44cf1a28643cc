#include "shared.h"

namespace {
struct guard {
    ~guard() { value++; }
    int& value;
};
} // namespace

template <typename T> struct pair {
    T first, second;
    T sum(bool both) const { return both ? first + second : first; }
};

static int helper(int i) {
    auto larger = [&](int k) { return k > i ? k : i; };
    return larger(2) + larger(5);
}

int main(int argc, char**) {
    int left = 0;
    {
        guard g{left};
    }
    pair<int> p{argc, left};
    for (int i = 0; i < 3; i++)
        left += p.sum(i == 2) + both(i);
    return helper(left) + library(argc) > 100;
}
