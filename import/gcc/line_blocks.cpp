#include "import/gcc/line_blocks.h"

#include "import/gcc/stretches.h"

#include <algorithm>

namespace {

/// Makes the blocks of one function.
class function_placer {
  public:
    function_placer(const counted_function& function, const function_surroundings& surroundings,
                    const std::vector<std::uint32_t>& called_starts, const source_lines& source,
                    const source_outline& outline)
        : function_(function), surroundings_(surroundings), called_starts_(called_starts), source_(source),
          outline_(outline) {}

    placed_function place();

  private:
    bool is_outside() const { return function_.extent.start.line == 0; }
    bool was_called() const;
    source_position entry() const;
    source_position first_code(const counted_line& line) const;
    bool ends_with_brace() const;
    bool is_entry_line(const counted_line& line) const;
    bool is_brace_line(const counted_line& line) const;
    bool is_left_out(const counted_line& line) const;
    bool is_punctuation(const counted_line& line) const;
    void add_line(const counted_line& line);
    void add_shared();
    void add_last();
    std::uint32_t first_line() const;

    const counted_function& function_;
    const function_surroundings& surroundings_;
    const std::vector<std::uint32_t>& called_starts_;
    const source_lines& source_;
    const source_outline& outline_;
    bool called_ = false;
    std::vector<profile_block> blocks_;
    std::vector<profile_block> trailing_; ///< lines that other runs may not have
    std::vector<profile_block> marks_;    ///< on lines that were executed in part
};

bool function_placer::was_called() const {
    if (!is_outside())
        return function_.entries != 0;
    return any_executed(function_.lines);
}

source_position function_placer::entry() const {
    const source_position start = function_.extent.start;
    if (surroundings_.start.has_head)
        return surroundings_.start.position;
    if (surroundings_.code_before)
        return {start.line, std::max<std::uint32_t>(start.column, 1)};
    return source_.first_code(start.line);
}

/// The line's first code, or the "else" that leads to it from a line without a count.
source_position function_placer::first_code(const counted_line& line) const {
    const source_position code = source_.first_code(line.line);
    const std::optional<source_position> word = source_.else_before(code, outline_);
    const auto counted =
        std::lower_bound(function_.lines.begin(), function_.lines.end(), word ? word->line : 0,
                         [](const counted_line& a, std::uint32_t wanted) { return a.line < wanted; });
    return word && counted->line != word->line ? *word : code;
}

/// Whether the function's end is a brace, as far as that can be seen.
bool function_placer::ends_with_brace() const {
    const source_position end = function_.extent.end;
    const std::string_view text = source_.text(end.line);
    return !is_outside() && end.column >= 1 && end.column <= text.size() && text[end.column - 1] == '}';
}

bool function_placer::is_entry_line(const counted_line& line) const {
    return line.line == function_.extent.start.line;
}

/// The closing brace is the first character of the function's last line: the last block stands for the line.
bool function_placer::is_brace_line(const counted_line& line) const {
    return line.line == function_.extent.end.line && ends_with_brace() &&
           source_.first_code(line.line) == function_.extent.end;
}

bool function_placer::is_punctuation(const counted_line& line) const {
    const std::string_view text = source_.text(line.line);
    return !text.empty() && text.find_first_not_of("});, \t\r\f\v") == std::string_view::npos;
}

/// Only exception paths lead to the line, and none was taken. Such a line is code that no test covered when
/// it is the body of a handler, but destructors run there, too, so that a lone brace has such paths.
bool function_placer::is_left_out(const counted_line& line) const {
    if (!called_ || line.count != 0 || line.unexecuted)
        return false;
    return is_punctuation(line) ||
           std::binary_search(called_starts_.begin(), called_starts_.end(), line.line);
}

void function_placer::add_line(const counted_line& line) {
    const bool first = is_entry_line(line);
    if (is_brace_line(line) && !first)
        return;
    const source_position position = first ? entry() : first_code(line);
    if (!first && !is_left_out(line))
        (is_punctuation(line) ? trailing_ : blocks_).push_back({position, line.count});
    if (called_ && line.count != 0 && !line.complete)
        marks_.push_back({position, 0});
}

/// The first lines of functions inside whose rest is this function's own.
void function_placer::add_shared() {
    for (const counted_line& line : surroundings_.shared)
        trailing_.push_back({source_.first_code(line.line), line.count});
    const auto before = [](const profile_block& a, const profile_block& b) {
        return a.position < b.position;
    };
    std::stable_sort(trailing_.begin(), trailing_.end(), before);
    std::size_t kept = 0;
    for (std::size_t i = 1; i < trailing_.size(); ++i) {
        if (trailing_[kept].position == trailing_[i].position)
            trailing_[kept].count = add_counts(trailing_[kept].count, trailing_[i].count);
        else
            trailing_[++kept] = trailing_[i];
    }
    trailing_.resize(std::min(trailing_.size(), kept + 1));
}

/// The last block must stand behind all others, as vexcov shows what begins there as covered.
void function_placer::add_last() {
    source_position largest = {0, 0};
    for (const std::vector<profile_block>* part : {&blocks_, &trailing_, &marks_}) {
        for (const profile_block& block : *part)
            largest = std::max(largest, block.position);
    }
    source_position position = function_.extent.end;
    if (!ends_with_brace() || position <= largest) {
        const source_position behind = source_.behind(std::max(position.line, largest.line));
        position = source_.readable() ? behind : std::max(position, behind);
    }
    if (position <= largest)
        position = {largest.line, largest.column + 1};
    blocks_.push_back({position, 0});
}

/// The line of the static profile: a function that was never called is marked from there. What is executed on
/// it, such as the code around an inner function or another function of one macro, ends the mark, so that the
/// mark begins on the next line then.
std::uint32_t function_placer::first_line() const {
    const std::uint32_t start = surroundings_.start.line;
    if (function_.lines.empty() || (called_ && !is_outside()))
        return start;
    if (function_.lines.front().line != function_.extent.start.line)
        return function_.lines.front().line;
    if (surroundings_.beside_called) {
        for (const counted_line& line : function_.lines) {
            if (line.line > start)
                return line.line;
        }
    }
    return start;
}

placed_function function_placer::place() {
    called_ = was_called();
    if (!is_outside())
        blocks_.push_back({entry(), function_.entries});
    for (const counted_line& line : function_.lines)
        add_line(line);
    if (called_)
        add_shared();
    if (blocks_.empty()) // only punctuation
        std::swap(blocks_, trailing_);
    add_last();
    const std::size_t last = blocks_.size() - 1;
    blocks_.insert(blocks_.end(), trailing_.begin(), trailing_.end());
    blocks_.insert(blocks_.end(), marks_.begin(), marks_.end());
    return {function_.name, first_line(), called_, last, std::move(blocks_)};
}

} // namespace

placed_function place_function(const counted_function& function, const function_surroundings& surroundings,
                               const std::vector<std::uint32_t>& called_starts, const source_lines& source,
                               const source_outline& outline) {
    return function_placer(function, surroundings, called_starts, source, outline).place();
}
