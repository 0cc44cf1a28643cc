int send_one(int a) { return a ? send_it(a) : 0; }
int send_two(int a) {
    return send_one(a) + send_one(a);
}
