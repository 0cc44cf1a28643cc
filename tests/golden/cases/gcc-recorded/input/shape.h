struct shape {
    shape() : sides(4) {}
    virtual ~shape() { sides = 0; }
    virtual int area() const { return 0; }
    int sides;
};

struct loud : shape {
    loud() {}
    int area() const override {
        return sides * sides;
    }
};

inline int corners(const shape* s) {
    if (!s)
        return 0;
    return s->sides;
}

int other(const shape* s);
