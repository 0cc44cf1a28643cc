#include "import/import_options.h"

#include "common/fatal.h"
#include "import/import_message.h"

#include <charconv>
#include <cstdio>
#include <cstring>
#include <string_view>

#ifndef VEXCOV_VERSION
#define VEXCOV_VERSION "1.0.0"
#endif

/// One option. An option with a value takes the next argument, whatever it looks like.
struct import_option {
    const char* name;
    const char* missing_value; ///< what the message names when the value is missing; null: takes no value
    void (*apply)(import_options* options, const char* value);
};

static void print_usage() {
    std::fputs("Usage: vexcov-import clang [-spi FILE] [-dpi FILE] [-root DIR] [-runs N] [files]\n", stdout);
    std::fputs("\n", stdout);
    std::fputs("Turns coverage data of clang into a profile that vexcov reads. The files are\n", stdout);
    std::fputs("\n", stdout);
    std::fputs("   programs, libraries, object files and archives that were compiled with\n", stdout);
    std::fputs("   -fprofile-instr-generate -fcoverage-mapping, and the profiles of their runs,\n", stdout);
    std::fputs("   raw (.profraw) or merged (.profdata)\n", stdout);
    std::fputs("\n", stdout);
    std::fputs("   directories, which are searched for programs, libraries and profiles\n", stdout);
    std::fputs("\n", stdout);
    std::fputs("   exports, as written by\n", stdout);
    std::fputs("   llvm-cov export -format=text -skip-expansions -instr-profile=app.profdata ./app\n",
               stdout);
    std::fputs("\n", stdout);
    std::fputs("and are merged. Programs that are not named are looked for below the working directory by\n",
               stdout);
    std::fputs("the build IDs of raw profiles. Without a file an export is read from standard input.\n",
               stdout);
    std::fputs("\n", stdout);
    std::fputs("   -spi FILE\n", stdout);
    std::fputs("        Writes the static profile to FILE. Default is pgopti.spi\n", stdout);
    std::fputs("   -dpi FILE\n", stdout);
    std::fputs("        Writes the dynamic profile to FILE. Default is pgopti.dpi\n", stdout);
    std::fputs("   -root DIR\n", stdout);
    std::fputs("        Writes the names of source files below DIR relative to it.\n", stdout);
    std::fputs("        All names stay as the compiler gave them by default.\n", stdout);
    std::fputs("   -runs N\n", stdout);
    std::fputs("        Sets the number of runs that the counts stand for. Default is 1\n", stdout);
    std::fputs("   -help\n", stdout);
    std::fputs("        Prints this text.\n", stdout);
    std::fputs("   -version\n", stdout);
    std::fputs("        Prints the version.\n", stdout);
}

static void set_spi(import_options* options, const char* value) {
    options->spi_file = value;
}
static void set_dpi(import_options* options, const char* value) {
    options->dpi_file = value;
}
static void set_root(import_options* options, const char* value) {
    options->root = value;
}

static void set_runs(import_options* options, const char* value) {
    const char* end = value + std::strlen(value);
    const std::from_chars_result result = std::from_chars(value, end, options->runs);
    if (result.ec != std::errc() || result.ptr != end || options->runs == 0)
        import_error("-runs needs a number from 1 to 4294967295, not %s", printable(value).c_str());
}

static void show_help(import_options*, const char*) {
    print_usage();
    pgt_Exit(0);
}

static void show_version(import_options*, const char*) {
    std::fputs("vexcov-import " VEXCOV_VERSION "\n", stdout);
    pgt_Exit(0);
}

static const import_option option_table[] = {
    {"-spi", "a file name", set_spi}, {"-dpi", "a file name", set_dpi}, {"-root", "a directory", set_root},
    {"-runs", "a number", set_runs},  {"-help", nullptr, show_help},    {"-version", nullptr, show_version},
};

static const import_option* find_option(const char* argument) {
    for (const import_option& option : option_table) {
        if (std::strcmp(option.name, argument) == 0)
            return &option;
    }
    return nullptr;
}

/// Handles the option at `index` and returns the index of the last argument that it used.
static int take_option(int argc, char** argv, int index, import_options* options) {
    const import_option* option = find_option(argv[index]);
    if (!option)
        import_error("unknown option %s (vexcov-import -help lists the options)",
                     printable(argv[index]).c_str());
    if (!option->missing_value) {
        option->apply(options, nullptr);
        return index;
    }
    if (index + 1 >= argc)
        import_error("option %s needs %s", option->name, option->missing_value);
    option->apply(options, argv[index + 1]);
    return index + 1;
}

static void check_options(const import_options& options) {
    if (options.spi_file.empty() || options.dpi_file.empty())
        import_error("the name of a profile to write is empty");
    if (options.spi_file == options.dpi_file)
        import_error("the static and the dynamic profile cannot be the same file, %s",
                     printable(options.spi_file).c_str());
}

void parse_import_options(int argc, char** argv, import_options* options) {
    bool format_given = false;
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (argument.size() > 1 && argument.front() == '-')
            i = take_option(argc, argv, i, options);
        else if (format_given)
            options->inputs.emplace_back(argument);
        else if (argument == "clang")
            format_given = true;
        else
            import_error("unknown format %s; the only one is clang", printable(argument).c_str());
    }
    if (!format_given)
        import_error("no format given: vexcov-import clang [options] [files] (see vexcov-import -help)");
    check_options(*options);
}
