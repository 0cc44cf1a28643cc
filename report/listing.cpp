#include "report/listing.h"

#include "analysis/line_walk.h"
#include "common/message.h"
#include "common/number_format.h"
#include "common/output_file.h"
#include "common/source_file.h"
#include "common/text_buffer.h"
#include "coverage/coverage_list.h"
#include "coverage/run_totals.h"
#include "driver/color_table.h"
#include "driver/run_config.h"
#include "report/function_lists.h"
#include "report/page_names.h"
#include "report/page_pieces.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>
#include <string_view>

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

/// Writes the lines of one source file. Instead of looking every character up, it steps from one stretch of
/// the line to the next.
class listing_writer {
  public:
    explicit listing_writer(std::FILE* stream) : out_(stream) {}

    /// Writes the line that the walk is at.
    void write_line(const line_walk& walk);

  private:
    void write_text(const line_walk& walk);
    void start_markers(std::string_view text);
    void mark_counts(const line_walk& walk);
    void write_count_lines(const line_walk& walk);
    std::size_t write_count(const block_list_node& position);

    text_buffer out_;
    Color color_ = clrUnknown; ///< in force behind the line
    std::string markers_;      ///< one character a column, '^' where a count belongs; only with -counts
};

} // namespace

/// Writes the text of a line with its colours.
void listing_writer::write_text(const line_walk& walk) {
    const source_line& line = walk.line();
    color_ = line.color;
    std::size_t written = 0;
    for (const line_stretch& stretch : walk.stretches()) {
        if (stretch.offset > written)
            out_.put_escaped(line.text.substr(written, stretch.offset - written));
        written = stretch.offset;
        // On a disabled line a colour is not shown but still counts for the lines that follow.
        if (stretch.color != color_ && !line.disabled)
            changeColor(out_, stretch.color);
        color_ = stretch.color;
    }
    out_.put_escaped(line.text.substr(written));
}

/// Fills the markers of a line: tabs and carriage returns stay, so that a count lands under its column.
void listing_writer::start_markers(std::string_view text) {
    markers_.assign(text);
    for (char& c : markers_)
        c = c == '\t' || c == '\r' ? c : ' '; // without a branch, the compiler takes many at a time
    markers_ += '\n';
}

/// Writes the counts of the blocks that begin on the line, unless all of them are closing adjustments.
void listing_writer::mark_counts(const line_walk& walk) {
    const auto is_marked = [](const line_stretch& stretch) {
        return stretch.position && !stretch.position->bAdjusted();
    };
    const auto stretches = walk.stretches();
    if (std::none_of(stretches.begin(), stretches.end(), is_marked))
        return;
    start_markers(walk.line().text);
    for (const line_stretch& stretch : stretches)
        if (stretch.position)
            markers_[stretch.offset] = is_marked(stretch) ? '^' : ' ';
    write_count_lines(walk);
}

void listing_writer::write_line(const line_walk& walk) {
    const source_line& line = walk.line();
    WriteSrcFileLineHeader(out_, line.number, line.disabled ? clrNotFeasible : line.color);
    write_text(walk);
    // Deliberate: a last line without newline stays open and has no counts, which follow the newline of a
    // line.
    if (!line.has_newline)
        return;
    WriteSrcFileLineFooter(out_);
    if (g_bXCOUNTS && !line.disabled && !walk.stretches().empty())
        mark_counts(walk);
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

/// The position recorded at an offset of the line; there is one.
static const block_list_node& position_at(const line_walk& walk, std::size_t offset) {
    const auto positions = walk.positions();
    return *std::lower_bound(
        positions.begin(), positions.end(), offset + 1,
        [](const block_list_node& node, std::size_t column) { return node.column < column; });
}

/// Writes the counts of one source line, on as many lines as it takes to put each under its column.
void listing_writer::write_count_lines(const line_walk& walk) {
    const char* const start = markers_.data();
    const char* from = start;
    while (const char* caret = posNextMarker(from)) {
        if (from == start)
            WriteCovLineHeader(out_, color_);
        out_.put(std::string_view(from, static_cast<std::size_t>(caret - from)));
        const std::size_t offset = static_cast<std::size_t>(caret - start);
        const std::size_t width = write_count(position_at(walk, offset));
        markers_[offset] = ' ';
        const char* next = posNextMarker(caret);
        if (next && static_cast<std::size_t>(next - caret) >= width) {
            from = caret + width;
        } else {
            WriteCovLineFooter(out_, true);
            from = start;
        }
    }
}

/// Writes all lines of the current source file.
static void write_lines(std::FILE* page, const source_analysis& analysis) {
    listing_writer writer(page);
    for (line_walk walk(analysis); walk.next();)
        writer.write_line(walk);
}

bool bOutputLineCoverage(const char* ext) {
    const char* file = g_cl->lpszGetSrcFilename();
    source_analysis& analysis = g_cl->current_analysis();
    if (!load_source(file, &analysis.text)) {
        print_unopened("Error - Cannot open %s!", file);
        return false;
    }
    const char* path = getDirSrcHTMLname(file, ext);
    std::FILE* page = open_output(path, "wt");
    if (!page) {
        print_unopened("Cannot open %s for output!", path);
        return false;
    }
    WriteSrcFileHeader(page, brief(file), functionCoverage, blockCoverage);
    try {
        analysis.positions.sort();
        write_lines(page, analysis);
    } catch (const std::bad_alloc&) { // infeasible: begin
        std::printf("Error - Not enough memory!! (bOutputLineCoverage)\n");
        return false;
        // infeasible: end
    }
    // Deliberate: the page of an empty source is its head alone.
    if (!analysis.text.empty())
        WriteSrcFileFooter(page);
    close_output(page);
    return bOutputFunctionCoverage(file, ext);
}
