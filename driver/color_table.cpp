#include "driver/color_table.h"

#include "common/fatal.h"

#include <cstdio>

// "unset" gives way to the colour of clrUnknown once the options are read, unless one of them sets it.
const char* BGColor[7] = {nullptr, "unset", "#ffffff", "#ffffff", "#fafad2", "#ffff99", "#ffcccc"};

void check_color(Color color) {
    if (color >= clrNotFeasible && color <= clrUncoveredFunc)
        return;
    std::printf("ERROR: unknown color %d\n", static_cast<int>(color));
    pgt_Exit(1);
}

void SetBGColor(Color color, const char* value) {
    check_color(color);
    BGColor[color] = value;
}

const char* takeBGColor(Color /*color*/) {
    return BGColor[clrUnknown];
}

void SetNoPartialColor() {
    BGColor[clrPartial] = BGColor[clrCovered];
}
