#include "report/listing.h"

#include "common/number_format.h"
#include "common/output_file.h"
#include "common/source_file.h"
#include "common/text_buffer.h"
#include "coverage/coverage_list.h"
#include "coverage/run_totals.h"
#include "driver/color_table.h"
#include "driver/run_config.h"
#include "driver/run_state.h"
#include "markers/parser.h"
#include "report/function_lists.h"
#include "report/listing_color.h"
#include "report/page_names.h"
#include "report/page_pieces.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>
#include <string_view>

/// At most this many blanks at the start of a line take the colour of what follows them.
constexpr std::size_t kMostLookAhead = 255;

Color getColor(std::uint64_t count, bool bNotInRef, unsigned int numBlocks, unsigned int numExecuted,
               bool bAdjusted) {
    if (compWithRef) {
        // The counts are differences against the reference: none means that nothing is new here.
        if (count == 0)
            return clrCovered;
        return bNotInRef || count == NEVER_ENTERED ? clrUncoveredFunc : clrUncoveredBlock;
    }
    if (count == 0)
        return clrUncoveredBlock;
    if (count == NEVER_ENTERED)
        return clrUncoveredFunc;
    const bool all = numBlocks == numExecuted || (bAdjusted && numBlocks == numExecuted + 1);
    return all ? clrCovered : clrPartial;
}

const char* posNextMarker(const char* p) {
    if (!p)
        return nullptr;
    p += std::strcspn(p, "^\n");
    return *p == '^' ? p : nullptr;
}

// A line of the page is a line here.
// clang-format off

static void WriteSrcFileHeader(std::FILE* stream, const char* file, double function, double block) {
    std::fputs("<html>\n"
               "<head>\n", stream);
    std::fprintf(stream, "<title>Listing of %s</title>\n", file);
    std::fputs("</head>\n"
               R"(<body bgcolor="FFFFFF">)" "\n", stream);
    std::fprintf(stream, "<h4>&#160;&#160;&#160;&#160;&#160;&#160;&#160;&#160;&#160;&#160;&#160;&#160;%s", file);
    std::fprintf(stream, "&#160;&#160;&#160;&#160;&#160;&#160;&#160;<font size=-1>%s:&#160 "
                 "%5.2f&#160;%%func&#160;&#160;&#160;&#160; %5.2f&#160;%%block</font></h4>\n",
                 compWithRef ? "miss rate" : "coverage", function, block);
    std::fputs("<hr size=1 noshade>\n"
               "<pre>\n", stream);
}

// clang-format on

static void WriteSrcFileLineHeader(text_buffer& out, unsigned int line, Color color) {
    check_color(color);
    // Deliberate: the number column is six wide; lines beyond show 999999 and keep their own anchor.
    const unsigned int shown = std::min(line, 999999U);
    out.put_padded(shown, 6);
    out.put(") <a name=\"l");
    out.put_number(line);
    out.put(R"(" style="background-color: )");
    out.put(BGColor[color]);
    out.put(R"(">)");
}

static void WriteSrcFileLineFooter(text_buffer& out) {
    out.put("</a>\n");
}

static void changeColor(text_buffer& out, Color color) {
    check_color(color);
    out.put(R"(</a><a style="background-color: )");
    out.put(BGColor[color]);
    out.put(R"(">)");
}

static void WriteCovLineHeader(text_buffer& out, Color color) {
    check_color(color);
    out.put(R"(        <a style="background-color: )");
    out.put(BGColor[color]);
    out.put(R"(">)");
}

static void WriteCovLineFooter(text_buffer& out, bool close) {
    if (close)
        out.put("</a>\n");
}

static void WriteSrcFileFooter(std::FILE* stream) {
    std::fputs("</pre>\n"
               "<hr size=1 noshade>\n",
               stream);
    printNameMail(stream, g_lpszMailName, g_lpszMailAddr);
    std::fputs("</body>\n", stream);
    std::fputs("</html>\n", stream);
}

namespace {

/// The recorded positions of one line, by column.
struct line_positions {
    const block_list_node* begin;
    const block_list_node* end;

    /// The position at a column, or null.
    const block_list_node* at(std::size_t column) const {
        const block_list_node* found =
            std::lower_bound(begin, end, column, [](const block_list_node& node, std::size_t wanted) {
                return node.column < wanted;
            });
        return found != end && found->column == column ? found : nullptr;
    }
};

/// Writes the lines of one source file. Instead of looking every character up, it steps from one recorded
/// position of the line to the next.
class listing_writer {
  public:
    explicit listing_writer(std::FILE* stream) : out_(stream) {}

    /// Writes one line. `text` is without its newline; `newline` is false for a last line that has none.
    void write_line(unsigned int line, std::string_view text, bool newline, line_positions positions);

  private:
    void look_ahead(std::string_view text, bool newline, line_positions positions);
    void enter_position(const block_list_node& position);
    void start_markers(std::string_view text);
    void write_count_lines(line_positions positions);
    std::size_t write_count(const block_list_node& position);

    text_buffer out_;
    Color color_ = clrUnknown; ///< in force
    bool disabled_ = false;    ///< the line is
    std::string markers_;      ///< one character a column, '^' where a count belongs; only with -counts
};

} // namespace

static Color color_of(const block_list_node& position) {
    return getColor(position.count, position.bNotInRef, position.numBlocks, position.numExecuted,
                    position.bAdjusted);
}

/// Takes the colour of a position. On a disabled line it is not shown but still counts for the lines that
/// follow.
void listing_writer::enter_position(const block_list_node& position) {
    const Color color = color_of(position);
    if (color != color_ && !disabled_)
        changeColor(out_, color);
    color_ = color;
}

/// Gives the indentation of a line the colour of its first statement.
void listing_writer::look_ahead(std::string_view text, bool newline, line_positions positions) {
    std::size_t blanks = 0;
    while (blanks < text.size() && blanks < kMostLookAhead && (text[blanks] == ' ' || text[blanks] == '\t'))
        ++blanks;
    const bool at_end = blanks == text.size() && !newline && blanks < kMostLookAhead;
    if (blanks == 0 || at_end)
        return;
    if (const block_list_node* position = positions.at(blanks + 1))
        enter_position(*position);
}

/// Fills the markers of a line: tabs and carriage returns stay, so that a count lands under its column.
void listing_writer::start_markers(std::string_view text) {
    markers_.assign(text);
    for (char& c : markers_)
        c = c == '\t' || c == '\r' ? c : ' '; // without a branch, the compiler takes many at a time
    markers_ += '\n';
}

void listing_writer::write_line(unsigned int line, std::string_view text, bool newline,
                                line_positions positions) {
    disabled_ = pars->is_disabled_line(line);
    WriteSrcFileLineHeader(out_, line, disabled_ ? clrNotFeasible : color_);
    if (positions.begin != positions.end)
        look_ahead(text, newline, positions);
    const bool counts = g_bXCOUNTS && !disabled_ && newline && positions.begin != positions.end;
    if (counts)
        start_markers(text);
    bool marked = false;
    std::size_t written = 0;
    const std::size_t columns = text.size() + (newline ? 1 : 0);
    for (const block_list_node* p = positions.begin; p != positions.end && p->column <= columns; ++p) {
        const std::size_t index = p->column - 1;
        out_.put_escaped(text.substr(written, index - written));
        written = index;
        enter_position(*p);
        if (counts) {
            markers_[index] = p->bAdjusted ? ' ' : '^';
            marked = marked || !p->bAdjusted;
        }
    }
    out_.put_escaped(text.substr(written));
    // Deliberate: a last line without newline stays open and has no counts, which follow the newline of a
    // line.
    if (!newline)
        return;
    WriteSrcFileLineFooter(out_);
    if (marked)
        write_count_lines(positions);
}

/// Writes the count of a position and returns its width.
std::size_t listing_writer::write_count(const block_list_node& position) {
    char number[kNumberTextSize];
    u64_to_ascii(number, position.count == NEVER_ENTERED ? 0 : position.count);
    std::string shown = "^ ";
    shown.append(number).append(1, ' ');
    if (position.numBlocks > 1) {
        shown += '(';
        if (position.numExecuted != 0 && position.numExecuted != position.numBlocks) {
            u64_to_ascii(number, position.numExecuted);
            shown.append(number).append(1, '/');
        }
        u64_to_ascii(number, position.numBlocks);
        shown.append(number).append(1, ')');
    }
    out_.put(shown);
    return shown.size();
}

/// Writes the counts of one source line, on as many lines as it takes to put each under its column.
void listing_writer::write_count_lines(line_positions positions) {
    const char* const start = markers_.data();
    const char* from = start;
    while (const char* caret = posNextMarker(from)) {
        if (from == start)
            WriteCovLineHeader(out_, color_);
        out_.put(std::string_view(from, static_cast<std::size_t>(caret - from)));
        const std::size_t index = static_cast<std::size_t>(caret - start);
        const std::size_t width = write_count(*positions.at(index + 1));
        markers_[index] = ' ';
        const char* next = posNextMarker(caret);
        if (next && static_cast<std::size_t>(next - caret) >= width) {
            from = caret + width;
        } else {
            WriteCovLineFooter(out_, true);
            from = start;
        }
    }
}

/// Writes all lines of a source text. `positions` are those of the file by line and column.
static void write_lines(std::FILE* page, std::string_view text,
                        const std::vector<block_list_node>& positions) {
    listing_writer writer(page);
    const block_list_node* next = positions.data();
    const block_list_node* const end = next + positions.size();
    unsigned int line = 1;
    for (std::size_t at = 0; at < text.size(); ++line) {
        while (next != end && next->line < line)
            ++next;
        line_positions of_line = {next, next};
        while (of_line.end != end && of_line.end->line == line)
            ++of_line.end;
        const std::size_t newline = text.find('\n', at);
        const bool complete = newline != std::string_view::npos;
        const std::size_t length = (complete ? newline : text.size()) - at;
        writer.write_line(line, text.substr(at, length), complete, of_line);
        at += length + 1;
        next = of_line.end;
    }
}

bool bOutputLineCoverage(const char* ext) {
    const char* file = g_cl->lpszGetSrcFilename();
    std::string_view text;
    if (!load_source(file, &text)) {
        std::fprintf(stderr, "Error - Cannot open %s!\n", file);
        return false;
    }
    const char* path = getDirSrcHTMLname(file, ext);
    std::FILE* page = open_output(path, "wt");
    if (!page) {
        std::fprintf(stderr, "Cannot open %s for output!\n", path);
        return false;
    }
    WriteSrcFileHeader(page, brief(file), functionCoverage, blockCoverage);
    try {
        write_lines(page, text, g_cl->sorted_positions());
    } catch (const std::bad_alloc&) { // infeasible: begin
        std::printf("Error - Not enough memory!! (bOutputLineCoverage)\n");
        return false;
        // infeasible: end
    }
    // Deliberate: the page of an empty source is its head alone.
    if (!text.empty())
        WriteSrcFileFooter(page);
    close_output(page);
    return bOutputFunctionCoverage(file, ext);
}
