#include "analysis/line_walk.h"

#include "analysis/code_lines.h"

#include <algorithm>

/// At most this many blanks at the start of a line take the colour of what follows them.
constexpr std::size_t kMostLookAhead = 255;

Color getColor(std::uint64_t count, bool bNotInRef, unsigned int numBlocks, unsigned int numExecuted,
               bool bAdjusted, bool differential) {
    if (differential) {
        if (count == 0)
            return clrCovered;
        return bNotInRef || count == NEVER_ENTERED ? clrUncoveredFunc : clrUncoveredBlock;
    }
    if (count == 0)
        return clrUncoveredBlock;
    if (count == NEVER_ENTERED)
        return clrUncoveredFunc;
    const bool all = numBlocks == numExecuted || (bAdjusted && numBlocks == numExecuted + 1);
    return all ? clrCovered : clrPartial;
}

line_walk::line_walk(const source_analysis& analysis) : analysis_(analysis) {}

line_walk::~line_walk() = default;

bool line_walk::next() {
    const std::string_view text = analysis_.text;
    if (at_ >= text.size())
        return false;
    const std::size_t newline = text.find('\n', at_);
    const bool has_newline = newline != std::string_view::npos;
    const std::size_t length = (has_newline ? newline : text.size()) - at_;
    ++line_.number;
    line_.text = text.substr(at_, length);
    line_.has_newline = has_newline;
    line_.disabled = analysis_.disabled.contains(line_.number);
    line_.color = color_;
    at_ += length + 1;
    find_stretches();
    return true;
}

/// The class of a position.
static Color class_of(const block_list_node& position, bool differential) {
    return getColor(position.count, position.bNotInRef != 0, position.numBlocks, position.numExecuted,
                    position.bAdjusted(), differential);
}

void line_walk::find_stretches() {
    const std::vector<block_list_node>& all = analysis_.positions.positions();
    std::size_t begin = passed_ + positions_.size();
    while (begin < all.size() && all[begin].line < line_.number)
        ++begin;
    std::size_t end = begin;
    while (end < all.size() && all[end].line == line_.number)
        ++end;
    passed_ = begin;
    positions_ = std::span(all).subspan(begin, end - begin);
    stretches_.clear();
    if (positions_.empty())
        return;
    look_ahead();
    const std::size_t columns = line_.text.size() + (line_.has_newline ? 1 : 0);
    for (const block_list_node& position : positions_) {
        if (position.column > columns)
            break;
        stretches_.push_back({position.column - 1, class_of(position, analysis_.differential), &position});
    }
    if (!stretches_.empty())
        color_ = stretches_.back().color;
}

/// Gives the indentation of a line the class of its first statement.
void line_walk::look_ahead() {
    const std::string_view text = line_.text;
    std::size_t blanks = 0;
    while (blanks < text.size() && blanks < kMostLookAhead && (text[blanks] == ' ' || text[blanks] == '\t'))
        ++blanks;
    const bool at_end = blanks == text.size() && !line_.has_newline && blanks < kMostLookAhead;
    if (blanks == 0 || at_end)
        return;
    const auto found =
        std::find_if(positions_.begin(), positions_.end(),
                     [blanks](const block_list_node& position) { return position.column > blanks; });
    if (found != positions_.end() && found->column == blanks + 1)
        stretches_.push_back({0, class_of(*found, analysis_.differential), nullptr});
}

/// How often the code at a position was executed; `before`: the count in force in front of it.
static std::uint64_t executions(const block_list_node& position, std::uint64_t before) {
    if (position.count == NEVER_ENTERED || position.count < position.numAdjusted)
        return 0;
    const std::uint64_t count = position.count - position.numAdjusted;
    // A function's last block is mostly not counted, but credited: it is taken for reached as often as the code in
    // front of it.
    return count == 0 && position.bAdjusted() ? std::max<std::uint64_t>(before, 1) : count;
}

void line_walk::examine_code() {
    if (examined_ == line_.number)
        return;
    if (!code_)
        code_ = std::make_unique<code_lines>(analysis_);
    examined_ = line_.number;
    const std::vector<block_list_node>& all = analysis_.positions.positions();
    for (; counted_ < passed_; ++counted_)
        in_force_ = executions(all[counted_], in_force_);
    const code_line code = code_->examine(line_.number);
    holds_code_ = code.in_function;
    count_ = 0;
    if (!holds_code_)
        return;
    std::uint64_t before = in_force_;
    bool inside = code.inside;
    for (const block_list_node& position : positions_) {
        if (inside && position.column > code.column)
            count_ = std::max(count_, before);
        inside = inside && position.column <= code.column;
        before = executions(position, before);
        count_ = std::max(count_, before);
    }
    if (inside)
        count_ = std::max(count_, before);
}

bool line_walk::holds_code() {
    examine_code();
    return holds_code_;
}

std::uint64_t line_walk::count() {
    examine_code();
    return count_;
}
