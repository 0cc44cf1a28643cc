#include "import/gcc/source_lines.h"

#include <algorithm>

std::string_view source_lines::text(std::uint32_t line) const {
    const std::optional<std::size_t> begin = line == 0 ? std::nullopt : source_.offset_of({line, 1});
    if (!begin)
        return {};
    const std::string_view rest = source_.text().substr(*begin);
    return rest.substr(0, rest.find('\n'));
}

source_position source_lines::first_code(std::uint32_t line) const {
    const std::size_t blanks = text(line).find_first_not_of(" \t\r\f\v");
    return {line, blanks == std::string_view::npos ? 1 : static_cast<std::uint32_t>(blanks + 1)};
}

std::optional<source_position> source_lines::else_before(source_position code,
                                                         const source_outline& outline) const {
    const std::optional<std::size_t> offset = source_.offset_of(code);
    const std::optional<std::size_t> word = offset ? outline.else_before(*offset) : std::nullopt;
    return word ? std::optional(source_.position_of(*word)) : std::nullopt;
}

source_position source_lines::behind(std::uint32_t line) const {
    return {line, static_cast<std::uint32_t>(std::min<std::size_t>(text(line).size(), kLargestColumn) + 1)};
}

bool source_lines::beyond_end(std::uint32_t line) const {
    return source_.readable() && !source_.offset_of({line, 1});
}
