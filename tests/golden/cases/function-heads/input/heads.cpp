// Where functions and branches begin.
#define METHOD(name) int name() { return 1; }
#define BUMP(n) n += 2

static int never(int x) // else {
{
    return x;
}

/* A comment is no part of a head. */
template <class T, int N = sizeof(T)>
[[nodiscard]] static inline
T twice(T value) noexcept(true)
{
    return value * 2;
}

namespace inner {
class box {
  public:
    METHOD(made)
    box() : a_{1}, b_(2) {}
    explicit box(int a)
        : a_{a}
        /* else */
        , b_(never_called ? never(a) : a)
    {
        ++b_;
    }
    box(const box&) = default;
    int never_here() const { return a_; }
  protected: auto area() const -> int { return a_ * b_; }
  public:
    int operator()(int (*f)() = [] { return 7; }) { return f(); }
    int operator[](int i) const { return i + made_() + never_called; }

  private:
    int made_() const { return area(); }
    int a_, b_;
    static const bool never_called = false;
};
} // namespace inner

struct tried {
    int v;
    tried(int a)
    try : v(a) {
    } catch (int) {
    }
};

extern "C" {
int
c_function(void) { return 3; }
}

int one() { return 1; } int two() { return 2; }
int marked(int x)
// not here
{
    return x;
}

template <class T> int branches(T x) {
    if (x > 9)
        return 1;
    else
        ++x;
    if (x > 9) {
        BUMP(x);
    } /* else */ else { // else
        ++x;
    }
    if (x > 9) {
    }
#if 1
    else if constexpr (sizeof(T) > 4)
        BUMP(x);
#else
    else
        --x;
#endif
    else [[likely]]
        BUMP(x);
    if (x < 0) --x; else if (x < 9) x += 4; else x = 0;
    if (x < 9)
        BUMP(x);
    else
        BUMP
        (x);
    return x;
}

int main() {
    struct local {
        int called(int x) {
            return x;
        }
        int never(int x) {
            return x;
        }
        int one_line() { return 1; }
        int never_line() { return 2; } } l;
    auto f = [&](int x) {
        return x;
    };
    inner::box b, c(1), d(c);
    tried t(1);
    int n = twice(1) + twice(1L) + b() + b[1] + l.called(1) + l.one_line() + f(1) + t.v + d.made();
    n += one() + c_function() + branches(1) + branches(1L) + d[0];
    return n < 10;
}
