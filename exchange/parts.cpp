#include "exchange/parts.h"

#include "common/file_ptr.h"
#include "common/message.h"
#include "common/remedy.h"

#include <cerrno>
#include <cstdio>
#include <string_view>
#include <unistd.h>

std::string part_name(const std::string& name, std::size_t number) {
    const std::size_t slash = name.rfind('/');
    const std::size_t begin = slash == std::string::npos ? 0 : slash + 1;
    const std::size_t dot = name.rfind('.');
    const std::size_t place = dot == std::string::npos || dot <= begin ? name.size() : dot;
    return name.substr(0, place) + "." + std::to_string(number) + name.substr(place);
}

/// True for a file that begins as each part does.
static bool is_part(const std::string& path) {
    const file_ptr stream(std::fopen(path.c_str(), "rb"));
    if (!stream)
        return false;
    char head[1024];
    const std::string_view text(head, std::fread(head, 1, sizeof head, stream.get()));
    const std::size_t end = text.find("<sources>");
    return text.starts_with("<?xml ") && text.substr(0, end).find("\n<coverage ") != std::string_view::npos &&
           text.substr(0, end).find(" version=\"vexcov ") != std::string_view::npos;
}

void remove_further_parts(const std::string& name, std::size_t count) {
    for (std::string part = part_name(name, ++count); is_part(part); part = part_name(name, ++count))
        if (unlink(part.c_str()) != 0)
            end_with_error("cannot remove %s, which an earlier run has left: %s", printable(part).c_str(),
                           reason_of(errno).c_str());
}
