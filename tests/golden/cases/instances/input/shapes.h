// Templates and what the compilers make several functions of.
template <typename T> int size_class(T value) {
    int result = 0;
    if constexpr (sizeof(T) == 1) {
        if (value == 'x')
            return 1;
        result = 2;
    } else if constexpr (sizeof(T) == 8) {
        result = 3;
    } else {
        result = 4;
    }
    auto twice = [&](auto x) { return value == 0 ? 0 : 2 * x; };
    return twice(result);
}

template <typename T> T next(T value) {
    return value + 1;
}
template <typename T> T next(T value, int by) {
    return value < by ? value : value + static_cast<T>(by);
}

struct base {
    int value = 1;
    virtual ~base() {}
};

template <typename T> class holder : public virtual base {
  public:
    explicit holder(T value) : value_(value) {}
    operator T() const { return value_; }
    bool operator<(const holder& other) const { return value_ < other.value_; }
    friend bool operator==(const holder& a, const holder& b) { return a.value_ == b.value_; }
    template <typename U> holder& operator<<(U more) {
        value_ = static_cast<T>(value_ + more);
        return *this;
    }

  private:
    T value_;
};

class plain : public virtual base {
  public:
    explicit plain(int v) { value = v > 0 ? v : 0; }
};
class derived : public plain {
  public:
    derived() : base(), plain(7) {}
};
