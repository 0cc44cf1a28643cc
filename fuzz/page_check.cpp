#include "fuzz/page_check.h"

#include "fuzz/harness.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>

static std::size_t occurrences(std::string_view text, std::string_view wanted) {
    std::size_t count = 0;
    for (std::size_t at = text.find(wanted); at != std::string_view::npos; at = text.find(wanted, at + 1))
        ++count;
    return count;
}

/// The text without its anchors. '<' of a source is never a byte of its own in a page, so each one is a tag.
static std::string without_anchors(std::string_view text) {
    std::string shown;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t tag = std::min(text.find('<', at), text.size());
        shown += text.substr(at, tag - at);
        const std::string_view rest = text.substr(tag);
        require(rest.empty() || rest.starts_with("<a ") || rest.starts_with("</a>"),
                "no tags but anchors in a listing");
        at = rest.empty() ? text.size() : text.find('>', tag) + 1;
    }
    return shown;
}

std::size_t check_listing(std::string_view page, std::string_view source) {
    const std::size_t start = std::min(page.find("<pre>\n") + 6, page.size());
    std::string_view body = page.substr(start);
    std::size_t count_lines = 0;
    unsigned int number = 1;
    while (!source.empty()) {
        const bool complete = source.find('\n') != std::string_view::npos;
        const std::string_view text = source.substr(0, source.find('\n'));
        source.remove_prefix(text.size() + (complete ? 1 : 0));
        char head[32];
        std::snprintf(head, sizeof head, "%6u) ", std::min(number, 999999U));
        const std::string expected = head + escaped(text);
        ++number;
        // A source line may hold "</pre>" itself, but only escaped.
        const std::size_t length =
            complete ? std::min(body.find('\n'), body.size()) : std::min(body.find("</pre>"), body.size());
        const std::string_view line = body.substr(0, length);
        require(without_anchors(line) == expected, "a line of the source stands in the listing");
        require(occurrences(line, "<a ") == occurrences(line, "</a>") + (complete ? 0 : 1),
                "balanced anchors of a line");
        body.remove_prefix(std::min(body.size(), length + (complete ? 1 : 0)));
        while (body.starts_with("        <a ")) {
            const std::string_view counts = body.substr(0, body.find('\n'));
            require(occurrences(counts, "<a ") == occurrences(counts, "</a>"),
                    "balanced anchors of a line with counts");
            require(counts.find('^') != std::string_view::npos, "a line with counts has one");
            body.remove_prefix(std::min(body.size(), counts.size() + 1));
            ++count_lines;
        }
    }
    require(body.empty() || body.starts_with("</pre>\n"), "nothing stands behind the last line");
    return count_lines;
}

void check_page(std::string_view page, const std::string& directory) {
    // The overview pages end in an empty line.
    require(page.starts_with("<html>\n") && (page.ends_with("</html>\n") || page.ends_with("</html>\n\n")),
            "a page is whole");
    for (const char* tag : {"head", "body", "frameset", "noframes", "title", "ol", "tbody", "thead", "pre"}) {
        const std::string name = tag;
        require(occurrences(page, "<" + name + ">") + occurrences(page, "<" + name + " ") ==
                    occurrences(page, "</" + name + ">"),
                "tags come in pairs");
    }
    for (const std::string attribute : {"href=\"", "src=\""}) {
        for (std::size_t at = page.find(attribute); at != std::string_view::npos;
             at = page.find(attribute, at + 1)) {
            std::string_view target = page.substr(at + attribute.size());
            target = target.substr(0, target.find('"'));
            target = target.substr(0, target.find('#'));
            if (target.empty() || target.starts_with("https:") || target.starts_with("mailto:"))
                continue;
            require(std::filesystem::is_regular_file(scratch().path().string() + "/" + directory +
                                                     std::string(target)),
                    "a link leads to a page");
        }
    }
}
