#include "run/run_options.h"

#include "common/companion.h"
#include "common/message.h"
#include "import/import_options.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace fs = std::filesystem;

static void print_usage() {
    std::fputs("Usage: vexcov-run [options] -- COMMAND [ARGUMENT]...\n", stdout);
    std::fputs("\n", stdout);
    std::fputs("Runs COMMAND, which runs the tests of a program that was built for coverage, and makes the\n",
               stdout);
    std::fputs("report of what they executed. Compile and link the program with\n", stdout);
    std::fputs("\n", stdout);
    std::fputs("   clang:  -fprofile-instr-generate -fcoverage-mapping\n", stdout);
    std::fputs("   GCC:    --coverage\n", stdout);
    std::fputs("\n", stdout);
    std::fputs("The status is that of COMMAND; where that is 0 and there is no report, it is 1.\n", stdout);
    std::fputs("\n", stdout);
    std::fputs("   -objects DIR|FILE\n", stdout);
    std::fputs("        Looks for what was compiled there: programs, libraries and archives of clang,\n",
               stdout);
    std::fputs("        notes (.gcno) of GCC. May be given several times. Default is the working\n", stdout);
    std::fputs("        directory.\n", stdout);
    std::fputs("   -o DIR\n", stdout);
    std::fputs("        Writes the report to DIR. Default is the working directory.\n", stdout);
    std::fputs("   -root DIR\n", stdout);
    std::fputs("        Writes the names of source files below DIR relative to it and leaves out all\n",
               stdout);
    std::fputs("        others. Default is the working directory.\n", stdout);
    std::fputs("   -all\n", stdout);
    std::fputs("        Keeps the source files outside of -root, such as system headers.\n", stdout);
    std::fputs("   -clang, -gcc\n", stdout);
    std::fputs("        Takes the counts of this compiler, where the programs of both were run.\n", stdout);
    std::fputs("   -gcov PROGRAM\n", stdout);
    std::fputs("        Runs PROGRAM. Default is the gcov of the compiler's version.\n", stdout);
    std::fputs("   -keep\n", stdout);
    std::fputs("        Keeps the profiles, pgopti.spi and pgopti.dpi beside the report.\n", stdout);
    std::fputs("   -spi FILE, -dpi FILE\n", stdout);
    std::fputs("        Keep the profiles, the static or the dynamic one as FILE.\n", stdout);
    std::fputs("   -help\n", stdout);
    std::fputs("        Prints this text.\n", stdout);
    std::fputs("   -version\n", stdout);
    std::fputs("        Prints the version, and what is read and written.\n", stdout);
    std::fputs("\n", stdout);
    std::fputs("Options of vexcov, for the report: -prj -counts -comp -nopartial -ref -mname -maddr\n",
               stdout);
    std::fputs("-txtbcvrgfull -xmlbcvrgfull -onelinedsbl -beginblkdsbl -endblkdsbl -demang -bcolor -fcolor\n",
               stdout);
    std::fputs("-pcolor -ccolor -ucolor -xcolor; beside the report: -txtfcvrg -xmlfcvrg.\n", stdout);
}

static void print_formats() {
    print_compiler_formats(true);
    std::fputs("writes: the report of vexcov, profiles of 64 bits\n", stdout);
}

static void choose_clang(run_options* options, const char*, const char*) {
    options->compiled_by = compiler::clang;
}
static void choose_gcc(run_options* options, const char*, const char*) {
    options->compiled_by = compiler::gcc;
}
static void add_objects(run_options* options, const char*, const char* value) {
    options->objects.emplace_back(value);
}
static void set_folder(run_options* options, const char*, const char* value) {
    options->folder = value;
}
static void set_root(run_options* options, const char*, const char* value) {
    options->root = value;
}
static void set_all(run_options* options, const char*, const char*) {
    options->all_sources = true;
}
static void set_gcov(run_options* options, const char*, const char* value) {
    options->gcov = value;
}
static void set_keep(run_options* options, const char*, const char*) {
    options->keep = true;
}

/// The report is made in its own folder.
static std::string absolute_file(const char* name) {
    std::error_code error;
    const fs::path whole = fs::absolute(name, error);
    return error ? name : whole.string();
}

static void set_spi(run_options* options, const char*, const char* value) {
    options->spi_file = value;
    options->keep = true;
}
static void set_dpi(run_options* options, const char*, const char* value) {
    options->dpi_file = value;
    options->keep = true;
}

static void add_option(std::vector<std::string>* list, const char* name, const char* value) {
    list->emplace_back(name);
    if (value)
        list->emplace_back(value);
}
static void pass_on(run_options* options, const char* name, const char* value) {
    add_option(&options->for_report, name, value);
}
static void pass_file(run_options* options, const char* name, const char* value) {
    add_option(&options->for_report, name, absolute_file(value).c_str());
}
static void pass_input(run_options* options, const char* name, const char* value) {
    pass_file(options, name, value);
    options->inputs.push_back(options->for_report.back());
}
static void pass_to_both(run_options* options, const char* name, const char* value) {
    add_option(&options->for_report, name, value);
    add_option(&options->for_functions, name, value);
}
static void add_function_export(run_options* options, const char* name, const char* value) {
    add_option(&options->for_functions, name, absolute_file(value).c_str());
    options->function_exports = true;
}

/// With what the message for a missing value names. The name is passed on for the options of vexcov.
static const option_row<run_options*, const char*> option_table[] = {
    {"-clang", choose_clang, false, nullptr},
    {"-gcc", choose_gcc, false, nullptr},
    {"-objects", add_objects, true, "a directory or file"},
    {"-o", set_folder, true, "a directory"},
    {"-root", set_root, true, "a directory"},
    {"-all", set_all, false, nullptr},
    {"-gcov", set_gcov, true, "a program"},
    {"-keep", set_keep, false, nullptr},
    {"-spi", set_spi, true, "a file name"},
    {"-dpi", set_dpi, true, "a file name"},
    {"-prj", pass_to_both, true, "a name"},
    {"-demang", pass_to_both, false, nullptr},
    {"-counts", pass_on, false, nullptr},
    {"-nopartial", pass_on, false, nullptr},
    {"-comp", pass_input, true, "a file name"},
    {"-ref", pass_input, true, "a file name"},
    {"-mname", pass_on, true, "a name"},
    {"-maddr", pass_on, true, "an address"},
    {"-bcolor", pass_on, true, "a color"},
    {"-fcolor", pass_on, true, "a color"},
    {"-pcolor", pass_on, true, "a color"},
    {"-ccolor", pass_on, true, "a color"},
    {"-ucolor", pass_on, true, "a color"},
    {"-xcolor", pass_on, true, "a color"},
    {"-txtfcvrg", add_function_export, true, "a file name"},
    {"-xmlfcvrg", add_function_export, true, "a file name"},
    {"-txtbcvrgfull", pass_file, true, "a file name"},
    {"-xmlbcvrgfull", pass_file, true, "a file name"},
    {"-onelinedsbl", pass_on, true, "a text"},
    {"-beginblkdsbl", pass_on, true, "a text"},
    {"-endblkdsbl", pass_on, true, "a text"},
};

static void refuse_name(const char* name) {
    end_with_error("%s is no option; the command stands behind -- (see vexcov-run -help)",
                   printable(name).c_str());
}

/// The absolute path of a directory by the name that the shell has for the working directory, as compilers
/// write it into programs: with the symbolic links that led there.
static std::string absolute_folder(const std::string& name) {
    std::error_code error;
    const char* const shell_name = std::getenv("PWD");
    fs::path folder = fs::path(shell_name ? shell_name : "") / name;
    if (!folder.is_absolute() || !fs::equivalent(folder.lexically_normal(), name, error))
        folder = fs::absolute(name, error);
    folder = folder.lexically_normal();
    if (!folder.has_filename() && folder.has_relative_path())
        folder = folder.parent_path();
    return folder.string();
}

static void complete(run_options* options) {
    std::error_code error;
    if (!fs::is_directory(options->root, error))
        end_with_error("the root %s is no directory; -root needs that of the sources",
                       printable(options->root).c_str());
    options->root = absolute_folder(options->root);
    if (options->objects.empty())
        options->objects.emplace_back(".");
    if (options->keep && options->spi_file.empty())
        options->spi_file = (fs::path(options->folder) / "pgopti.spi").string();
    if (options->keep && options->dpi_file.empty())
        options->dpi_file = (fs::path(options->folder) / "pgopti.dpi").string();
    if (options->keep && options->spi_file == options->dpi_file)
        end_with_error("the static and the dynamic profile cannot be the same file, %s; give two names",
                       printable(options->spi_file).c_str());
}

void parse_run_options(int argc, char** argv, run_options* options) {
    char** const end = argv + argc;
    char** const separator =
        std::find_if(argv, end, [](const char* text) { return std::strcmp(text, "--") == 0; });
    read_arguments({"vexcov-run", print_usage, print_formats}, option_table,
                   static_cast<int>(separator - argv), argv, options, refuse_name);
    if (end - separator < 2)
        end_with_error(
            "no command given: vexcov-run [options] -- COMMAND [ARGUMENT]... (see vexcov-run -help)");
    options->command = separator + 1;
    complete(options);
}
