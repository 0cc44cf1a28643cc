#include "shapes.h"

int main() {
    holder<char> letter('a');
    letter << 1 << (letter == letter ? 'b' : 'c');
    plain(-1);
    return size_class('y') + size_class(5) + next(5, 2) + next(4.0, 2) + letter == 0;
}
