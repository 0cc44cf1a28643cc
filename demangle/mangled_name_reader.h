// The walk of mangled_name.h over the grammar, a function for each production. Only the mangled_*.cpp include
// it: mangled_name.cpp reads names, mangled_type.cpp types and template arguments, mangled_expression.cpp
// expressions; mangled_name_reader.cpp has the steps that all of them take.
#pragma once

#include "demangle/mangled_name.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

constexpr int kDeepest = 512;           ///< nesting of types and expressions
constexpr int kDeepestPostfix = 8;      ///< nesting of postfix operators
constexpr std::uint32_t kOperator = 24; ///< "reinterpret_cast<>()", "operator delete[]", ...

inline bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

inline bool is_lower(char c) {
    return c >= 'a' && c <= 'z';
}

/// A set of lower-case letters, a bit for each.
constexpr std::uint32_t letter_set(std::string_view letters) {
    std::uint32_t set = 0;
    for (const char c : letters)
        set |= std::uint32_t{1} << (c - 'a');
    return set;
}

inline bool is_in(std::uint32_t letters, char c) {
    return is_lower(c) && (letters >> (c - 'a') & 1) != 0;
}

inline bool is_sequence_char(char c) {
    return is_digit(c) || (c >= 'A' && c <= 'Z');
}

inline bool is_any_of(const char* code, const char* codes) {
    for (; *codes != '\0'; codes += 3) {
        if (code[0] == codes[0] && code[1] == codes[1])
            return true;
    }
    return false;
}

/// Codes of the operators, other than conversions.
inline constexpr const char* kOperators =
    "aN aS aa ad an at aw az cc cl cm co dV da dc de dl ds dt dv eO eo eq ge gt ix lS le ls lt mI mL mi ml "
    "mm na ne ng nt nw nx oR oo or pL pl pm pp ps pt qu rM rS rc rm rs sP sZ sc ss st sz tr tw cp di dX dx "
    "te ";

/// The walk over one name. A failure moves to the end of the name, where all loops stop.
class MangledNameReader {
  public:
    MangledNameReader(const char* text, bool old_unresolved, MangledName& result);

    /// Reads the whole name into its pieces.
    bool read();

    /// Reads up to the function's parameters and makes no pieces, only the outline.
    bool read_outline(NameOutline& outline);

  private:
    using Id = PieceId;

    char peek() const { return *at_; }
    char peek_next() const { return *at_ == '\0' ? '\0' : at_[1]; }
    bool sees(const char* code) const { return at_[0] == code[0] && at_[0] != '\0' && at_[1] == code[1]; }
    bool take(char c) {
        const bool found = peek() == c;
        at_ += found ? 1 : 0;
        return found;
    }
    bool take(const char* code) {
        const bool found = sees(code);
        at_ += found ? 2 : 0;
        return found;
    }
    void expect(char c) {
        if (!take(c))
            fail();
    }
    bool enter() {
        if (++depth_ > kDeepest)
            fail();
        return !failed_;
    }

    Id fail();
    bool is_shown() const { return outline_ && hidden_ == 0; }
    void show(std::string_view text) {
        if (is_shown())
            outline_->text += text;
    }
    void show_class(std::string_view text);
    void show_source_name(std::string_view text);
    void show_operator(const char* code);
    void show_constructor(bool is_constructor);
    void show_std(char code);
    Id piece(PieceRule rule, std::uint32_t own, Id left, Id right = 0, std::uint32_t list = 0) {
        if (!outline_ || pieces_made_ >= most_pieces_)
            return make_piece(rule, own, left, right, list);
        ++pieces_made_;
        return 1;
    }
    Id make_piece(PieceRule rule, std::uint32_t own, Id left, Id right, std::uint32_t list);
    Id join(std::uint32_t own, Id left = 0, Id right = 0) { return piece(PieceRule::Sum, own, left, right); }
    Id candidate(Id id) {
        if (!outline_)
            candidates_.push_back(id);
        ++known_;
        return id;
    }
    std::uint32_t keep_list(std::vector<Id> list);

    /// <number>, saturating; the sign is skipped.
    std::uint32_t number() {
        take('n');
        std::uint32_t value = 0;
        for (; is_digit(peek()); ++at_)
            value = std::min<std::uint32_t>(value * 10 + static_cast<std::uint32_t>(peek() - '0'), 1U << 24);
        return value;
    }
    std::uint32_t compact_number();
    void call_offset(), discriminator(), template_param_decl();

    Id encoding(), special_name(), special_table(), special_other();
    Id name(), nested_name(), local_name();
    Id prefix_part(Id before, bool& add);
    Id unqualified_name(), plain_unqualified_name(), source_name(), some_abi_tags(Id id);
    Id abi_tags(Id id) { return peek() == 'B' ? some_abi_tags(id) : id; }
    Id operator_name(), constructor_name(), closure_or_unnamed(), substitution(), std_substitution();
    Id template_param(), with_args(Id name), template_args(), template_arg(), pack();
    Id type(), plain_type(), extended_type(), param_type(), std_or_substituted_type(),
        vendor_qualified_type();
    Id reference_type(), function_type(), array_type(), some_qualifiers(), types();
    /// Any number of <CV-qualifiers> and the qualifiers of function types; 0 if there are none, as mostly.
    Id qualifiers() {
        const char c = peek();
        return c == 'K' || c == 'V' || c == 'r' || c == 'D' ? some_qualifiers() : 0;
    }
    Id literal(), expression(), plain_expression(), operator_expression(), new_expression(),
        postfix_operand();
    Id expressions(char end), fold(), function_param(), simple_id(), plain_simple_id(), unresolved_name();

    const char* text_;
    const char* at_;
    const char* end_;
    MangledName& result_;
    std::vector<Id> candidates_;  ///< substitutions, in order; in an outline they are only counted
    std::size_t known_ = 0;       ///< number of them
    std::size_t pieces_made_ = 1; ///< with the empty one; in an outline they are only counted
    std::size_t most_pieces_;
    NameOutline* outline_ = nullptr; ///< to fill, in place of pieces
    int hidden_ = 0;                 ///< arguments, parameters and tags around the place, not for the outline
    std::size_t last_shown_ = 0;     ///< where the class begins in the outline whose name constructors repeat
    std::size_t last_shown_size_ = 0;
    std::uint32_t last_list_ = 0;    ///< arguments that end the name just read; 0 if none do
    std::uint32_t longest_name_ = 0; ///< what a constructor repeats
    int depth_ = 0;
    int postfix_depth_ = 0; ///< postfix operators around the place
    bool failed_ = false;
    bool old_unresolved_; ///< `sr` is followed by a type even if that is a plain name
    bool in_conversion_ = false;
    bool in_expression_ = false;
    bool is_strict_ = false; ///< within an ambiguous unresolved name
};
