#include "profile_tool/tool_message.h"

#include "common/fatal.h"

#include <cstdio>

void tool_error(const std::string& text) {
    std::fprintf(stderr, "ERROR: %s\n", text.c_str());
    pgt_Exit(1);
}

void tool_warning(const std::string& text) {
    std::fprintf(stderr, "WARNING: %s\n", text.c_str());
}
