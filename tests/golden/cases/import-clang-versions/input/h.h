static inline int inl(int x) {
    if (x > 1)
        return 2;
    return x;
}

static inline int unused(int x) {
    return x ? 1 : 2;
}
