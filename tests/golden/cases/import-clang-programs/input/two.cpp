#include "shared.h"

int first_twin(int x);
int second_twin(int x);

int main(int argc, char**) {
    if (library(0) > 50)
        return 1;
    return first_twin(argc) + second_twin(argc) + both(3) > 100;
}
