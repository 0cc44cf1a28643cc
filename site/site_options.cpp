#include "site/site_options.h"

#include "common/message.h"

#include <cstdio>

static void print_usage();
static void print_formats();
static const companion program = {"vexcov-site", print_usage, print_formats};

// clang-format off

static void print_usage() {
    std::fputs("Usage: vexcov-site [options]\n"
               "\n"
               "Writes the coverage of a program as a web site: a start page, a page for each directory and\n"
               "each source file, and lists of all files and functions.\n"
               "\n"
               "   -o DIR\n"
               "        Writes to DIR. Default is coverage-site\n"
               "   -title TEXT\n"
               "        Sets the title of the start page. Default is the name of the project.\n"
               "   -baseline FILE\n"
               "        Shows what changed since FILE, which vexcov-export json has written.\n"
               "   -diff FILE\n"
               "        Adds a page with the lines that the unified diff FILE changes; - is the standard\n"
               "        input.\n"
               "   -css FILE\n"
               "        Adds a style sheet of your own.\n", stdout);
    print_coverage_usage();
    std::fputs("   -help\n"
               "        Prints this text.\n"
               "   -version\n"
               "        Prints the version, and what is read and written.\n", stdout);
}

// clang-format on

static void print_formats() {
    std::fputs("reads: profiles of 32 and 64 bits, JSON of vexcov-export (format 1), unified diffs\n",
               stdout);
    std::fputs("writes: HTML\n", stdout);
}

static const option_row<site_options*> own_rows[] = {
    {"-o", [](site_options* options, const char* value) { options->directory = value; }, true, "a directory"},
    {"-title", [](site_options* options, const char* value) { options->title = value; }, true, "a text"},
    {"-baseline", [](site_options* options, const char* value) { options->baseline = value; }, true,
     "a file name"},
    {"-diff", [](site_options* options, const char* value) { options->diff = value; }, true, "a file name"},
    {"-css", [](site_options* options, const char* value) { options->style_sheet = value; }, true,
     "a file name"},
};

void parse_site_options(int argc, char** argv, site_options* options) {
    read_coverage_arguments(program, own_rows, argc, argv, options, [](const char* argument) {
        end_with_error("unexpected argument %s (%s -help lists the options)", printable(argument).c_str(),
                       program.name);
    });
    options->also_whole = !options->diff.empty();
    if (options->title.empty())
        options->title = options->project.empty() ? "Coverage" : options->project;
}
