#include "report/help_page.h"

#include "common/output_file.h"
#include "driver/color_table.h"
#include "driver/run_config.h"
#include "report/page_names.h"
#include "report/page_pieces.h"

#include <cstdio>

// A line of the page is a line here.
// clang-format off

static void write_head(std::FILE* page) {
    std::fputs("<html>\n"
               "<head>\n"
               "<title>\n"
               "Vexal&#174; Compilers code-coverage tool on-line help\n"
               "</title>\n"
               R"(<base target="src_view">)" "\n"
               "</head>\n"
               R"(<body STYLE="color:black;font-weight:normal;)" "\n"
               R"(font-family:Verdana,Arial;font-size:x-small" bgcolor="FFFFFF">)" "\n", page);
    std::fprintf(page, R"(<a target="_new" href="%s">)" "\n", kMakerHomePage);
    std::fprintf(page, R"(<img src="%s" border="0"></a><BR>)" "\n", kLogoGif);
}

static void write_welcome(std::FILE* page) {
    std::fputs(R"(<h4 ALIGN="left" style="color:#3366ff">)" "\n"
               "Welcome to Vexal&#174; Compilers code-coverage tool.\n"
               "</h4>\n"
               "<p>\n"
               "Using the profile information gathered from running the\n"
               "instrumented program under its tests, the tool creates HTML files that show\n"
               "which portions of the source code were exercised by the tests and which were\n"
               "not. The code that is left unexercised is where a fault can still hide, and\n"
               "where another test is worth most.\n"
               "The profile need not come from tests. When it was gathered from a performance\n"
               "workload, the same pages show how well the training workload covers the\n"
               "critical code of the application, and so how far the compiler can rely on it\n"
               "when it optimizes that code.\n"
               "</p>\n", page);
}

static void write_coloring_scheme(std::FILE* page) {
    std::fputs(R"(<h5 ALIGN="left" style="color:#3366ff">Coloring Scheme</h5>)" "\n"
               "<p>\n"
               "The tool distinguishes between the covered code,\n"
               "the uncovered basic blocks and the uncovered functions of a source file, and\n"
               "shows each on a background color of its own (covered code is white unless\n"
               "another color is chosen). A basic block is a stretch of code that always runs\n"
               "from its beginning to its end; an <i>if</i> or a loop, for instance, begins new\n"
               "ones. A color applies from the place where a block begins up to the place where\n"
               "the next one begins.\n"
               "Each color can be set to any valid HTML color when the report is created. The\n"
               "following table shows the settings of this run.\n"
               "</p>\n", page);
}

static void write_color_table_head(std::FILE* page) {
    printFrameStart(page);
    std::fputs(R"(<TABLE BORDER="0" CELLSPACING="1" CELLPADDING="4" )" "\n"
               R"(STYLE="font-family:Arial,Helvetica;font-size:x-small">)" "\n"
               "<TR>\n"
               R"(<TD ALIGN="center" BGCOLOR="#F0F0F0" WIDTH="25%"><B>Color</B></TD>)" "\n"
               R"(<TD ALIGN="center" BGCOLOR="#F0F0F0"><B>Meaning</B></TD>)" "\n"
               "</TR>\n", page);
}

static void write_covered_rows(std::FILE* page) {
    std::fputs("<TR>\n", page);
    std::fprintf(page, R"(<TD BGCOLOR="%s">Covered code</TD>)" "\n", BGColor[clrCovered]);
    std::fputs(R"(<TD BGCOLOR="#FFFFFF">)" "\n"
               " The portion of code colored in this color was \n"
               "exercised by the tests.\n"
               "</TD>\n"
               "</TR>\n"
               "<TR>\n", page);
    std::fprintf(page, R"(<TD BGCOLOR="%s">Uncovered basic block</TD>)" "\n", BGColor[clrUncoveredBlock]);
    std::fputs(R"(<TD BGCOLOR="#FFFFFF">)" "\n"
               " Basic blocks that are colored in this color were \n"
               "not exercised by any of the tests.<BR> They were, however, within \n"
               "functions that were executed during the tests.\n"
               "</TD>\n"
               "</TR>\n"
               "<TR>\n", page);
    std::fprintf(page, R"(<TD BGCOLOR="%s">Uncovered function</TD>)" "\n", BGColor[clrUncoveredFunc]);
    std::fputs(R"(<TD BGCOLOR="#FFFFFF">)" "\n"
               " Functions that are colored in this color were \n"
               "never called during the tests.\n"
               "</TD>\n"
               "</TR>\n"
               "<TR>\n", page);
    std::fprintf(page, R"(<TD BGCOLOR="%s">Partially-covered code</TD>)" "\n", BGColor[clrPartial]);
    std::fputs(R"(<TD BGCOLOR="#FFFFFF">)" "\n"
               " More than one basic block was generated for \n"
               "the code at this position.\n"
               "Some of the blocks were covered while some were not.\n"
               "</TD>\n"
               "</TR>\n", page);
}

static void write_uncounted_rows(std::FILE* page) {
    if (Infeasible_markers_specified) {
        std::fputs("<TR>\n", page);
        std::fprintf(page, R"(<TD BGCOLOR="%s">Infeasible code</TD>)" "\n", BGColor[clrNotFeasible]);
        std::fputs(R"(<TD BGCOLOR="#FFFFFF">)" "\n"
                   " The portion of code colored in this color \n"
                   "was marked in the source as code that no test can reach,\n"
                   "and is ignored in coverage analysis.\n"
                   "</TD>\n"
                   "</TR>\n", page);
    }
    std::fputs("<TR>\n", page);
    std::fprintf(page, R"(<TD BGCOLOR="%s">Unknown</TD>)" "\n", BGColor[clrUnknown]);
    std::fputs(R"(<TD BGCOLOR="#FFFFFF">)" "\n"
               " No code was generated for this source position. \n"
               "Most probably, the source at this position is a comment,\n"
               "a header-file inclusion, or a variable declaration.\n"
               "</TD>\n"
               "</TR>\n", page);
}

static void write_dynamic_counters(std::FILE* page) {
    std::fputs(R"(<h5 ALIGN="left" style="color:#3366ff">Dynamic Counters</h5>)" "\n"
               "<p>\n"
               "When the tool is configured to show execution counts, a line of counts follows\n"
               "each line of code in which a basic block begins. Under the code, a <B>^</B>\n"
               "sign marks the place where the block begins, and the number after the sign\n"
               "tells how many times the block was executed. Counts that do not fit side by\n"
               "side are shown on further lines. The place where an executed function ends, and\n"
               "lines marked as infeasible, carry no count.\n"
               "Several basic blocks can begin at one position, as in a macro or in a template\n"
               "of which the program uses more than one instance. The count is then the sum\n"
               "over these blocks, and the number of executed blocks and the number of all\n"
               "blocks follow it in parentheses: for example,\n"
               "^ 1000 (8/10) means that ten blocks \n"
               "were generated for the position, that eight of them were executed, and that\n"
               "together they were executed 1000 times. Only one number is given where all of\n"
               "the blocks were executed, or none of them was.\n"
               "</p>\n", page);
}

static void write_coverage_summary(std::FILE* page) {
    std::fputs(R"(<h5 ALIGN="left" style="color:#3366ff">Coverage Summary</h5>)" "\n"
               "<p>\n"
               "The top-level summary reports the overall coverage of the selected modules:\n"
               "how many files, functions and basic blocks they have and how many of these\n"
               "were covered. Below it are the lists of the covered and of the uncovered\n"
               "files with the figures of each. A click on a column title sorts the lists by\n"
               "block coverage, function coverage or function name (in a list of files, the\n"
               "name of the file), where a list has such a column: first in ascending order\n"
               "and, on the next click, in descending order. A click on a file opens the source\n"
               "view of its module.\n"
               "In the tables, <i>cvrd</i> stands for covered, <i>uncvrd</i> for uncovered and\n"
               "<i>cvrg%</i> for the coverage in percent. In a report against a reference run,\n"
               "<i>missed</i> counts what this run covers and the reference run does not,\n"
               "<i>similar</i> the rest, and <i>miss%</i> is the share of the former.\n"
               "</p>\n"
               "<p>\n"
               "The source view of a module shows the colored source and, beside it, the\n"
               "uncovered and the covered functions of the module in two frames. The list of\n"
               "uncovered functions can be sorted by the number of basic blocks, the list of\n"
               "covered functions by block coverage, and both of them by function name. A\n"
               "click on a function shows its source.\n"
               "</p>\n", page);
}

// clang-format on

bool createOnLineHelp(const char* ext) {
    std::FILE* page = open_output(getDirHTMLname("__Help", ext), "wt");
    if (!page)
        return false;
    write_head(page);
    write_welcome(page);
    write_coloring_scheme(page);
    write_color_table_head(page);
    write_covered_rows(page);
    write_uncounted_rows(page);
    printFrameEnd(page);
    write_dynamic_counters(page);
    write_coverage_summary(page);
    std::fputs("</body>\n", page);
    std::fputs("</html>\n", page);
    std::fflush(page); // so that a later page of the same name overwrites this one
    // Deliberate: the stream is left to the end of the run, which closes what is open and tells of a page
    // that could not be written in full.
    return true;
}
