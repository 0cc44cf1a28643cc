#include "shapes.h"

namespace {
template <typename T> int both(T a, T b) {
    return [](T x) { return x > 1 ? 1 : 0; }(a) + [](T x) { return x > 2 ? 1 : 0; }(b);
}
} // namespace

int main(int argc, char**) {
    if (argc > 1)
        return size_class(1.0) + next(2L);
    holder<int> small(next(3));
    derived();
    return size_class('x') + both(1, 2) + (small < holder<int>(9)) - 3 + (small == small);
}
