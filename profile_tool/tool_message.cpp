#include "profile_tool/tool_message.h"

#include "common/message.h"

void tool_error(const std::string& text) {
    end_with_error("%s", text.c_str());
}

void tool_warning(const std::string& text) {
    print_warning("%s", text.c_str());
}
