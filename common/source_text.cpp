#include "common/source_text.h"

#include "common/source_file.h"

#include <algorithm>

source_text::source_text(const std::string& path) : readable_(load_source(path.c_str(), &text_)) {
    if (!readable_)
        return;
    line_starts_.reserve(text_.size() / 32); // enough for most sources
    line_starts_.push_back(0);
    for (std::size_t i = text_.find('\n'); i != std::string_view::npos; i = text_.find('\n', i + 1))
        line_starts_.push_back(i + 1);
    line_starts_.push_back(text_.size() + 1);
}

std::optional<std::size_t> source_text::offset_of(source_position position) const {
    if (!readable_ || position.line >= line_starts_.size())
        return std::nullopt;
    const std::size_t offset = line_starts_[position.line - 1] + position.column - 1;
    if (offset >= line_starts_[position.line])
        return std::nullopt;
    return offset;
}

bool source_text::contains(source_position position) const {
    const std::optional<std::size_t> offset = offset_of(position);
    return offset && *offset < text_.size() && text_[*offset] != '\n';
}

source_position source_text::position_of(std::size_t offset) const {
    const auto behind = std::upper_bound(line_starts_.begin(), line_starts_.end() - 1, offset);
    const std::ptrdiff_t line = behind - line_starts_.begin();
    return {static_cast<std::uint32_t>(line),
            static_cast<std::uint32_t>(offset - line_starts_[static_cast<std::size_t>(line) - 1] + 1)};
}

source_position source_text::position_of(std::size_t offset, std::uint32_t line) const {
    while (line + 1 < line_starts_.size() && line_starts_[line] <= offset)
        ++line;
    return {line, static_cast<std::uint32_t>(offset - line_starts_[line - 1] + 1)};
}
