// Reads a C or C++ text for its outline: one pass, from piece to piece, without a look at what words mean but
// a few. Of conditional text all branches are read, each from the state that the first began in.
#pragma once

#include "import/source_outline.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

class outline_scanner {
  public:
    /// Appends what it finds to both. All must outlive this. The text has less than 2^32 - 1 bytes.
    outline_scanner(std::string_view text, std::vector<outlined_head>* heads,
                    std::vector<outlined_branch>* branches)
        : text_(text), heads_(*heads), branches_(*branches) {}

    void scan();

  private:
    static constexpr std::uint32_t kNowhere = ~std::uint32_t{0};

    /// The statement or declaration at hand between two braces.
    struct scope {
        std::uint32_t begin = kNowhere;     ///< its first code
        std::uint32_t suspended = kNowhere; ///< begin of the one that a directive has just ended
        std::uint32_t declarator =
            kNowhere;                    ///< begin of what may be a head with declared parameters behind it
        std::uint32_t depth = 0;         ///< open parentheses and brackets
        bool starts_line = false;        ///< no code stands in front of `begin` on its line
        bool parenthesis = false;        ///< it has one
        bool bracket = false;            ///< it has one, as a lambda does, outside of parentheses
        bool word_behind = false;        ///< a word follows a closing parenthesis
        bool expects_expression = false; ///< its next brace begins a requires-expression
        bool expression = false;         ///< the scope itself is the body of one
    };

    /// The state at an #if.
    struct condition {
        std::size_t scopes;
        scope innermost;
    };

    /// What the last piece of code was, where that matters.
    enum class piece {
        other,
        unfinished, ///< a comma or colon
        closing,    ///< a closing parenthesis or bracket
        equals,
        word,
        operator_word,
        requires_word,
        access,        ///< public, protected, private
        behind_access, ///< the word behind it
        defaulted      ///< the word of "= default"
    };

    void pass_directive(std::uint32_t offset);
    void cut_statement();
    bool is_settled() const {
        return else_ == kNowhere && !closed_ && now().suspended == kNowhere && now().begin != kNowhere;
    }
    void begin_code(std::uint32_t offset, bool line_begin);
    std::size_t pass_word(std::uint32_t offset);
    std::size_t pass_other(std::uint32_t offset);
    void open_parenthesis(std::uint32_t offset);
    void close_parenthesis();
    void open_brace(std::uint32_t offset);
    void close_brace();
    void pass_semicolon(std::uint32_t offset);
    void pass_colon();
    void end_statement();
    scope& now() { return scopes_.back(); }
    const scope& now() const { return scopes_.back(); }

    std::string_view text_;
    std::vector<outlined_head>& heads_;
    std::vector<outlined_branch>& branches_;
    std::vector<scope> scopes_ = {scope()}; ///< never empty
    std::vector<condition> conditions_;
    piece last_ = piece::other;
    bool closed_ = false;           ///< the last piece was a brace that may end the statement
    std::size_t behind_last_ = 0;   ///< where the last piece ends
    std::uint32_t else_ = kNowhere; ///< an "else" whose code comes next
};
