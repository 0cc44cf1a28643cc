inline int both(int x) {
    return x > 1 && x < 5 ? x : 0;
}

inline int only_library(int x) {
    if (x)
        return 1;
    return 2;
}

inline int nobody(int x) {
    return x ? 1 : 2;
}

int library(int x);
