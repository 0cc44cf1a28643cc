#include "report/function_lists.h"

#include "common/message.h"
#include "common/output_file.h"
#include "common/text_buffer.h"
#include "coverage/function_table.h"
#include "driver/run_config.h"
#include "report/function_sort.h"
#include "report/page_names.h"
#include "report/page_pieces.h"
#include "report/sort_order.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

/// Columns with a title that sorts, as in ref.
enum list_column { COLUMN_FUNCTION, COLUMN_COVERAGE, COLUMN_BLOCKS };

/// Logical name of a list page.
static std::string list_name(const char* module, bool covered, int number) {
    std::string name = module;
    name.append(covered ? "_CvrdFncs_" : "_UncvrdFncs_").append(std::to_string(number));
    return name;
}

void printHTML(text_buffer& page, const char* name) {
    if (!name)
        return;
    for (;;) {
        const char* at = std::strchr(name, '@');
        if (!at)
            return page.put_escaped(name);
        page.put_escaped(std::string_view(name, static_cast<std::size_t>(at - name)));
        name = at + 1;
        if (name[std::strspn(name, "0123456789")] == '\0')
            return;
    }
}

// A line of a page is a line here.
// clang-format off

static void write_list_head(std::FILE* stream, bool covered, const char* module) {
    std::fputs("<html>\n"
               "<head>\n", stream);
    if (covered)
        std::fprintf(stream, "<title>Covered Functions of %s</title>\n", module);
    else
        std::fprintf(stream, "<title>Uncovered Functions of %s</title>\n", module);
    std::fputs(R"(<base target="src_view">)" "\n"
               "</head>\n"
               R"(<body bgcolor="FFFFFF">)" "\n", stream);
    if (covered)
        std::fputs(R"(<h5 ALIGN="left">covered functions</h5>)" "\n", stream);
    else
        std::fputs(R"(<h5 ALIGN="left">uncovered functions</h5>)" "\n", stream);
    std::fputs("<TABLE BORDER=0 CELLPADDING=3 "
               R"(CELLSPACING=0 STYLE="color:black;font-weight:normal;font-family:Verdana,)"
               R"(Arial;font-size:x-small">)" "\n"
               "<thead>\n", stream);
}

/// Deliberate: the titles stand in the table head without a row element, which browsers supply; scripts that read
/// the lists take each TR for a function.
static void write_list_titles(std::FILE* stream, bool covered, int order, const char* module,
                              const char* ext) {
    const int* links = ref[page_number(order)];
    const auto link = [&](list_column column) {
        return getHTMLname(list_name(module, covered, links[column]).c_str(), ext);
    };
    // Deliberate: differential mode says "miss rate" on the covered list too; its figures are
    // differences there.
    if (compWithRef)
        std::fprintf(stream, R"(<TH ALIGN="left" COLSPAN="2">)"
                     R"(<a target="_self" title="sort based on miss rate" href="%s">miss rate</a></TH>)" "\n",
                     link(COLUMN_COVERAGE));
    else if (covered)
        std::fprintf(stream, R"(<TH ALIGN="left" COLSPAN="2">)"
                     R"(<a target="_self" title="sort based on coverage" href="%s">coverage</a></TH>)" "\n",
                     link(COLUMN_COVERAGE));
    else
        std::fprintf(stream, R"(<TH ALIGN="center">)"
                     R"(<a target="_self" title="sort based on blocks" href="%s">blocks</a></TH>)" "\n",
                     link(COLUMN_BLOCKS));
    std::fprintf(stream, R"(<TH ALIGN="left">)"
                 R"(<a target="_self" title="sort based on function name" href="%s">function</a></TH>)" "\n",
                 link(COLUMN_FUNCTION));
    std::fputs("</thead>\n", stream);
}

/// `listing` is the link to the module's annotated listing. The link leads to a line a little above the
/// function, so that the listing opens with some context.
static void write_list_row(text_buffer& page, bool figures, const func& function, std::string_view listing) {
    page.put("<TR>\n");
    if (figures) {
        page.put(R"(<td align="right">)");
        page.put_percent(function.percent);
        page.put(R"(</td><td align="center">()");
        page.put_number(function.covered);
        page.put('/');
        page.put_number(function.blocks);
        page.put(")</td>\n");
    } else {
        page.put(R"(<td align="center">)");
        page.put_number(function.blocks);
        page.put("</td>\n");
    }
    page.put(R"(<td align="left"><a href=")");
    page.put(listing);
    page.put("#l");
    page.put_number(function.line > 5 ? function.line - 5 : function.line);
    page.put(R"(" title="Line )");
    page.put_number(function.line);
    page.put(R"(">)");
    printHTML(page, function.name[0] == '_' ? function.name + 1 : function.name);
    page.put("</a></td>\n");
    // Deliberate: a row opens in upper case and closes in lower case. Browsers see no difference, but a comparison
    // with the report of an earlier run would.
    page.put("</tr>\n");
}

// clang-format on

static void write_list_rows(std::FILE* stream, bool covered, const std::string& listing, func* const* list,
                            int count) {
    text_buffer page(stream);
    for (int i = 0; i < count; ++i)
        write_list_row(page, covered || compWithRef, *list[i], listing);
}

bool bOutputFunctionCoverageFor(bool covered, int order, const char* module, const char* ext, func** list,
                                int count) {
    check_sort_option(order);
    const std::string name = list_name(module, covered, page_number(order));
    const std::string path = getDirHTMLname(name.c_str(), ext);
    std::FILE* stream = open_output(path.c_str(), "wt");
    if (!stream) {
        print_unopened("Cannot open %s for output!", path.c_str());
        return false;
    }
    write_list_head(stream, covered, module);
    write_list_titles(stream, covered, order, module, ext);
    SortFunctions(count, list, order);
    std::fputs("<tbody>\n", stream);
    write_list_rows(stream, covered, getSrcHTMLname(module, ext), list, count);
    std::fputs("</tbody>\n", stream);
    std::fputs("</table>\n", stream);
    std::fputs("</body>\n", stream);
    std::fputs("</html>\n", stream);
    close_output(stream);
    return true;
}

/// Writes the pages of one list in ascending and descending order, by name and then by `figure`; each page
/// starts from the order that the one before left.
static bool write_lists(bool covered, int figure, const char* module, const char* ext, func** list,
                        std::int32_t count) {
    bool complete = true;
    for (const int order : {1, -1, figure, -figure})
        complete = bOutputFunctionCoverageFor(covered, order, module, ext, list, count) && complete;
    return complete;
}

// A line of a page is a line here.
// clang-format off

/// Writes the frame of the list page that is shown first, the one sorted by ascending name.
static void write_list_frame(std::FILE* stream, bool covered, const char* module, const char* ext) {
    const std::string name = list_name(module, covered, page_number(1));
    std::fprintf(stream, R"(<frame src="%s" scrolling="yes">)" "\n", getHTMLname(name.c_str(), ext));
}

static void write_left_column(std::FILE* stream, const char* module, const char* ext) {
    const bool covered = numFileFuncsCovered > 0;
    const bool uncovered = numFileFuncsUncovered > 0;
    if (covered && uncovered)
        std::fputs(R"(<frameset rows="10%, 40%, *">)" "\n", stream);
    else if (covered || uncovered)
        std::fputs(R"(<frameset rows="10%, *">)" "\n", stream);
    else
        std::fputs(R"(<frameset rows="100%, *">)" "\n", stream);
    std::fprintf(stream, R"(<frame src="%s" scrolling="no">)" "\n", getHTMLname("__ToolBar", ext));
    if (uncovered)
        write_list_frame(stream, false, module, ext);
    if (covered)
        write_list_frame(stream, true, module, ext);
    std::fputs("<noframes> Your browser does not have frames support</noframes>\n"
               "</frameset>\n", stream);
}

static void write_frameset(std::FILE* stream, const char* module, const char* ext) {
    std::fputs("<html>\n"
               "<head>\n", stream);
    printTitle(stream, module);
    std::fputs("</head>\n"
               R"(<frameset cols="25%, *">)" "\n", stream);
    write_left_column(stream, module, ext);
    std::fprintf(stream, R"(<frame name="%s" src="%s" scrolling="yes">)" "\n",
                 "src_view", getSrcHTMLname(module, ext));
    std::fputs("<noframes> Your browser doesn't have frames support</noframes>\n"
               "</frameset>\n"
               "</html>\n", stream);
}

// clang-format on

bool bOutputFunctionCoverage(const char* module, const char* ext) {
    bool complete = true;
    if (numFileFuncsCovered > 0)
        complete = write_lists(true, 2, module, ext, fileFuncsCovered, numFileFuncsCovered);
    if (numFileFuncsUncovered > 0) {
        const int figure = compWithRef ? 2 : 3;
        complete =
            write_lists(false, figure, module, ext, fileFuncsUncovered, numFileFuncsUncovered) && complete;
    }
    if (!complete)
        return false;
    std::FILE* stream = open_output(getDirHTMLname(module, ext), "wt");
    if (!stream) {
        print_unopened("Unable to create root html file %s!", module);
        return false;
    }
    write_frameset(stream, module, ext);
    close_output(stream);
    return true;
}
