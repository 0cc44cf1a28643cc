#include "analysis/line_walk.h"

#include "analysis/code_lines.h"
#include "analysis/scope_counts.h"
#include "common/code_lexer.h"

#include <algorithm>
#include <cstring>

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

line_walk::line_walk(const source_analysis& analysis, bool colours)
    : analysis_(analysis), colours_(colours), all_(analysis.positions.positions()),
      positions_(all_.first(0)) {}

line_walk::~line_walk() = default;

bool line_walk::next() {
    const std::string_view text = analysis_.text;
    if (at_ >= text.size())
        return false;
    const void* const newline = std::memchr(text.data() + at_, '\n', text.size() - at_);
    const bool has_newline = newline != nullptr;
    const std::size_t length =
        has_newline ? static_cast<std::size_t>(static_cast<const char*>(newline) - text.data()) - at_
                    : text.size() - at_;
    ++line_.number;
    line_.text = text.substr(at_, length);
    line_.has_newline = has_newline;
    line_.disabled = analysis_.disabled.contains(line_.number);
    line_.color = color_;
    at_ += length + 1;
    find_positions();
    if (colours_)
        find_stretches();
    return true;
}

/// The class of a position.
static Color class_of(const block_list_node& position, bool differential) {
    return getColor(position.count, position.bNotInRef != 0, position.numBlocks, position.numExecuted,
                    position.bAdjusted(), differential);
}

void line_walk::find_positions() {
    const block_list_node* const end = all_.data() + all_.size();
    const block_list_node* first = positions_.data() + positions_.size();
    while (first != end && first->line < line_.number)
        ++first;
    const block_list_node* last = first;
    while (last != end && last->line == line_.number)
        ++last;
    positions_ = {first, last};
}

void line_walk::find_stretches() {
    stretches_.clear();
    if (positions_.empty())
        return;
    const std::size_t ahead = look_ahead();
    const std::size_t columns = line_.text.size() + (line_.has_newline ? 1 : 0);
    for (const block_list_node& position : positions_) {
        if (position.column > std::max(columns, ahead))
            break;
        color_ = class_of(position, analysis_.differential);
        if (position.column == ahead)
            stretches_.insert(stretches_.begin(), {0, color_, nullptr});
        if (position.column <= columns)
            stretches_.push_back({position.column - 1, color_, &position});
    }
}

/// The column of the first statement behind the line's indentation, which takes its class; 0 for none.
std::size_t line_walk::look_ahead() const {
    const std::string_view text = line_.text;
    std::size_t blanks = 0;
    while (blanks < text.size() && blanks < kMostLookAhead && (text[blanks] == ' ' || text[blanks] == '\t'))
        ++blanks;
    const bool at_end = blanks == text.size() && !line_.has_newline && blanks < kMostLookAhead;
    return blanks == 0 || at_end ? 0 : blanks + 1;
}

/// Takes the count of a position. A function's last block is mostly not counted, but credited: it is taken
/// for reached as often as the code in front of it that has a count.
void line_walk::pass_position(const block_list_node& position) {
    const source_position place = {position.line, position.column};
    scopes_->pass_marks(place, in_force_);
    if (position.count == NEVER_ENTERED || position.count < position.numAdjusted) {
        in_force_ = 0;
        return;
    }
    const std::uint64_t count = position.count - position.numAdjusted;
    in_force_ = count == 0 && position.bAdjusted() ? std::max<std::uint64_t>(last_count_, 1) : count;
    last_count_ = in_force_;
    scopes_->pass_block(place, in_force_);
}

/// Adds the blocks of a position. Closing adjustments are none; alone they go on with the code before.
void line_walk::add_blocks(const block_list_node& position) {
    const std::uint32_t total = position.numBlocks - position.numAdjusted;
    if (total == 0)
        return;
    const Color color = class_of(position, analysis_.differential);
    blocks_.total += total;
    if (color == clrCovered || (color == clrPartial && analysis_.no_partial))
        blocks_.executed += total;
    else if (color == clrPartial)
        blocks_.executed += position.numExecuted - position.numAdjusted;
}

/// Counts the blocks of the line, whose positions begin at `first`. `continued`: its code stands in front of
/// them, in what begins further up.
void line_walk::count_blocks(std::size_t first, bool continued) {
    blocks_ = {};
    if (!holds_code_)
        return;
    if (analysis_.differential) {
        blocks_ = {1, count_ == 0 ? 0U : 1U};
        return;
    }
    for (std::size_t i = first; continued && i-- > 0 && blocks_.total == 0;)
        add_blocks(all_[i]);
    // They are counted where they begin: many that go on over many lines would make too much of them.
    const bool in_part = blocks_.executed != 0 && blocks_.executed != blocks_.total;
    blocks_ = {std::min(blocks_.total, in_part ? 2U : 1U), std::min(blocks_.executed, 1U)};
    for (const block_list_node& position : positions_)
        if (position.column <= line_.text.size())
            add_blocks(position);
    // What decides the line's count may have no block of its own here.
    if (count_ == 0)
        blocks_ = {std::max(blocks_.total, 1U), 0};
    else if (blocks_.executed == 0)
        blocks_ = {blocks_.total + 1, 1};
}

/// True when a lambda may begin on the line: at a "[" that neither an index nor an attribute has.
static bool may_begin_lambda(std::string_view line) {
    for (std::size_t at = line.find('['); at != std::string_view::npos; at = line.find('[', at + 1)) {
        const std::size_t before = line.substr(0, at).find_last_not_of(" \t");
        const char c = before == std::string_view::npos ? '\0' : line[before];
        const bool indexes = is_word_character(c) || c == ')' || c == ']';
        const bool attribute = c == '[' || line.substr(at + 1).starts_with('[');
        if (!attribute && (!indexes || line.substr(0, before + 1).ends_with("return")))
            return true;
    }
    return false;
}

void line_walk::examine_code() {
    if (examined_ == line_.number)
        return;
    if (!code_) {
        code_ = std::make_unique<code_lines>(analysis_);
        scopes_ = std::make_unique<scope_counts>(code_->marks());
    }
    examined_ = line_.number;
    const std::size_t passed = static_cast<std::size_t>(positions_.data() - all_.data());
    for (; counted_ < passed; ++counted_)
        pass_position(all_[counted_]);
    const code_line& code = code_->examine(line_.number);
    holds_code_ = code.in_function;
    std::uint64_t at_code = in_force_; // in force at the line's first code
    if (code.closes) {
        scopes_->pass_marks({line_.number, code.column}, in_force_);
        at_code = scopes_->count_at_end();
        holds_code_ = holds_code_ && !(scopes_->is_dead_end() && positions_.empty());
    }
    std::uint64_t largest = 0;
    for (; counted_ < passed + positions_.size(); ++counted_) {
        const block_list_node& position = all_[counted_];
        pass_position(position);
        largest = std::max(largest, in_force_);
        // The mark of a lambda that was never called stands at the start of its line, in front of the code of
        // the function around it. Other functions have the line for themselves.
        const bool mark_of_inner =
            code.inside_called && position.count == NEVER_ENTERED && may_begin_lambda(line_.text);
        if (position.column <= code.column && !mark_of_inner)
            at_code = in_force_;
    }
    // In differential mode nothing marks functions that were never called: what is in force is from further
    // up.
    if (code.inside_called)
        largest = std::max(largest, at_code);
    count_ = holds_code_ ? largest : 0;
    count_blocks(passed, code.inside && !code.closes &&
                             (positions_.empty() || code.column < positions_.front().column));
}

bool line_walk::holds_code() {
    examine_code();
    return holds_code_;
}

std::uint64_t line_walk::count() {
    examine_code();
    return count_;
}

line_blocks line_walk::blocks() {
    examine_code();
    return blocks_;
}
