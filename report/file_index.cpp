#include "report/file_index.h"

#include "common/message.h"
#include "common/number_format.h"
#include "common/output_file.h"
#include "common/text_buffer.h"
#include "coverage/coverage_list.h"
#include "driver/run_config.h"
#include "report/file_sort.h"
#include "report/page_names.h"
#include "report/page_pieces.h"
#include "report/sort_order.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>

/// Columns with a title that sorts, as in ref.
enum index_column { COLUMN_NAME, COLUMN_FUNCTION_COVERAGE, COLUMN_BLOCK_COVERAGE };

// A line of a page is a line here.
// clang-format off

static void write_index_head(std::FILE* stream, bool covered, const char* project) {
    const char* kind = covered ? "Covered" : "Uncovered";
    std::fputs("<html>\n"
               "<head>\n", stream);
    printTitle(stream, project);
    std::fprintf(stream, R"(<base target="%s">)" "\n", "_parent");
    std::fputs("</head>\n"
               "\n"
               R"(<body bgcolor="FFFFFF">)" "\n"
               "\n"
               R"(<h4 ALIGN="center" STYLE="font-family:Arial,Helvetica;color:#3366ff">)", stream);
    if (project)
        std::fprintf(stream, "%s Files in %s</h4>\n", kind, project);
    else
        std::fprintf(stream, "%s Files</h4>\n", kind);
    std::fputs("<ol>\n", stream);
}

static void write_group_titles(std::FILE* stream, bool figures, const char* name, int number,
                               const char* ext) {
    std::fprintf(stream, R"(<TH ALIGN="left" ROWSPAN="2">)"
                 R"(<a target="%s" title="sort based on file name" href="%s">Name</a></TH>)" "\n",
                 "_self", getVerHTMLname(name, number, ext));
    if (figures)
        std::fputs(R"(<TH ALIGN="center" COLSPAN="3">Functions</TH>)" "\n"
                   R"(<TH ALIGN="center" COLSPAN="3">Blocks</TH>)" "\n", stream);
    else
        std::fputs(R"(<TH ALIGN="center" COLSPAN="1">Functions</TH>)" "\n"
                   R"(<TH ALIGN="center" COLSPAN="1">Blocks</TH>)" "\n", stream);
    std::fputs("</TR>\n", stream);
}

static void write_figure_titles(std::FILE* stream, bool figures, const char* name, const int* links,
                                const char* ext) {
    std::fputs(R"(<TR BGCOLOR="#F0F0F0">)" "\n"
               R"(<TH ALIGN="center">total</TH>)" "\n", stream);
    if (figures) {
        std::fprintf(stream, R"(<TH ALIGN="center">%s</TH>)" "\n", compWithRef ? "missed" : "cvrd");
        std::fprintf(stream, R"(<TH ALIGN="center">)"
                     R"(<a target="%s" title="sort based on %s%%" href="%s">%s%%</a></TH>)" "\n",
                     "_self", compWithRef ? "miss rate" : "function coverage",
                     getVerHTMLname(name, links[COLUMN_FUNCTION_COVERAGE], ext),
                     compWithRef ? "miss" : "cvrg");
    }
    std::fputs(R"(<TH ALIGN="center">total</TH>)" "\n", stream);
    if (figures) {
        std::fprintf(stream, R"(<TH ALIGN="center">%s</TH>)" "\n", compWithRef ? "missed" : "cvrd");
        // Deliberate: this title keeps "block coverage" in differential mode, unlike that of the functions: scripts
        // find the column by it in reports of both modes.
        std::fprintf(stream, R"(<TH ALIGN="center">)"
                     R"(<a target="%s" title="sort based on block coverage%%" href="%s">%s%%</a></TH>)" "\n",
                     "_self", getVerHTMLname(name, links[COLUMN_BLOCK_COVERAGE], ext),
                     compWithRef ? "miss" : "cvrg");
    }
    std::fputs("</TR>\n"
               "</THEAD>\n"
               "<TBODY>\n", stream);
}

static void write_count(text_buffer& page, std::int64_t count) {
    char text[kNumberTextSize];
    i64_to_ascii(text, count);
    page.put(R"(<TD ALIGN="right">)");
    page.put(text);
    page.put("</TD>\n");
}

static void write_coverage(text_buffer& page, double coverage) {
    page.put(R"(<TD ALIGN="right">)");
    page.put_percent(coverage);
    page.put("</TD>\n");
}

static void write_file_row(text_buffer& page, bool figures, const filename_list_node& file, const char* ext) {
    page.put(R"(<TR ID=DataRow STYLE="color:black;font-weight:normal" BGCOLOR="#FFFFFF">)" "\n");
    page.put(R"(<TD ALIGN="left"><a href=")");
    page.put(getHTMLname(file.name, ext));
    page.put(R"(" title=")");
    page.put(file.name);
    page.put(R"(">)");
    page.put(brief(file.name));
    page.put("</a></TD>\n");
    write_count(page, static_cast<std::int32_t>(file.numFuncs));
    if (figures) {
        write_count(page, static_cast<std::int32_t>(file.numFuncsCovered));
        write_coverage(page, file.funcCoverage);
    }
    write_count(page, static_cast<std::int32_t>(file.numBlocks));
    if (figures) {
        write_count(page, static_cast<std::int32_t>(file.numBlocksCovered));
        write_coverage(page, file.blockCoverage);
    }
    page.put("</TR>\n");
}

static void write_index_tail(std::FILE* stream) {
    std::fputs("</TBODY>\n", stream);
    printFrameEnd(stream);
    std::fputs("</ol>\n", stream);
    std::fprintf(stream, "<hr size=%d noshade>\n", 1);
    printNameMail(stream, g_lpszMailName, g_lpszMailAddr);
    std::fputs("</body>\n"
               "</html>\n"
               "\n", stream);
}

// clang-format on

static void write_file_rows(std::FILE* stream, bool figures, const char* ext, int count, const int* index,
                            filename_list_node* const* list) {
    text_buffer page(stream);
    for (int i = 0; i < count; ++i)
        write_file_row(page, figures, *list[index[i]], ext);
}

bool bCreateCov(bool covered, int order, const char* name, const char* ext, const char* project, int count,
                filename_list_node* const* list) {
    check_sort_option(order);
    std::FILE* stream = open_output(getDirVerHTMLname(name, page_number(order), ext), "wt");
    if (!stream) {
        print_unopened("Unable to create root html file %s!", name);
        return false;
    }
    const bool figures = covered || compWithRef;
    const int* links = ref[page_number(order)];
    write_index_head(stream, covered, project);
    const std::unique_ptr<int, decltype(&std::free)> index(CreateIndex(count), std::free);
    SortFiles(index.get(), count, order, list);
    printDataTableStart(stream);
    write_group_titles(stream, figures, name, links[COLUMN_NAME], ext);
    write_figure_titles(stream, figures, name, links, ext);
    write_file_rows(stream, figures, ext, count, index.get(), list);
    write_index_tail(stream);
    close_output(stream);
    return true;
}

bool bCreateCovProfMain(const char* name, const char* ext, const char* project, int count,
                        filename_list_node* const* list) {
    bool complete = true;
    for (const int order : {1, -1, 2, -2, 3, -3})
        complete = bCreateCov(true, order, name, ext, project, count, list) && complete;
    return complete;
}

bool bCreateUnCovProfMain(const char* name, const char* ext, const char* project, int count,
                          filename_list_node* const* list) {
    bool complete = true;
    for (const int order : {1, -1})
        complete = bCreateCov(false, order, name, ext, project, count, list) && complete;
    if (!compWithRef)
        return complete; // the pages have no coverage columns to sort by
    for (const int order : {2, -2, 3, -3})
        complete = bCreateCov(false, order, name, ext, project, count, list) && complete;
    return complete;
}
