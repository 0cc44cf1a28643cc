// Templates of pages: text with the places of values.
//
//   {{key}}               a value
//   {{#key}}...{{/key}}   a section: written as often as it has something to show
//   {{>name}}             the template of that name, in its place
//
// The templates of the site are the files of site/templates, which the build puts into the program
// (site_files.h).
#pragma once

#include "common/text_buffer.h"

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

/// What the places of a template are filled with.
class page_values {
  public:
    /// `write` writes the value. It is called wherever the key stands.
    void set(std::string_view key, std::function<void()> write) { writers_[key] = std::move(write); }

    /// The section is written as long as `next` returns true, which also goes on to the next thing to show.
    void section(std::string_view key, std::function<bool()> next) { sections_[key] = std::move(next); }

    /// A section that is written once, or not at all.
    void choice(std::string_view key, bool shown);

  private:
    friend class page_template;
    std::map<std::string_view, std::function<void()>> writers_;
    std::map<std::string_view, std::function<bool()>> sections_;
};

class page_template {
  public:
    /// Reads the template `name`; a template that is not sound ends the run, as the program was built wrong.
    explicit page_template(std::string_view name);

    /// Writes the page. Every key of the template must have a value.
    void write(text_buffer& out, const page_values& values) const;

  private:
    enum class piece_kind { text, value, section, section_end };
    struct piece {
        piece_kind kind;
        std::string text;    ///< fixed text, or the key
        std::size_t partner; ///< of a section: its end, and of an end the section
    };

    void read(std::string_view text);
    void add_tag(std::string_view tag);

    std::string name_;
    std::vector<piece> pieces_;
    std::vector<std::size_t> open_; ///< sections that are not closed, while reading
};
