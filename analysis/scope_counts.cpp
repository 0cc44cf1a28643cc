#include "analysis/scope_counts.h"

/// At a brace or semicolon: a statement of the innermost pair ends, and the next begins.
void scope_counts::end_statement(const code_mark& mark) {
    if (scopes_.empty())
        return;
    scope& current = scopes_.back();
    current.behind_jump = current.in_jump && mark.kind == ';';
    current.in_jump = mark.before == code_word::jump;
    current.is_switch = current.is_switch || mark.before == code_word::label;
}

void scope_counts::pass_marks(source_position place, std::uint64_t in_force) {
    for (; passed_ < marks_.size() && marks_[passed_].position < place; ++passed_) {
        const code_mark& mark = marks_[passed_];
        const std::size_t around = scopes_.empty() ? 0 : scopes_.back().parentheses;
        if (mark.kind == '(') {
            ++parentheses_;
            continue;
        }
        if (mark.kind == ')') {
            parentheses_ -= parentheses_ > around ? 1 : 0;
            continue;
        }
        if (mark.kind == '{') {
            scopes_.push_back({in_force, in_force, parentheses_, mark.behind_label});
        } else if (mark.kind == '}') {
            parentheses_ = around;
            if (!scopes_.empty())
                scopes_.pop_back();
        }
        end_statement(mark);
    }
}

void scope_counts::pass_block(source_position place, std::uint64_t count) {
    if (passed_ == 0 || scopes_.empty() || parentheses_ != scopes_.back().parentheses)
        return;
    const code_mark& last = marks_[passed_ - 1];
    const bool begins_statement = last.kind != ')' && last.next_position == place;
    if (begins_statement && last.before != code_word::branch_else)
        scopes_.back().count = count;
}

std::uint64_t scope_counts::count_at_end() const {
    if (scopes_.empty())
        return 0;
    const scope& current = scopes_.back();
    return current.is_switch || current.behind_jump ? current.entered : current.count;
}

bool scope_counts::is_dead_end() const {
    return !scopes_.empty() && scopes_.back().of_label && scopes_.back().behind_jump;
}
