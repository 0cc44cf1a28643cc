// Functions of every kind for the importer's tests; features.json is its recorded export.
#include "features.h"

#define CHECK(x) do { if (!(x)) failures++; } while (0)
#define LIMIT(x) ((x) > 9 ? 9 : (x))
#define DEFINE_GETTER(name, value) int name() { return value; }

static int failures = 0;

DEFINE_GETTER(forty, 40)

struct counter {
    int value;
    explicit counter(int start)
        : value(start > 0 ? start : 0) {
    }
    ~counter() { value = 0; }
    counter operator+(const counter& other) const {
        return counter(value + other.value);
    }
    operator bool() const { return value != 0; }
};

template <typename F> int apply(F f, int n) {
    int sum = 0;
    for (int i = 0; i < n; ++i)
        sum += f(i);
    return sum;
}

namespace {
int hidden(int a) {
    if (a > 100)
        CHECK(a < 200);
    else
        CHECK(a > 0);
    return LIMIT(a);
}
} // namespace

int main() {
    if (failures)
        return 1;
    int total = apply([](int x) {
        return x + 1;
    }, 0);
    total += apply([](int x) { return x * 2; }, 3);
    counter c = counter(1) + counter(2);
    if (c) {
        auto local = [&](int x) {
            if (x > 3)
                return x;
            return total;
        };
        total += local(1);
    }
    total += twice(larger(1, 2)) + static_cast<int>(larger(2.0, 1.0));
    total += hidden(7) + forty() + local_in_header(-1);
    return total > 1000;
}
