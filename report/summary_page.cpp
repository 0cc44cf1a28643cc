#include "report/summary_page.h"

#include "common/message.h"
#include "common/number_format.h"
#include "common/output_file.h"
#include "coverage/run_totals.h"
#include "driver/run_config.h"
#include "report/page_names.h"
#include "report/page_pieces.h"
#include "report/sort_order.h"

#include <cstdint>
#include <cstdio>

// A line of a page is a line here.
// clang-format off

static void write_summary_titles(std::FILE* stream) {
    std::fputs(R"(<TH ALIGN="center" COLSPAN="4">Files</TH>)" "\n"
               R"(<TH ALIGN="center" COLSPAN="4">Functions</TH>)" "\n"
               R"(<TH ALIGN="center" COLSPAN="4">Blocks</TH>)" "\n"
               "</TR>\n"
               R"(<TR BGCOLOR="#F0F0F0">)" "\n", stream);
    for (int group = 0; group < 3; ++group) {
        std::fputs(R"(<TH ALIGN="center">total</TH>)" "\n", stream);
        std::fprintf(stream, R"(<TH ALIGN="center">%s</TH>)" "\n", compWithRef ? "missed" : "cvrd");
        std::fprintf(stream, R"(<TH ALIGN="center">%s</TH>)" "\n", compWithRef ? "similar" : "uncvrd");
        std::fprintf(stream, R"(<TH ALIGN="center">%s%%</TH>)" "\n", compWithRef ? "miss" : "cvrg");
    }
    std::fputs("</TR>\n"
               "</THEAD>\n"
               "<TBODY>\n"
               R"(<TR ID=DataRow STYLE="color:black;font-weight:normal" BGCOLOR="#FFFFFF">)" "\n", stream);
}

static void write_figures(std::FILE* stream, std::int64_t total, std::int64_t covered) {
    char text[kNumberTextSize];
    for (const std::int64_t count : {total, covered, total - covered}) {
        i64_to_ascii(text, count);
        std::fprintf(stream, R"(<TD ALIGN="center">%s</TD>)" "\n", text);
    }
    std::fprintf(stream, R"(<TD ALIGN="center" STYLE="font-weight:bold">%6.2f</TD>)" "\n",
                 percent64(covered, total));
}

static void write_summary(std::FILE* stream, const char* project) {
    std::fputs("<html>\n"
               "<head>\n"
               "<title>Coverage Summary</title>\n"
               "</head>\n"
               R"(<body bgcolor="FFFFFF">)" "\n", stream);
    printMasterTitle(stream, project);
    printDataTableStart(stream);
    write_summary_titles(stream);
    write_figures(stream, totalNumberOfFiles, totalNumberOfFilesCovered);
    write_figures(stream, totalNumberOfProcs, totalNumberOfProcsCovered);
    write_figures(stream, totalNumberOfBlocks, totalNumberOfBlocksCovered);
    std::fputs("</TR>\n"
               "</TBODY>\n", stream);
    printFrameEnd(stream);
    std::fputs("</body>\n"
               "</html>\n"
               "\n", stream);
}

/// Writes the frame of an index, which shows its page sorted by ascending name.
static void write_index_frame(std::FILE* stream, const char* name, const char* ext) {
    std::fprintf(stream, R"(<frame src="%s" scrolling="yes">)" "\n",
                 getDirSlashVerHTMLname(name, page_number(1), ext));
}

/// The summary above, the two indexes side by side below it. An index alone takes the whole lower row.
static void write_root(std::FILE* stream, const char* project, const char* summaryName,
                       const char* coveredName, const char* uncoveredName, const char* ext) {
    const int firstColumn = !coveredName ? 100 : compWithRef ? 50 : 63; // percent
    std::fputs("<html>\n"
               "<head>\n", stream);
    printTitle(stream, project);
    std::fputs("</head>\n", stream);
    if (!coveredName && !uncoveredName)
        std::fputs(R"(<frameset rows="100%, *">)" "\n", stream);
    else
        std::fputs(R"(<frameset rows="30%, *">)" "\n", stream);
    std::fprintf(stream, R"(<frame src="%s" scrolling="yes">)" "\n", getDirSlashHTMLname(summaryName, ext));
    if (uncoveredName)
        std::fprintf(stream, R"(<frameset cols="%d%%, *">)" "\n", firstColumn);
    if (coveredName)
        write_index_frame(stream, coveredName, ext);
    if (uncoveredName) {
        write_index_frame(stream, uncoveredName, ext);
        std::fputs("<noframes> Your browser does not have frames support</noframes>\n"
                   "</frameset>\n", stream);
    }
    std::fputs("<noframes> Your browser doesn't have frames support</noframes>\n"
               "</frameset>\n"
               "</html>\n", stream);
}

// clang-format on

bool bCreateSummary(const char* project, const char* rootName, const char* summaryName,
                    const char* coveredName, const char* uncoveredName, const char* ext) {
    std::FILE* summary = open_output(getDirHTMLname(summaryName, ext), "wt");
    if (!summary) {
        print_unopened("Unable to create root html file %s!", summaryName);
        return false;
    }
    write_summary(summary, project);
    close_output(summary);

    std::FILE* root = open_output(getHTMLname(rootName, ext), "wt");
    if (!root) {
        print_unopened("Unable to create root html file %s!", rootName);
        return false;
    }
    write_root(root, project, summaryName, coveredName, uncoveredName, ext);
    close_output(root);
    return true;
}
