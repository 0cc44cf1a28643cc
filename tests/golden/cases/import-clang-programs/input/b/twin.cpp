static int twin(int x) {
    while (x)
        x--;
    return x;
}

int second_twin(int x) {
    return twin(x);
}
