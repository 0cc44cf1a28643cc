#include "import/source_outline.h"

#include "import/outline_scanner.h"

#include <algorithm>
#include <limits>

source_outline::source_outline(const source_text& source) : source_(source) {
    const std::string_view text = source.text();
    if (text.size() < std::numeric_limits<std::uint32_t>::max())
        outline_scanner(text, &heads_, &branches_).scan();
}

const outlined_head* source_outline::head_of(std::size_t place, std::size_t end) const {
    const auto head =
        std::lower_bound(heads_.begin(), heads_.end(), place,
                         [](const outlined_head& a, std::size_t wanted) { return a.body < wanted; });
    if (head == heads_.end() || place < head->begin || source_.text()[place] == '[')
        return nullptr;
    // Of a defaulted function, clang knows but one character in front of the semicolon.
    const bool inside = head->body <= end || source_.text()[head->body] == ';';
    return inside ? &*head : nullptr;
}

std::optional<std::size_t> source_outline::else_before(std::size_t code) const {
    const auto branch =
        std::lower_bound(branches_.begin(), branches_.end(), code,
                         [](const outlined_branch& a, std::size_t wanted) { return a.code < wanted; });
    if (branch == branches_.end() || branch->code != code)
        return std::nullopt;
    return branch->word;
}
