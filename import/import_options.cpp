#include "import/import_options.h"

#include "common/fatal.h"
#include "common/option_table.h"
#include "import/import_message.h"

#include <charconv>
#include <cstdio>
#include <cstring>

#ifndef VEXCOV_VERSION
#define VEXCOV_VERSION "1.0.0"
#endif

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

/// With what the message for a missing value names.
static const option_row<import_options*> option_table[] = {
    {"-spi", set_spi, true, "a file name"},   {"-dpi", set_dpi, true, "a file name"},
    {"-root", set_root, true, "a directory"}, {"-runs", set_runs, true, "a number"},
    {"-help", show_help, false, nullptr},     {"-version", show_version, false, nullptr},
};

/// Takes the name of the format, then those of the inputs.
static void take_name(const char* name, bool* format_given, import_options* options) {
    if (*format_given)
        options->inputs.emplace_back(name);
    else if (std::strcmp(name, "clang") == 0)
        *format_given = true;
    else
        import_error("unknown format %s; the only one is clang", printable(name).c_str());
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
    for (argument_reader arguments(option_table, argc, argv); arguments.next();) {
        switch (arguments.kind()) {
        case argument_kind::option:
            arguments.option().apply(options, arguments.value());
            break;
        case argument_kind::missing_value:
            import_error("option %s needs %s", arguments.option().name, arguments.option().missing);
        case argument_kind::unknown:
            import_error("unknown option %s (vexcov-import -help lists the options)",
                         printable(arguments.text()).c_str());
        case argument_kind::positional:
            take_name(arguments.text(), &format_given, options);
        }
    }
    if (!format_given)
        import_error("no format given: vexcov-import clang [options] [files] (see vexcov-import -help)");
    check_options(*options);
}
