// What is shown in the colours of a language: comments, strings and keywords of C and C++.
#pragma once

#include <cstddef>
#include <string_view>

enum class syntax_kind : unsigned char {
    none,
    comment,
    string,
    keyword,
    sign ///< no colour, but no page may hold all of it as it stands
};

/// A piece of the text.
struct syntax_token {
    std::size_t begin;
    std::size_t end; ///< offset behind it
    syntax_kind kind;
};

/// True for names of C and C++ sources and headers.
bool is_c_source(std::string_view name);

/// Finds the pieces of a text one after the other. What lies between them is put on a page as it stands.
class syntax_reader {
  public:
    explicit syntax_reader(std::string_view text) : text_(text) {}

    /// Goes on to the next piece and gives it; behind the last one, one of kind none at the end of the text.
    const syntax_token& next();

    /// The piece at hand. What was given before shows it, too.
    const syntax_token& token() const { return token_; }

  private:
    void take_word();
    void take_comment();
    void take_piece();

    std::string_view text_;
    syntax_token token_ = {0, 0, syntax_kind::none};
};
