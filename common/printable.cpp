#include "common/printable.h"

std::string printable(std::string_view name) {
    static const char digits[] = "0123456789abcdef";
    std::string text;
    text.reserve(name.size());
    for (const char c : name) {
        const unsigned char byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte != 0x7f) {
            text += c;
            continue;
        }
        text += "\\x";
        text += digits[byte >> 4];
        text += digits[byte & 15];
    }
    return text;
}
