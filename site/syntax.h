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

    /// The next piece; behind the last one, one of kind none at the end of the text.
    syntax_token next();

  private:
    std::string_view text_;
    std::size_t at_ = 0;
};
