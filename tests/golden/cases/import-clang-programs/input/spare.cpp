int spare(int x) {
    return x ? 4 : 5;
}
