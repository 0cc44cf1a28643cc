static int twin(int x) {
    return x ? 1 : 2;
}

int first_twin(int x) {
    return twin(x);
}
