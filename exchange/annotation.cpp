#include "exchange/annotation.h"

#include "exchange/safe_text.h"

static std::string command(const char* kind, const std::string& place, const char* title,
                           std::string_view message) {
    return std::string("::") + kind + " " + place + "title=" + title + "::" + command_message(message) + "\n";
}

std::string annotation(const char* kind, const char* title, std::string_view message) {
    return command(kind, "", title, message);
}

std::string annotation_at(std::string_view file, line_range lines, const char* kind, const char* title,
                          std::string_view message) {
    const std::string place = "file=" + command_property(file) + ",line=" + std::to_string(lines.first) +
                              ",endLine=" + std::to_string(lines.last) + ",";
    return command(kind, place, title, message);
}
