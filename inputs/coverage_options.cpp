#include "inputs/coverage_options.h"

#include "common/message.h"
#include "driver/run_config.h"

#include <cstdio>

// With what the message for a missing value names.
const coverage_row coverage_rows[kCoverageRows] = {
    {"-spi", true, "a file name"},   {"-dpi", true, "a file name"},    {"-ref", true, "a file name"},
    {"-comp", true, "a file name"},  {"-prj", true, "a name"},         {"-root", true, "a directory"},
    {"-nopartial", false, nullptr},  {"-onelinedsbl", true, "a text"}, {"-beginblkdsbl", true, "a text"},
    {"-endblkdsbl", true, "a text"},
};

static void add_marker(std::vector<std::string>& markers, const char* value) {
    markers.push_back(value);
    Infeasible_markers_specified = true;
}

/// In the order of coverage_rows.
static void (*const setters[kCoverageRows])(coverage_options*, const char*) = {
    [](coverage_options* options, const char* value) { options->spi_file = value; },
    [](coverage_options* options, const char* value) { options->dpi_file = value; },
    [](coverage_options* options, const char* value) {
        options->reference = value;
        options->with_reference = true;
    },
    [](coverage_options* options, const char* value) {
        options->components = value;
        options->with_components = true;
    },
    [](coverage_options* options, const char* value) { options->project = value; },
    [](coverage_options* options, const char* value) { options->root = value; },
    [](coverage_options* options, const char*) { options->no_partial = true; },
    [](coverage_options*, const char* value) { add_marker(one_line_disable, value); },
    [](coverage_options*, const char* value) { add_marker(start_disable_block, value); },
    [](coverage_options*, const char* value) { add_marker(end_disable_block, value); },
};

void set_coverage_option(std::size_t row, coverage_options* options, const char* value) {
    setters[row](options, value);
}

void check_coverage_options(coverage_options* options) {
    if (!options->with_reference || !options->no_partial)
        return;
    print_warning("option -ref overrides option -nopartial.");
    options->no_partial = false;
}

// clang-format off

void print_coverage_usage() {
    std::fputs("   -spi FILE\n"
               "        Reads the static profile FILE. Default is pgopti.spi\n"
               "   -dpi FILE\n"
               "        Reads the dynamic profile FILE. Default is pgopti.dpi\n"
               "   -ref FILE\n"
               "        Shows what is covered now and was not in the dynamic profile FILE.\n"
               "   -comp FILE\n"
               "        Reads the list of files of interest.\n"
               "   -root DIR\n"
               "        Names source files relative to DIR. Default is the working directory.\n"
               "   -prj NAME\n"
               "        Sets the name of the project.\n"
               "   -nopartial\n"
               "        Treats partially-covered code the same as fully-covered code.\n"
               "   -onelinedsbl TEXT, -beginblkdsbl TEXT, -endblkdsbl TEXT\n"
               "        Take lines out that are marked by comments, as with vexcov.\n", stdout);
}

// clang-format on
