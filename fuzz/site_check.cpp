#include "fuzz/site_check.h"

#include "fuzz/harness.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>
#include <vector>

/// Elements of the site; those that are never closed, and those whose end may be left out.
static const std::set<std::string_view> kElements = {
    "html", "meta", "title", "link",  "noscript", "script",  "header",  "nav",    "a",     "main", "h1", "h2",
    "div",  "p",    "table", "thead", "tbody",    "tr",      "th",      "td",     "meter", "span", "u",  "b",
    "i",    "q",    "bdi",   "pre",   "br",       "details", "summary", "ol",     "ul",    "li",   "dl", "dt",
    "dd",   "svg",  "path",  "rect",  "text",     "section", "caption", "footer", "kbd"};
static const std::set<std::string_view> kVoid = {"meta", "link", "br"};
static const std::set<std::string_view> kOpenEnded = {"html",  "p",     "tr", "th", "td",
                                                      "thead", "tbody", "li", "dt", "dd"};
static const std::set<std::string_view> kAttributes = {"lang",
                                                       "charset",
                                                       "name",
                                                       "content",
                                                       "rel",
                                                       "href",
                                                       "src",
                                                       "defer",
                                                       "class",
                                                       "id",
                                                       "aria-label",
                                                       "scope",
                                                       "max",
                                                       "value",
                                                       "tabindex",
                                                       "data-c",
                                                       "title",
                                                       "role",
                                                       "viewBox",
                                                       "preserveAspectRatio",
                                                       "aria-hidden",
                                                       "d",
                                                       "x",
                                                       "y",
                                                       "width",
                                                       "height",
                                                       "aria-labelledby",
                                                       "aria-current",
                                                       "data-u"};
static const std::set<std::string_view> kReferences = {"&amp;", "&lt;", "&gt;", "&quot;", "&#13;"};

namespace {

/// Reads one page from front to back.
class site_page_reader {
  public:
    site_page_reader(std::string_view page, const std::string& name) : rest_(page), name_(name) {}

    std::string read() {
        require(take("<!DOCTYPE html>\n"), "a page begins as one");
        while (!rest_.empty()) {
            if (take("<!-- "))
                rest_.remove_prefix(rest_.find("-->") + 3);
            else if (rest_.starts_with("</"))
                read_end();
            else if (rest_[0] == '<')
                read_tag();
            else
                read_text();
        }
        pop_open_ended();
        require(open_.empty(), "all that is opened is closed");
        return code_;
    }

  private:
    bool take(std::string_view text) {
        if (!rest_.starts_with(text))
            return false;
        rest_.remove_prefix(text.size());
        return true;
    }

    std::string_view take_until(std::string_view ends) {
        const std::size_t end = rest_.find_first_of(ends);
        require(end != std::string_view::npos, "a tag ends");
        const std::string_view taken = rest_.substr(0, end);
        rest_.remove_prefix(end);
        return taken;
    }

    void pop_open_ended() {
        while (!open_.empty() && kOpenEnded.count(open_.back()))
            open_.pop_back();
    }

    void read_end() {
        rest_.remove_prefix(2);
        const std::string_view element = take_until(">");
        rest_.remove_prefix(1);
        while (!open_.empty() && open_.back() != element && kOpenEnded.count(open_.back()))
            open_.pop_back();
        require(!open_.empty() && open_.back() == element, "what is closed was opened last");
        open_.pop_back();
    }

    void read_tag() {
        rest_.remove_prefix(1);
        const std::string_view element = take_until(" />");
        require(kElements.count(element) != 0, "an element is one of the site's");
        std::set<std::string_view> seen;
        while (take(" ")) {
            const std::string_view attribute = take_until("= >");
            require(kAttributes.count(attribute) != 0, "an attribute is one of the site's");
            require(seen.insert(attribute).second, "an attribute comes once");
            if (take("="))
                read_value(attribute);
        }
        const bool closed = take("/");
        require(take(">"), "a tag ends");
        if (!closed && !kVoid.count(element))
            open_.push_back(element);
    }

    void read_value(std::string_view attribute) {
        std::string_view value;
        if (take("\"")) {
            value = take_until("\"");
            rest_.remove_prefix(1);
        } else {
            value = take_until(" >");
            if (value.ends_with("/")) // a path's, drawn to its end
                value.remove_suffix(1), rest_ = std::string_view(rest_.data() - 1, rest_.size() + 1);
        }
        check_text(value);
        require(value.find('<') == std::string_view::npos, "markup in an attribute is escaped");
        if (attribute == "href" || attribute == "src")
            check_link(value);
    }

    void check_link(std::string_view value) {
        const std::string target(value.substr(0, value.find('#')));
        require(target.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789._-~=/") == std::string::npos,
                "a link is plain");
        if (!target.empty())
            require(std::filesystem::is_regular_file((scratch().path() / name_).parent_path() / target),
                    "a link leads to a page");
    }

    /// References are sound, and every character is one that a page may hold.
    static void check_text(std::string_view text) {
        for (std::size_t at = text.find('&'); at != std::string_view::npos; at = text.find('&', at + 1))
            require(kReferences.count(text.substr(at, text.find(';', at) - at + 1)) != 0,
                    "a reference is sound");
        for (const char c : text)
            require(static_cast<unsigned char>(c) >= 0x20 || c == '\n' || c == '\t' || c == '\f',
                    "no control character");
    }

    void read_text() {
        const std::string_view text = rest_.substr(0, rest_.find('<'));
        rest_.remove_prefix(text.size());
        check_text(text);
        require(text.find('>') == std::string_view::npos, "markup in text is escaped");
        const auto is_open = [this](std::string_view element) {
            return std::find(open_.begin(), open_.end(), element) != open_.end();
        };
        if (is_open("pre") && !is_open("a"))
            append_unescaped(text);
    }

    void append_unescaped(std::string_view text) {
        static const std::map<std::string_view, char> meanings = {
            {"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&#13;", '\r'}, {"&quot;", '"'}};
        for (std::size_t at = 0; at < text.size();) {
            const std::size_t length = text[at] == '&' ? text.find(';', at) - at + 1 : 1;
            code_ += length == 1 ? text[at] : meanings.at(text.substr(at, length));
            at += length;
        }
    }

    std::string_view rest_;
    const std::string& name_;
    std::vector<std::string_view> open_;
    std::string code_;
};

} // namespace

static bool is_utf8(std::string_view text) {
    for (std::size_t at = 0; at < text.size();) {
        const auto byte = static_cast<unsigned char>(text[at]);
        const std::size_t more = byte < 0x80   ? 0
                                 : byte < 0xc2 ? 9
                                 : byte < 0xe0 ? 1
                                 : byte < 0xf0 ? 2
                                 : byte < 0xf5 ? 3
                                               : 9;
        if (at + more >= text.size() + (more == 0 ? 1 : 0))
            return false;
        for (std::size_t i = 1; i <= more; ++i)
            if ((static_cast<unsigned char>(text[at + i]) & 0xc0) != 0x80)
                return false;
        at += more + 1;
    }
    return true;
}

std::string check_site_page(std::string_view page, const std::string& name) {
    require(is_utf8(page), "a page is UTF-8");
    return site_page_reader(page, name).read();
}

void check_code(std::string_view code, std::string_view source) {
    const auto is_plain = [](char c) {
        return (c >= 0x20 && c < 0x7f) || c == '\n' || c == '\t' || c == '\f' || c == '\r';
    };
    require(std::count(code.begin(), code.end(), '\n') == std::count(source.begin(), source.end(), '\n'),
            "the code has the lines of the source");
    if (std::all_of(source.begin(), source.end(), is_plain))
        require(code == source, "the code is the source");
}
