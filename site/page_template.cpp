#include "site/page_template.h"

#include "common/message.h"
#include "site/site_files.h"

void page_values::choice(std::string_view key, bool shown) {
    section(key, [shown, again = false]() mutable {
        again = shown && !again;
        return again;
    });
}

page_template::page_template(std::string_view name) : name_(name) {
    read(site_file("templates/" + name_ + ".html"));
    if (!open_.empty())
        end_with_error("template %s: a section is not closed", name_.c_str()); // infeasible
}

void page_template::read(std::string_view text) {
    for (;;) {
        const std::size_t start = text.find("{{");
        const std::size_t end = text.find("}}", start);
        pieces_.push_back({piece_kind::text, std::string(text.substr(0, start)), 0});
        if (end == std::string_view::npos)
            return;
        add_tag(text.substr(start + 2, end - start - 2));
        text.remove_prefix(end + 2);
    }
}

void page_template::add_tag(std::string_view tag) {
    const std::string key(tag.substr(tag.find_first_not_of("#/>")));
    if (tag[0] == '>') {
        read(site_file("templates/" + key + ".html"));
    } else if (tag[0] == '#') {
        open_.push_back(pieces_.size());
        pieces_.push_back({piece_kind::section, key, 0});
    } else if (tag[0] == '/') {
        if (open_.empty() || pieces_[open_.back()].text != key)
            end_with_error("template %s: no section %s is open", name_.c_str(), key.c_str()); // infeasible
        pieces_[open_.back()].partner = pieces_.size();
        pieces_.push_back({piece_kind::section_end, key, open_.back()});
        open_.pop_back();
    } else {
        pieces_.push_back({piece_kind::value, key, 0});
    }
}

void page_template::write(text_buffer& out, const page_values& values) const {
    // Looked up once, not for every row.
    std::vector<const std::function<void()>*> writers(pieces_.size());
    std::vector<const std::function<bool()>*> sections(pieces_.size());
    for (std::size_t i = 0; i < pieces_.size(); ++i) {
        const auto writer = values.writers_.find(pieces_[i].text);
        const auto section = values.sections_.find(pieces_[i].text);
        const bool is_value = pieces_[i].kind == piece_kind::value;
        const bool is_section = pieces_[i].kind == piece_kind::section;
        if ((is_value && writer == values.writers_.end()) ||
            (is_section && section == values.sections_.end()))
            end_with_error("template %s: nothing is known of %s", name_.c_str(),
                           pieces_[i].text.c_str()); // infeasible
        writers[i] = is_value ? &writer->second : nullptr;
        sections[i] = is_section ? &section->second : nullptr;
    }
    for (std::size_t i = 0; i < pieces_.size(); ++i) {
        const piece& at = pieces_[i];
        if (at.kind == piece_kind::text)
            out.put(at.text);
        else if (at.kind == piece_kind::value)
            (*writers[i])();
        else if (at.kind == piece_kind::section && !(*sections[i])())
            i = at.partner;
        else if (at.kind == piece_kind::section_end)
            i = at.partner - 1;
    }
}
