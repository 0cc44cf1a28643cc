#include "site/marked_lines.h"

#include <algorithm>

mark marked_lines::mark_of(Color color) const {
    switch (color) {
    case clrNotFeasible:
        return mark::infeasible;
    case clrPartial:
        return no_partial_ ? mark::none : mark::partial;
    case clrUncoveredBlock:
        return mark::block;
    case clrUncoveredFunc:
        return mark::function;
    case clrUnknown:
    case clrCovered:
        break;
    }
    return mark::none;
}

void marked_lines::add(std::size_t offset, mark kind, bool is_new_function) {
    while (!pieces_.empty() && pieces_.back().offset == offset) {
        // A place that began here and shows nothing makes way.
        pieces_.pop_back();
    }
    const mark before = pieces_.empty() ? last_ : pieces_.back().kind;
    const bool begins = is_uncovered(kind) && (kind != before || is_new_function);
    if (pieces_.empty() || kind != before || begins)
        pieces_.push_back({offset, kind, begins});
}

void marked_lines::begin() {
    pieces_.clear();
    last_ = mark::none;
}

void marked_lines::take(const line_walk& walk) {
    if (!pieces_.empty())
        last_ = pieces_.back().kind;
    pieces_.clear();
    const source_line& line = walk.line();
    add(0, line.disabled ? mark::infeasible : mark_of(line.color), false);
    if (line.disabled)
        return;
    for (const line_stretch& stretch : walk.stretches())
        add(stretch.offset, mark_of(stretch.color),
            stretch.position && stretch.position->count == NEVER_ENTERED);
}

mark marked_lines::gravest(const line_walk& walk) const {
    if (pieces_.size() == 1 && pieces_.front().kind == mark::none)
        return mark::none;
    const std::string_view text = walk.line().text;
    mark found = mark::none;
    for (std::size_t i = 0; i < pieces_.size(); ++i) {
        const std::size_t end = i + 1 < pieces_.size() ? pieces_[i + 1].offset : text.size();
        const std::string_view piece = text.substr(pieces_[i].offset, end - pieces_[i].offset);
        if (pieces_[i].kind > found && piece.find_first_not_of(" \t\r\f\v") != std::string_view::npos)
            found = pieces_[i].kind;
    }
    return found;
}
