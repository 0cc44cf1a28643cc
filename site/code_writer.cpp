#include "site/code_writer.h"

#include "site/html_text.h"

#include <algorithm>
#include <charconv>

constexpr std::uint32_t kChunk = 100;   ///< lines; site.css knows their height
constexpr std::size_t kMostTitles = 20; ///< positions of a line that are listed one by one
constexpr std::size_t kSyntaxShare =
    5; ///< of the source's bytes, colours of the language may add one in so many
constexpr std::size_t kFreeSyntaxBytes = 200; ///< before that counts

code_survey survey_code(const source_analysis& analysis) {
    code_survey survey;
    for (marked_lines lines(analysis); lines.next();) {
        survey.lines = lines.line().number;
        for (const marked_piece& piece : lines.pieces())
            survey.places += piece.begins_place ? 1 : 0;
        const mark kind = lines.gravest();
        survey.infeasible_lines += lines.line().disabled ? 1 : 0;
        survey.partial_lines += kind == mark::partial ? 1 : 0;
        if (kind == mark::none)
            continue;
        std::vector<code_survey::run>& runs = survey.runs;
        if (!runs.empty() && runs.back().kind == kind && runs.back().last + 1 == survey.lines)
            runs.back().last = survey.lines;
        else
            runs.push_back({survey.lines, survey.lines, kind});
    }
    return survey;
}

void put_short_count(text_buffer& out, std::uint64_t count) {
    static const char units[] = {'k', 'M', 'G', 'T', 'P', 'E'};
    if (count < 1000)
        return out.put_number(count);
    std::size_t unit = 0;
    std::uint64_t rest = count;
    for (; rest >= 1000000; rest /= 1000)
        ++unit;
    const std::uint64_t whole = rest / 1000;
    out.put_number(whole);
    if (whole < 10 && rest % 1000 >= 100) {
        out.put('.');
        out.put_number(rest % 1000 / 100);
    }
    out.put(units[unit]);
}

code_writer::code_writer(text_buffer& out, const source_analysis& analysis, std::uint32_t places)
    : out_(out), analysis_(analysis), lines_(analysis),
      syntax_(analysis.text), token_{0, 0, syntax_kind::none}, has_syntax_(is_c_source(analysis.path)),
      places_(places) {
    if (has_syntax_)
        token_ = syntax_.next();
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

/// The class of a line's number.
static std::string_view line_class(mark kind) {
    switch (kind) {
    case mark::block:
        return " class=u";
    case mark::function:
        return " class=f";
    case mark::partial:
        return " class=p";
    case mark::infeasible:
        return " class=x";
    default:
        return "";
    }
}

/// Keeps the weight of the colours in bounds for sources that are nothing but keywords.
bool code_writer::may_colour() const {
    return syntax_bytes_ < kFreeSyntaxBytes + line_start_ / kSyntaxShare;
}

void code_writer::set_syntax(syntax_kind kind) {
    static const std::string_view opening[] = {"", "<i>", "<q>", "<b>"};
    static const std::string_view closing[] = {"", "</i>", "</q>", "</b>"};
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

/// Links to the uncovered places before and behind the one that begins.
void code_writer::write_place_links() {
    ++place_;
    out_.put("<a id=u");
    out_.put_number(place_);
    out_.put(" href=#u");
    out_.put_number(place_ > 1 ? place_ - 1 : places_);
    out_.put(">prev</a><a href=#u");
    out_.put_number(place_ < places_ ? place_ + 1 : 1);
    out_.put(">next</a>");
}

void code_writer::begin_mark(const marked_piece& piece) {
    if (piece.kind == open_mark_ && !piece.begins_place)
        return;
    close_mark();
    if (piece.begins_place)
        write_place_links();
    if (piece.kind != mark::none)
        out_.put(mark_tag(piece.kind));
    open_mark_ = piece.kind;
}

/// Writes the text between two offsets of the file, with the colours of the language.
void code_writer::write_piece(std::size_t from, std::size_t to) {
    const std::string_view text = analysis_.text;
    while (has_syntax_ && from < to) {
        while (token_.kind != syntax_kind::none && token_.end <= from)
            token_ = syntax_.next();
        const std::size_t begin = std::clamp(token_.begin, from, to);
        if (begin > from) {
            set_syntax(syntax_kind::none);
            put_code(out_, text.substr(from, begin - from));
        }
        const std::size_t end = std::clamp(token_.end, begin, to);
        if (end > begin) {
            if (open_syntax_ != token_.kind && may_colour())
                set_syntax(token_.kind);
            put_code(out_, text.substr(begin, end - begin));
            if (end == token_.end)
                set_syntax(syntax_kind::none);
        }
        from = end;
    }
    put_code(out_, text.substr(from, to - from));
}

/// What a position says of its blocks.
static void put_title(text_buffer& out, const block_list_node& position) {
    out.put("column ");
    out.put_number(position.column);
    out.put(": ");
    if (position.count == NEVER_ENTERED) {
        out.put("function never called");
        return;
    }
    put_grouped(out, position.count);
    if (position.numBlocks > 1) {
        out.put(" (");
        put_grouped(out, position.numExecuted);
        out.put(" of ");
        put_grouped(out, position.numBlocks);
        out.put(" blocks ran)");
    }
}

/// The counts of the blocks that begin on the line: the largest to be shown, each to be read on demand.
void code_writer::put_titles() {
    std::uint64_t largest = 0;
    std::size_t counted = 0;
    for (const line_stretch& stretch : lines_.walk().stretches()) {
        if (!stretch.position || stretch.position->bAdjusted())
            continue;
        ++counted;
        if (stretch.position->count != NEVER_ENTERED)
            largest = std::max(largest, stretch.position->count);
    }
    if (counted == 0)
        return;
    out_.put(" data-c=");
    put_short_count(out_, largest);
    out_.put(" title=\"");
    std::size_t listed = 0;
    for (const line_stretch& stretch : lines_.walk().stretches()) {
        if (listed == kMostTitles)
            break;
        if (!stretch.position || stretch.position->bAdjusted())
            continue;
        if (listed++ != 0)
            out_.put('\n');
        put_title(out_, *stretch.position);
    }
    if (counted > listed) {
        out_.put("\nand ");
        put_grouped(out_, counted - listed);
        out_.put(" more");
    }
    out_.put('"');
}

void code_writer::write_anchor() {
    char digits[16];
    const char* const end = std::to_chars(digits, digits + sizeof digits, lines_.line().number).ptr;
    const std::string_view number(digits, static_cast<std::size_t>(end - digits));
    out_.put("<a id=");
    out_.put(number);
    out_.put(" href=#");
    out_.put(number);
    out_.put(" tabindex=-1");
    out_.put(line_class(lines_.gravest()));
    if (!lines_.line().disabled)
        put_titles();
    out_.put('>');
    out_.put(number);
    out_.put("</a>");
}

void code_writer::write_line() {
    const source_line& line = lines_.line();
    const std::span<const marked_piece> pieces = lines_.pieces();
    if (pieces[0].kind != open_mark_ || pieces[0].begins_place)
        close_mark();
    write_anchor();
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        begin_mark(pieces[i]);
        const std::size_t end = i + 1 < pieces.size() ? pieces[i + 1].offset : line.text.size();
        write_piece(line_start_ + pieces[i].offset, line_start_ + end);
    }
    if (line.has_newline)
        out_.put('\n');
    line_start_ += line.text.size() + 1;
}

void code_writer::write() {
    const std::uint32_t last = count_lines(analysis_.text);
    while (lines_.next()) {
        const std::uint32_t number = lines_.line().number;
        if (number % kChunk == 1)
            // The height of a chunk is known only when it is full.
            out_.put(last - number + 1 > kChunk ? "<div>" : "<div class=z>");
        write_line();
        if (number % kChunk == 0 || number == last) {
            close_mark();
            // Without it the last newline is no part of a selection.
            if (number == last && lines_.line().has_newline)
                out_.put("<br>");
            out_.put("</div>");
        }
    }
}
