// The options of a program as rows of one table, and the walk over its arguments.
//
// A program walks with argument_reader and says itself what becomes of an argument that its table does not
// hold, and of an option without its value: vexcov passes over the one, others refuse it and name their help
// option.
#pragma once

#include <cstddef>
#include <cstring>
#include <span>

/// One option. `Into` is what its value is put into, passed on to `apply`; none where that is global.
template <typename... Into> struct option_row {
    const char* name;                          ///< with its dash
    void (*apply)(Into..., const char* value); ///< `value` is null for an option that takes none
    bool takes_value;
    const char* missing; ///< what the program says when the value is missing; may be null
};

enum class argument_kind {
    option,        ///< of the table, with its value if it takes one
    missing_value, ///< an option of the table without its value
    unknown,       ///< begins with a dash, but is not in the table
    positional     ///< anything else; a dash alone, too
};

/// What a program's options may look like besides.
struct argument_style {
    bool two_dashes = false;   ///< "--name" stands for "-name"
    bool dashed_values = true; ///< the next argument is the value, even if it begins with a dash
};

/// Walks over the arguments behind the program name.
template <typename... Into> class argument_reader {
  public:
    template <std::size_t N>
    argument_reader(const option_row<Into...> (&table)[N], int argc, char** argv, argument_style style = {})
        : rows_(table), argc_(argc), argv_(argv), style_(style) {}

    argument_reader(std::span<const option_row<Into...>> table, int argc, char** argv,
                    argument_style style = {})
        : rows_(table), argc_(argc), argv_(argv), style_(style) {}

    /// Takes the next argument, and the value that belongs to it; false at the end. Then:
    bool next();
    argument_kind kind() const { return kind_; }
    const char* text() const { return text_; }                     ///< the argument as it was given
    const option_row<Into...>& option() const { return *option_; } ///< of an option of the table
    const char* value() const { return value_; }                   ///< null where there is none

  private:
    static bool is_dashed(const char* text) { return text[0] == '-' && text[1] != '\0'; }
    const option_row<Into...>* look_up() const;
    bool has_value() const { return next_ < argc_ && (style_.dashed_values || !is_dashed(argv_[next_])); }

    std::span<const option_row<Into...>> rows_;
    int argc_;
    char** argv_;
    argument_style style_;
    int next_ = 1;
    argument_kind kind_ = argument_kind::positional;
    const char* text_ = nullptr;
    const option_row<Into...>* option_ = nullptr;
    const char* value_ = nullptr;
};

template <typename... Into> const option_row<Into...>* argument_reader<Into...>::look_up() const {
    const bool is_double = style_.two_dashes && text_[0] == '-' && is_dashed(text_ + 1);
    for (const option_row<Into...>& row : rows_)
        if (std::strcmp(is_double ? text_ + 1 : text_, row.name) == 0)
            return &row;
    return nullptr;
}

template <typename... Into> bool argument_reader<Into...>::next() {
    if (next_ >= argc_)
        return false;
    text_ = argv_[next_++];
    option_ = look_up();
    value_ = nullptr;
    if (!option_) {
        kind_ = is_dashed(text_) ? argument_kind::unknown : argument_kind::positional;
    } else if (option_->takes_value && !has_value()) {
        kind_ = argument_kind::missing_value;
    } else {
        kind_ = argument_kind::option;
        if (option_->takes_value)
            value_ = argv_[next_++];
    }
    return true;
}
