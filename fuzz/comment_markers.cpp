// Input: which markers there are, the first lines of the file's functions, and a source file. Every line's
// answer is compared with a plain scan that collects comments character by character and expands each block
// into its lines.
#include "driver/run_config.h"
#include "fuzz/harness.h"
#include "markers/parser.h"
#include "profile/line_order.h"
#include "profile/module_list.h"

#include <algorithm>
#include <cstring>
#include <set>

namespace {

enum plain_type { kSimple = 0, kBegin = 1, kEnd = 2, kNone = 4 };

struct plain_comment {
    std::string text;
    unsigned long line = 0;
    int type = kNone;
};

/// The plain scan.
class plain_markers {
  public:
    plain_markers(std::string_view source, const std::vector<std::int32_t>& functions)
        : source_(source), functions_(functions.begin(), functions.end()) {}

    /// Fills the two results.
    void scan();

    std::set<unsigned long> disabled; ///< lines
    bool stray_end = false;           ///< an end marker without a begin was met

  private:
    bool register_comment();
    void brace(unsigned long line);
    void expand(unsigned long last_line);
    char next() { return at_ < source_.size() ? source_[at_++] : '\0'; }

    std::string_view source_;
    std::multiset<std::int64_t> functions_;
    std::size_t at_ = 0;
    plain_comment open_;
    std::vector<plain_comment> found_;
};

} // namespace

static int type_of(const std::string& text) {
    const auto holds = [&](const std::vector<std::string>& list) {
        return std::find(list.begin(), list.end(), text) != list.end();
    };
    return holds(end_disable_block)     ? kEnd
           : holds(start_disable_block) ? kBegin
           : holds(one_line_disable)    ? kSimple
                                        : kNone;
}

/// True for a one-line marker.
bool plain_markers::register_comment() {
    std::string& text = open_.text;
    const char* const trimmed = " /*\t\n";
    text.erase(text.find_last_not_of(trimmed) + 1);
    text.erase(0, text.find_first_not_of(trimmed));
    open_.type = type_of(text);
    if (open_.type != kNone)
        found_.push_back(open_);
    const bool simple = open_.type == kSimple;
    open_ = plain_comment();
    return simple;
}

void plain_markers::brace(unsigned long line) {
    const auto function = functions_.lower_bound(static_cast<std::int64_t>(line));
    const auto mark = std::find_if(found_.rbegin(), found_.rend(),
                                   [](const plain_comment& c) { return c.type == kSimple; });
    if (mark == found_.rend() || function == functions_.end() || *function != static_cast<std::int64_t>(line))
        return;
    mark->type = kBegin;
    const auto next = std::next(function);
    if (next == functions_.end())
        return;
    const unsigned long behind = static_cast<unsigned long>(*next);
    found_.push_back({"", behind > line ? behind - 1 : behind, kEnd});
}

void plain_markers::scan() {
    enum { code, character, string, line_comment, block_comment } state = code;
    unsigned long line = 1;
    bool pending = false;
    char c = next();
    for (char n = next(); c != '\0' && n != '\0'; c = n, n = next()) {
        if (c == '\\' && (state == character || state == string))
            continue;
        if (c == '\n' && state == line_comment) {
            pending = register_comment() || pending;
            state = code;
        } else if (c == '/' && (n == '/' || n == '*') && state == code) {
            open_.line = line;
            state = n == '/' ? line_comment : block_comment;
        } else if (c == '*' && n == '/' && state == block_comment) {
            if (open_.text.size() > 2) {
                pending = register_comment() || pending;
                state = code;
            }
        } else if (c == '\'' && (state == character || state == code)) {
            state = state == code ? character : code;
        } else if (c == '"' && (state == string || state == code)) {
            state = state == code ? string : code;
        }
        line += c == '\n' ? 1 : 0;
        if (c == '{' && pending)
            brace(line);
        if (state == line_comment || state == block_comment)
            open_.text += c;
        pending = pending && state == code && std::strchr("\n\t */", c);
    }
    expand(line);
}

void plain_markers::expand(unsigned long last_line) {
    std::stable_sort(found_.begin(), found_.end(),
                     [](const plain_comment& a, const plain_comment& b) { return a.line < b.line; });
    std::vector<unsigned long> begins;
    const auto disable_from = [&](unsigned long last) {
        for (unsigned long line = begins.back(); line <= last; ++line)
            disabled.insert(line);
        begins.pop_back();
    };
    for (const plain_comment& comment : found_) {
        if (comment.type == kSimple) {
            disabled.insert(comment.line);
        } else if (comment.type == kBegin) {
            begins.push_back(comment.line);
        } else if (begins.empty()) {
            stray_end = true;
            return;
        } else {
            disable_from(comment.line);
        }
    }
    while (!begins.empty())
        disable_from(last_line);
}

static void choose_markers(unsigned int choice) {
    if (choice & 1)
        one_line_disable = {"O"};
    if (choice & 2)
        one_line_disable.push_back("not here");
    if (choice & 4)
        start_disable_block = {"B", "{"};
    if (choice & 8)
        end_disable_block = {"E"};
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    byte_script script(data, size);
    const unsigned int choice = script.byte();
    std::vector<std::int32_t> lines(script.below(8));
    for (std::int32_t& line : lines)
        line = static_cast<std::int32_t>(script.byte()) - 2;
    std::vector<COMP> functions(lines.size());
    for (std::size_t i = 0; i < lines.size(); ++i) {
        functions[i].line = lines[i];
        functions[i].fileName = "source";
        functions[i].next = i + 1 < lines.size() ? &functions[i + 1] : nullptr;
    }
    const std::string_view source = script.rest();
    scratch().put("source", source);
    bool stray_end = false;
    const outcome end = run_in_scratch([&] {
        choose_markers(choice);
        if (!functions.empty())
            order_func(functions.data());
        const parser markers("source", one_line_disable, start_disable_block, end_disable_block);
        plain_markers plain(source, lines);
        if (!one_line_disable.empty() || (!start_disable_block.empty() && !end_disable_block.empty()))
            plain.scan();
        stray_end = plain.stray_end;
        const std::size_t newlines = static_cast<std::size_t>(std::count(source.begin(), source.end(), '\n'));
        for (unsigned long line = 0; line <= newlines + 260; ++line)
            require(markers.is_disabled_line(line) == (plain.disabled.count(line) != 0),
                    "the disabled lines");
        require(!markers.is_disabled_line(~0UL), "the last line of all");
    });
    require(!end.ended, "no source ends the run");
    require(stray_end != end.errors.empty(), "a message for an end without a begin, and only for that");
    return 0;
}
