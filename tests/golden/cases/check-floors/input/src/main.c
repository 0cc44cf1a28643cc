#include "net/net.h"

int main(int argc, char** argv) {
    if (argc > 2)
        return usage();
    return serve(argv[1]);
}

int usage(void) {
    return 1;
}
