// Functions that share a line: of some macros' functions, and of those in one line, not all were called.
int checks = 0;
#define CHECK(name)                                                                                          \
    struct name { name() { ++checks; } static void run(int n); } name##_made;                                \
    void name::run(int n)

CHECK(never_run) {
    if (n)
        ++checks;
}
static int first(int x) { return x; } static int second(int x) {
    return x + 1;
} static int third(int x) {
    return x + 2;
}
CHECK(run_once) {
    if (n)
        ++checks;
}
int main(int argc, char**) {
    run_once::run(argc);
    return argc > 1 ? second(1) : first(0) + third(0) - 2;
}
