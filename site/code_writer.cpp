#include "site/code_writer.h"

#include "site/html_text.h"

#include <algorithm>
#include <cstring>

constexpr std::uint32_t kChunk = 100;     ///< lines; site.css knows their height
constexpr std::uint32_t kLinesAround = 3; ///< that an excerpt shows with a changed one
constexpr std::size_t kSyntaxShare =
    5; ///< of the source's bytes, colours of the language may add one in so many
constexpr std::size_t kFreeSyntaxBytes = 200; ///< before that counts
constexpr std::size_t kNoOffset = SIZE_MAX;

code_writer::code_writer(text_buffer& out, const source_analysis& analysis, const code_survey& survey,
                         const changed_lines& changed)
    : out_(out), analysis_(analysis), survey_(survey), changed_(changed), syntax_(analysis.text),
      has_syntax_(is_c_source(analysis.path)) {
    if (has_syntax_)
        syntax_.next();
}

/// What a mark's element is.
static std::string_view mark_tag(mark kind) {
    switch (kind) {
    case mark::block:
        return "<u>";
    case mark::function:
        return "<u class=f>";
    case mark::partial:
        return "<u class=p>";
    default:
        return "<u class=x>";
    }
}

/// The class of a line's number, by its mark and whether a diff changes it.
static std::string_view line_class(mark kind, bool changed) {
    static constexpr std::string_view classes[][2] = {{"", " class=new"},
                                                      {" class=p", " class=\"p new\""},
                                                      {" class=u", " class=\"u new\""},
                                                      {" class=f", " class=\"f new\""},
                                                      {" class=x", " class=\"x new\""}};
    return classes[static_cast<int>(kind)][changed ? 1 : 0];
}

/// Keeps the weight of the colours in bounds for sources that are nothing but keywords.
bool code_writer::may_colour() const {
    return syntax_bytes_ < kFreeSyntaxBytes + line_begin_ / kSyntaxShare;
}

void code_writer::set_syntax(syntax_kind kind) {
    static constexpr std::string_view opening[] = {"", "<i>", "<q>", "<b>"};
    static constexpr std::string_view closing[] = {"", "</i>", "</q>", "</b>"};
    if (kind == open_syntax_)
        return;
    out_.put(closing[static_cast<int>(open_syntax_)]);
    open_syntax_ = kind;
    out_.put(opening[static_cast<int>(kind)]);
    syntax_bytes_ += kind == syntax_kind::none ? 0 : 7;
}

void code_writer::close_mark() {
    set_syntax(syntax_kind::none);
    if (open_mark_ != mark::none)
        out_.put("</u>");
    open_mark_ = mark::none;
}

/// Opens the element of the mark that is in force.
void code_writer::open_mark() {
    if (open_mark_ == in_force_)
        return;
    close_mark();
    if (in_force_ != mark::none)
        out_.put(mark_tag(in_force_));
    open_mark_ = in_force_;
}

/// Links to the uncovered places before and behind the one that begins.
void code_writer::write_place_links() {
    ++place_;
    out_.put("<a id=u");
    out_.put_number(place_);
    out_.put(" href=#u");
    out_.put_number(place_ > 1 ? place_ - 1 : survey_.places);
    out_.put(">prev</a><a href=#u");
    out_.put_number(place_ < survey_.places ? place_ + 1 : 1);
    out_.put(">next</a>");
}

void code_writer::change_mark(const mark_change& change) {
    close_mark();
    if (change.begins_place && whole_.empty())
        write_place_links();
    in_force_ = change.kind;
}

/// Writes a whole keyword.
void code_writer::write_keyword(std::string_view word) {
    set_syntax(syntax_kind::none);
    if (!may_colour())
        return out_.put(word);
    out_.put("<b>");
    out_.put(word); // nothing but letters
    out_.put("</b>");
    syntax_bytes_ += 7;
}

/// Writes a part of the token at hand, which ends at `end`.
void code_writer::write_token(std::size_t from, std::size_t end) {
    const std::string_view piece = analysis_.text.substr(from, end - from);
    const syntax_token& token = syntax_.token();
    if (token.kind == syntax_kind::keyword && piece.size() == token.end - token.begin)
        return write_keyword(piece);
    if (token.kind == syntax_kind::sign) {
        set_syntax(syntax_kind::none);
        return put_code(out_, piece);
    }
    if (open_syntax_ != token.kind && may_colour())
        set_syntax(token.kind);
    put_code(out_, piece);
    if (end == token.end)
        set_syntax(syntax_kind::none);
}

/// Writes the text between two offsets of the file, with the colours of the language.
void code_writer::write_piece(std::size_t from, std::size_t to) {
    const std::string_view text = analysis_.text;
    if (!has_syntax_)
        return put_code(out_, text.substr(from, to - from));
    while (from < to) {
        const syntax_token& token = syntax_.token();
        while (token.kind != syntax_kind::none && token.end <= from)
            syntax_.next();
        const std::size_t begin = std::clamp(token.begin, from, to);
        if (begin > from) {
            set_syntax(syntax_kind::none);
            out_.put(text.substr(from, begin - from));
        }
        from = std::clamp(token.end, begin, to);
        if (from > begin)
            write_token(begin, from);
    }
}

/// The positions of the line that lie in its text.
std::span<const block_list_node> code_writer::counted_positions() {
    const std::vector<block_list_node>& all = analysis_.positions.positions();
    while (next_position_ < all.size() && all[next_position_].line < line_)
        ++next_position_;
    const std::size_t first = next_position_;
    const std::size_t columns = line_end_ - line_begin_ + (line_end_ < analysis_.text.size() ? 1 : 0);
    std::size_t last = first;
    while (last < all.size() && all[last].line == line_ && all[last].column <= columns)
        ++last;
    return {all.data() + first, last - first};
}

/// The gravest mark of the line.
mark code_writer::line_mark() {
    const std::vector<code_survey::run>& runs = survey_.runs;
    while (next_run_ < runs.size() && runs[next_run_].last < line_)
        ++next_run_;
    return next_run_ < runs.size() && runs[next_run_].first <= line_ ? runs[next_run_].kind : mark::none;
}

/// True when a diff changes the line.
bool code_writer::is_changed() {
    while (next_changed_ < changed_.size() && changed_[next_changed_].last < line_)
        ++next_changed_;
    return next_changed_ < changed_.size() && changed_[next_changed_].first <= line_;
}

constexpr std::size_t kAnchorRoom = 100; ///< bytes, more than the fixed parts of a line's number take

namespace {

/// Puts what every line has into a buffer's room, in moves of fixed length.
class fixed_moves {
  public:
    explicit fixed_moves(char* at) : at_(at) {}
    template <std::size_t Size> fixed_moves& put(const char (&text)[Size]) {
        std::memcpy(at_, text, Size - 1);
        at_ += Size - 1;
        return *this;
    }
    fixed_moves& put(const line_number& number) {
        std::memcpy(at_, number.digits.data(), number.digits.size());
        at_ += number.length;
        return *this;
    }
    char* end() const { return at_; }

  private:
    char* at_;
};

} // namespace

void line_number::increment() {
    std::size_t i = length;
    while (i > 0 && digits[i - 1] == '9')
        digits[--i] = '0';
    if (i > 0) {
        ++digits[i - 1];
        return;
    }
    digits[length++] = '0';
    digits[0] = '1';
}

void code_writer::write_anchor() {
    const mark gravest = line_mark();
    const bool changed = is_changed();
    if (whole_.empty()) {
        fixed_moves to(out_.room(kAnchorRoom));
        out_.taken(to.put("<a id=").put(number_).put(" href=#").put(number_).put(" tabindex=-1").end());
    } else {
        out_.put("<a href=\"");
        out_.put(whole_);
        out_.put("#");
        out_.put({number_.digits.data(), number_.length});
        out_.put("\" tabindex=-1");
    }
    out_.put(line_class(gravest, changed));
    if (gravest != mark::infeasible)
        put_line_counts(out_, counted_positions());
    out_.put(changed ? ">+" : ">");
    out_.taken(fixed_moves(out_.room(kAnchorRoom)).put(number_).put("</a>").end());
}

/// Offset of the next change of marks; none lies behind the text.
std::size_t code_writer::next_offset() const {
    return next_change_ < survey_.changes.size() ? survey_.changes[next_change_].offset : kNoOffset;
}

void code_writer::write_line() {
    std::size_t next = next_offset();
    // The number of the line belongs to no mark that ends or begins with it.
    if (next <= line_begin_)
        close_mark();
    write_anchor();
    for (std::size_t at = line_begin_;; at = next) {
        for (; next <= at; next = next_offset())
            change_mark(survey_.changes[next_change_++]);
        const std::size_t end = std::min(next, line_end_);
        if (end > at) {
            open_mark();
            write_piece(at, end);
        }
        if (next > line_end_)
            break;
    }
    if (line_end_ < analysis_.text.size())
        out_.put('\n');
}

/// Goes on to the next line; false behind the last one.
bool code_writer::next_line() {
    if (line_ == survey_.lines())
        return false;
    line_begin_ = line_ == 0 ? 0 : line_end_ + 1;
    line_end_ = survey_.line_ends[line_++];
    number_.increment();
    return true;
}

void code_writer::write() {
    while (next_line()) {
        if (line_ % kChunk == 1)
            // The height of a chunk is known only when it is full.
            out_.put(survey_.lines() - line_ + 1 > kChunk ? "<div>" : "<div class=z>");
        write_line();
        if (line_ % kChunk == 0 || line_ == survey_.lines()) {
            close_mark();
            // Without it the last newline is no part of a selection.
            if (line_ == survey_.lines() && line_end_ < analysis_.text.size())
                out_.put("<br>");
            out_.put("</div>");
        }
    }
}

/// Takes the marks of a line into account that is not shown.
void code_writer::skip_line() {
    const std::vector<mark_change>& changes = survey_.changes;
    for (; next_change_ < changes.size() && changes[next_change_].offset <= line_end_; ++next_change_)
        in_force_ = changes[next_change_].kind;
}

/// True for changed lines and those around them.
bool code_writer::is_near_change() const {
    const std::size_t next = next_changed_; // the first that does not lie behind
    return (next > 0 && line_ <= changed_[next - 1].last + kLinesAround) ||
           (next < changed_.size() && changed_[next].first <= line_ + kLinesAround);
}

void code_writer::write_excerpts(std::string_view whole) {
    whole_ = whole;
    bool open = false;
    while (next_line()) {
        is_changed();
        if (!is_near_change()) {
            skip_line();
            if (open)
                out_.put("</div></pre>\n");
            open = false;
            continue;
        }
        if (!open)
            out_.put("<pre class=code><div class=z>");
        open = true;
        write_line();
        close_mark();
    }
    if (open)
        out_.put("</div></pre>\n");
}
