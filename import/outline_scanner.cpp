#include "import/outline_scanner.h"

#include "common/code_lexer.h"

#include <algorithm>

void outline_scanner::scan() {
    bool line_begin = true;
    for (std::size_t at = text_.starts_with("\xef\xbb\xbf") ? 3 : 0; at < text_.size(); behind_last_ = at) {
        std::size_t code = at;
        if (text_[code] <= ' ' || text_[code] == '/') // what may be blank
            code = behind_blank(text_, at, &line_begin);
        if (code == text_.size())
            return;
        const std::uint32_t offset = static_cast<std::uint32_t>(code);
        if (text_[code] == '#' && line_begin) {
            pass_directive(offset);
            at = behind_directive(text_, code);
            continue;
        }
        if (!is_settled())
            begin_code(offset, line_begin);
        line_begin = false;
        at = is_word_character(text_[code]) ? pass_word(offset) : pass_other(offset);
    }
}

/// Forgets the statement.
void outline_scanner::end_statement() {
    scope fresh;
    fresh.depth = now().depth;
    fresh.declarator = now().declarator;
    fresh.expression = now().expression;
    now() = fresh;
}

/// A directive ends the statement in front of it, unless that is clearly not complete. A head with its
/// parameters may still go on behind the directive.
void outline_scanner::cut_statement() {
    const bool goes_on = now().depth != 0 || (last_ == piece::unfinished && now().parenthesis);
    if (goes_on || now().begin == kNowhere)
        return;
    const scope cut = now();
    end_statement();
    now().suspended = cut.parenthesis ? cut.begin : kNowhere;
    now().starts_line = cut.starts_line;
}

/// Every branch of a condition begins with the state at its #if, so that braces and parentheses that stand in
/// each branch count once. What is restored was taken away by the branch, so this takes linear time in all.
void outline_scanner::pass_directive(std::uint32_t offset) {
    closed_ = false;
    cut_statement();
    last_ = piece::other;
    const std::size_t begin = text_.find_first_not_of(" \t", offset + 1);
    const std::string_view word = text_.substr(std::min(begin, text_.size()), 4);
    if (word.starts_with("if")) {
        conditions_.push_back({scopes_.size(), now()});
    } else if ((word == "else" || word == "elif") && !conditions_.empty()) {
        scopes_.resize(conditions_.back().scopes);
        now() = conditions_.back().innermost;
    } else if (word == "endi" && !conditions_.empty()) {
        conditions_.pop_back();
    }
}

/// Settles what the last piece left open, now that the next one is known.
void outline_scanner::begin_code(std::uint32_t offset, bool line_begin) {
    const char c = text_[offset];
    const bool opens = c == '{';
    if (else_ != kNowhere) {
        if (c != '}')
            branches_.push_back({offset, else_});
        if (!opens) // a brace leads on to the code behind it
            else_ = kNowhere;
    }
    // Braces inside a head: those of members' initialisers and of constants.
    if (closed_ && !opens && c != ',' && c != '>' && c != '&' && c != '|')
        end_statement();
    closed_ = false;
    if (now().suspended != kNowhere && (opens || c == ',' || c == ':')) {
        now().begin = now().suspended;
        now().parenthesis = true;
    }
    now().suspended = kNowhere;
    const bool scope_mark = opens || c == '}' || c == ';' || (c == ':' && text_.substr(offset, 2) != "::");
    if (now().begin == kNowhere && !scope_mark) {
        now().begin = offset;
        now().starts_line = line_begin;
    }
}

/// Whether one of the words that pass_word knows begins with `c`.
static bool begins_known_word(char c) {
    switch (c) {
    case 'd':
    case 'e':
    case 'n':
    case 'o':
    case 'p':
    case 'r':
        return true;
    default:
        return false;
    }
}

std::size_t outline_scanner::pass_word(std::uint32_t offset) {
    const char* const begin = text_.data() + offset;
    const char* const behind = std::find_if_not(begin + 1, text_.data() + text_.size(), is_word_character);
    const std::string_view word(begin, static_cast<std::size_t>(behind - begin));
    const std::size_t end = offset + word.size();
    const piece before = last_;
    now().word_behind = now().word_behind || (before == piece::closing && now().depth == 0);
    last_ = before == piece::access ? piece::behind_access : piece::word;
    if (word.size() < 3 || word.size() > 9 || !begins_known_word(word[0]))
        return end; // none of those below
    if (word == "else") {
        else_ = offset;
    } else if (word == "operator" ||
               (before == piece::operator_word && (word == "new" || word == "delete"))) {
        last_ = piece::operator_word;
    } else if (word == "requires") {
        now().expects_expression = before == piece::requires_word;
        last_ = piece::requires_word;
    } else if (word == "default" && before == piece::equals) {
        last_ = piece::defaulted;
    } else if (word == "public" || word == "private" || word == "protected") {
        last_ = piece::access;
    }
    return end;
}

std::size_t outline_scanner::pass_other(std::uint32_t offset) {
    const char c = text_[offset];
    if ((c == '"' || c == '\'') && begins_literal(text_, offset)) {
        last_ = piece::other;
        return behind_literal(text_, offset);
    }
    const bool two_colons = c == ':' && text_.substr(offset, 2) == "::";
    switch (c) {
    case '(':
    case '[':
        open_parenthesis(offset);
        break;
    case ')':
    case ']':
        close_parenthesis();
        return offset + std::size_t{1};
    case '{':
        open_brace(offset);
        break;
    case '}':
        close_brace();
        break;
    case ';':
        pass_semicolon(offset);
        break;
    case ':':
        if (!two_colons)
            pass_colon();
        break;
    default:
        break;
    }
    last_ = c == '=' ? piece::equals : c == ',' || c == ':' ? piece::unfinished : piece::other;
    return offset + std::size_t{two_colons ? 2U : 1U};
}

void outline_scanner::open_parenthesis(std::uint32_t offset) {
    if (now().depth == 0) {
        const bool attribute = text_.substr(offset, 2) == "[[";
        if (text_[offset] == '(')
            now().parenthesis = true;
        else if (!attribute && last_ != piece::operator_word)
            now().bracket = true;
    }
    ++now().depth;
}

void outline_scanner::close_parenthesis() {
    now().depth -= now().depth != 0 ? 1 : 0;
    last_ = piece::closing;
}

/// A brace in parentheses or behind a bracket begins no function but a lambda. A brace behind a semicolon
/// that begins a function, which others have to know, ends the declarations of its parameters.
void outline_scanner::open_brace(std::uint32_t offset) {
    scope& around = now();
    const std::uint32_t begin = around.begin != kNowhere ? around.begin : around.declarator;
    if (around.depth == 0 && !around.bracket && begin != kNowhere) {
        const std::size_t comment =
            text_.substr(0, offset + std::size_t{1}).find_first_of("/{", behind_last_);
        heads_.push_back({begin, offset, static_cast<std::uint32_t>(comment), around.starts_line});
    }
    scope inner;
    inner.expression = around.expects_expression || last_ == piece::requires_word;
    around.expects_expression = false;
    around.declarator = kNowhere;
    scopes_.push_back(inner);
}

void outline_scanner::close_brace() {
    const bool expression = now().expression;
    if (scopes_.size() == 1)
        return end_statement();
    scopes_.pop_back();
    now().declarator = kNowhere;
    closed_ = now().depth == 0 && !expression;
}

void outline_scanner::pass_semicolon(std::uint32_t offset) {
    if (now().depth != 0)
        return;
    if (last_ == piece::defaulted && now().begin != kNowhere)
        heads_.push_back({now().begin, offset, offset, now().starts_line});
    if (now().word_behind)
        now().declarator = now().begin;
    end_statement();
}

/// Labels end what is in front of them; what introduces initialisers or bases does not.
void outline_scanner::pass_colon() {
    const bool access = last_ == piece::access || last_ == piece::behind_access;
    if (now().depth == 0 && (access || !now().parenthesis))
        end_statement();
}
