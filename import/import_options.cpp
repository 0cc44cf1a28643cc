#include "import/import_options.h"

#include "common/companion.h"
#include "common/input_guard.h"
#include "common/message.h"
#include "import/clang/known_versions.h"
#include "import/gcc/gcov_runs.h"

#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <utility>

static void print_usage() {
    std::fputs("Usage: vexcov-import clang [options] [files]\n", stdout);
    std::fputs("       vexcov-import gcc [-gcov PROGRAM] [-jobs N] [options] [inputs]\n", stdout);
    std::fputs("       vexcov-import lcov [options] files\n", stdout);
    std::fputs("\n", stdout);
    std::fputs("Turns the coverage data of other tools into a profile that vexcov reads. Several inputs\n",
               stdout);
    std::fputs("are merged; - is the standard input.\n", stdout);
    std::fputs("\n", stdout);
    std::fputs("clang: files and directories:\n", stdout);
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
    std::fputs("Programs that are not named are looked for below the working directory by the build IDs\n",
               stdout);
    std::fputs("of raw profiles. Without a file an export is read from standard input.\n", stdout);
    std::fputs("\n", stdout);
    std::fputs("gcc: the counters of programs that were built with --coverage. An input is a directory,\n",
               stdout);
    std::fputs("which is searched for .gcno and .gcda files (default is the working directory), a .gcda\n",
               stdout);
    std::fputs("file, or a .json or .json.gz file that gcov --json-format wrote.\n", stdout);
    std::fputs("\n", stdout);
    std::fputs("lcov: trace files (.info) of lcov and of tools that write its format.\n", stdout);
    std::fputs("\n", stdout);
    std::fputs("   -spi FILE\n", stdout);
    std::fputs("        Writes the static profile to FILE. Default is pgopti.spi\n", stdout);
    std::fputs("   -dpi FILE\n", stdout);
    std::fputs("        Writes the dynamic profile to FILE. Default is pgopti.dpi\n", stdout);
    std::fputs("   -root DIR\n", stdout);
    std::fputs("        Writes the names of source files below DIR relative to it, and leaves out all\n",
               stdout);
    std::fputs("        others, such as system headers. All names stay as they were given by default.\n",
               stdout);
    std::fputs("   -runs N\n", stdout);
    std::fputs("        Sets the number of runs that the counts stand for. Default is 1\n", stdout);
    std::fputs("   -instances\n", stdout);
    std::fputs("        Keeps each instance of a template as a function of its own. By default they are\n",
               stdout);
    std::fputs("        one, whose name has <> for the arguments, and so are the variants of a\n", stdout);
    std::fputs("        constructor or destructor.\n", stdout);
    std::fputs("   -all\n", stdout);
    std::fputs("        Keeps the source files outside of -root.\n", stdout);
    std::fputs("   -gcov PROGRAM\n", stdout);
    std::fputs("        Runs PROGRAM. Default is the gcov of the compiler's version.\n", stdout);
    std::fputs("   -jobs N\n", stdout);
    std::fputs("        Runs gcov N times at once. Default is the number of processors.\n", stdout);
    std::fputs("   -help\n", stdout);
    std::fputs("        Prints this text.\n", stdout);
    std::fputs("   -version\n", stdout);
    std::fputs("        Prints the version, and what is read and written.\n", stdout);
}

void print_compiler_formats(bool of_runs_only) {
    std::printf(
        "clang: programs with coverage mapping of versions %u to %u (clang 11 to 22); raw profiles of\n",
        kOldestMapping, kNewestMapping);
    std::printf("       versions %ju and %ju to %ju", std::uintmax_t{kOldestRawProfile},
                std::uintmax_t{kUnreleasedRawProfile + 1}, std::uintmax_t{kNewestRawProfile});
    if (!of_runs_only)
        std::printf(", indexed ones of %ju to %ju; exports of llvm-cov of 2 and 3",
                    std::uintmax_t{kOldestIndexedProfile}, std::uintmax_t{kNewestIndexedProfile});
    std::fputs("\n", stdout);
    std::fputs("gcc: JSON of gcov, formats 1 and 2 (GCC 9 and newer)\n", stdout);
}

static void print_formats() {
    print_compiler_formats(false);
    std::fputs("lcov: traces of LCOV 1 and 2\n", stdout);
    std::fputs("writes: profiles of 64 bits\n", stdout);
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
        end_with_error("-runs needs a number from 1 to 4294967295, not %s", printable(value).c_str());
}

static void set_gcov(import_options* options, const char* value) {
    options->gcov = value;
    options->gcc_option = "-gcov";
}

static void set_jobs(import_options* options, const char* value) {
    const char* end = value + std::strlen(value);
    const std::from_chars_result result = std::from_chars(value, end, options->jobs);
    if (result.ec != std::errc() || result.ptr != end || options->jobs == 0 || options->jobs > kMostJobs)
        end_with_error("-jobs needs a number from 1 to %u, not %s", kMostJobs, printable(value).c_str());
    options->gcc_option = "-jobs";
}

static void set_all(import_options* options, const char*) {
    options->all_sources = true;
}

static void set_instances(import_options* options, const char*) {
    options->instances = true;
}

std::string shown_inputs(const import_options& options) {
    const std::vector<std::string>& names = options.objects.empty() ? options.inputs : options.objects;
    if (names.empty())
        return options.format == import_format::clang ? "standard input" : "the working directory";
    const std::string first = names[0] == "-" ? "standard input" : printable(names[0]);
    const std::size_t more = names.size() - 1;
    return more == 0 ? first : first + " and " + std::to_string(more) + " more";
}

/// With what the message for a missing value names.
static const option_row<import_options*> option_table[] = {
    {"-spi", set_spi, true, "a file name"},   {"-dpi", set_dpi, true, "a file name"},
    {"-root", set_root, true, "a directory"}, {"-runs", set_runs, true, "a number"},
    {"-gcov", set_gcov, true, "a program"},   {"-jobs", set_jobs, true, "a number"},
    {"-all", set_all, false, nullptr},        {"-instances", set_instances, false, nullptr},
};

static bool take_format(std::string_view word, import_options* options) {
    static constexpr std::pair<std::string_view, import_format> formats[] = {
        {"clang", import_format::clang}, {"gcc", import_format::gcc}, {"lcov", import_format::lcov}};
    for (const auto& [name, format] : formats) {
        if (name != word)
            continue;
        options->format = format;
        return true;
    }
    return false;
}

/// Takes the name of the format, then those of the inputs.
static void take_name(const char* name, bool* format_given, import_options* options) {
    if (*format_given)
        options->inputs.emplace_back(name);
    else if (take_format(name, options))
        *format_given = true;
    else
        end_with_error("unknown format %s; there are clang, gcc and lcov", printable(name).c_str());
}

static void check_options(const import_options& options) {
    if (options.gcc_option && options.format != import_format::gcc)
        end_with_error("option %s is for the format gcc only; leave it out", options.gcc_option);
    if (options.spi_file == options.dpi_file)
        end_with_error("the static and the dynamic profile cannot be the same file, %s; give two names",
                       printable(options.spi_file).c_str());
    input_guard inputs;
    for (const std::string& input : options.inputs)
        inputs.add(input);
    inputs.check(options.spi_file);
    inputs.check(options.dpi_file);
}

void parse_import_options(int argc, char** argv, import_options* options) {
    bool format_given = false;
    read_arguments({"vexcov-import", print_usage, print_formats}, option_table, argc, argv, options,
                   [&](const char* name) { take_name(name, &format_given, options); });
    if (!format_given)
        end_with_error("no format given: vexcov-import FORMAT [options] [inputs] (see vexcov-import -help)");
    check_options(*options);
}
