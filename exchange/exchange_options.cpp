#include "exchange/exchange_options.h"

#include "common/message.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <limits>
#include <string_view>
#include <system_error>

namespace fs = std::filesystem;

static constexpr std::string_view format_names[kExchangeFormats] = {"cobertura", "lcov",   "sonar", "json",
                                                                    "markdown",  "github", "text"};

// clang-format off

static void print_usage() {
    std::fputs("Usage: vexcov-export FORMAT [options] [-o FILE]\n"
               "\n"
               "Writes the coverage that vexcov's report shows in a format that other programs read.\n"
               "Without -o it goes to the standard output.\n"
               "\n"
               "   cobertura   XML for GitHub, GitLab, Jenkins, Azure, Codecov and editors\n"
               "   lcov        trace file for genhtml, Codecov, Coveralls and editors\n"
               "   sonar       generic coverage of SonarQube\n"
               "   json        all figures of files and functions, for scripts\n"
               "   markdown    summary of a job\n"
               "   github      annotations of code that was not reached\n"
               "   text        table for the terminal\n"
               "\n"
               "   -FORMAT FILE\n"
               "        Writes another format in the same run, such as -lcov FILE.\n"
               "   -o FILE\n"
               "        Writes FORMAT to FILE.\n", stdout);
    print_coverage_usage();
    std::fputs("   -timestamp SECONDS\n"
               "        cobertura: sets the time of the report. Default is 0\n"
               "   -split SIZE\n"
               "        cobertura: writes FILE.1.xml, FILE.2.xml, ... of at most SIZE bytes; 9M is 9 MiB.\n"
               "   -diff FILE\n"
               "        github: shows only lines that the unified diff FILE changes.\n"
               "   -strip N\n"
               "        github: takes N folders off the names in the diff. By default their prefixes, such\n"
               "        as a/ and b/, are found.\n"
               "   -functions\n"
               "        text: shows functions instead of files.\n"
               "   -sort KEY\n"
               "        text: sorts by name, blocks, functions, lines or uncovered. Default is name\n"
               "   -help\n"
               "        Prints this text.\n"
               "   -version\n"
               "        Prints the version, and what is read and written.\n", stdout);
}

// clang-format on

static void print_formats() {
    std::fputs("reads: profiles of 32 and 64 bits, unified diffs\n", stdout);
    std::fputs(
        "writes: XML of Cobertura (DTD 04), traces of LCOV 1 and 2, XML of SonarQube (version 1), JSON\n"
        "        of format 1, Markdown, annotations of GitHub, text\n",
        stdout);
}

static void note_format_option(exchange_options* options, exchange_format format, const char* name) {
    options->format_option[static_cast<std::size_t>(format)] = name;
}

/// A number with nothing behind it but, with `units`, K, M or G.
static bool read_number(std::string_view text, bool units, std::uint64_t* number) {
    const char* const end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, *number);
    std::uint64_t unit = 1;
    std::string_view rest(result.ptr, static_cast<std::size_t>(end - result.ptr));
    static constexpr std::string_view kUnits = "KMG";
    if (units && rest.size() == 1 && kUnits.find(rest[0]) != std::string_view::npos) {
        unit = std::uint64_t{1} << (10 * (kUnits.find(rest[0]) + 1));
        rest = {};
    }
    if (result.ec != std::errc() || !rest.empty() ||
        *number > std::numeric_limits<std::uint64_t>::max() / unit)
        return false;
    *number *= unit;
    return true;
}

static void set_timestamp(exchange_options* options, const char* value) {
    if (!read_number(value, false, &options->timestamp))
        end_with_error("-timestamp needs a number of seconds, not %s", printable(value).c_str());
    note_format_option(options, exchange_format::cobertura, "-timestamp");
}

static void set_split(exchange_options* options, const char* value) {
    if (!read_number(value, true, &options->split) || options->split == 0)
        end_with_error("-split needs a size such as 9M, not %s", printable(value).c_str());
    note_format_option(options, exchange_format::cobertura, "-split");
}

static void set_diff(exchange_options* options, const char* value) {
    options->diff = value;
    note_format_option(options, exchange_format::github, "-diff");
}

static void set_strip(exchange_options* options, const char* value) {
    std::uint64_t folders = 0;
    if (!read_number(value, false, &folders) || folders > kMostStripped)
        end_with_error("-strip needs a number from 0 to %d, not %s", kMostStripped, printable(value).c_str());
    options->strip = static_cast<int>(folders);
    note_format_option(options, exchange_format::github, "-strip");
}

static void set_functions(exchange_options* options, const char*) {
    options->functions = true;
    note_format_option(options, exchange_format::text, "-functions");
}

static void set_order(exchange_options* options, const char* value) {
    static constexpr std::string_view names[] = {"name", "blocks", "functions", "lines", "uncovered"};
    const auto found = std::find(std::begin(names), std::end(names), std::string_view(value));
    if (found == std::end(names))
        end_with_error("-sort needs name, blocks, functions, lines or uncovered, not %s",
                       printable(value).c_str());
    options->order = static_cast<row_order>(found - std::begin(names));
    note_format_option(options, exchange_format::text, "-sort");
}

static void add_output(exchange_options* options, exchange_format format, const char* file) {
    options->outputs.push_back({format, std::strcmp(file, "-") == 0 ? "" : file});
}

template <exchange_format Format> static void set_output(exchange_options* options, const char* value) {
    add_output(options, Format, value);
}

static void set_file(exchange_options* options, const char* value) {
    options->first_file = value;
}

static const option_row<exchange_options*> own_rows[] = {
    {"-o", set_file, true, "a file name"},
    {"-cobertura", set_output<exchange_format::cobertura>, true, "a file name"},
    {"-lcov", set_output<exchange_format::lcov>, true, "a file name"},
    {"-sonar", set_output<exchange_format::sonar>, true, "a file name"},
    {"-json", set_output<exchange_format::json>, true, "a file name"},
    {"-markdown", set_output<exchange_format::markdown>, true, "a file name"},
    {"-github", set_output<exchange_format::github>, true, "a file name"},
    {"-text", set_output<exchange_format::text>, true, "a file name"},
    {"-timestamp", set_timestamp, true, "a number of seconds"},
    {"-split", set_split, true, "a size"},
    {"-diff", set_diff, true, "a file name"},
    {"-strip", set_strip, true, "a number"},
    {"-functions", set_functions, false, nullptr},
    {"-sort", set_order, true, "a key"},
};

static exchange_format format_of(std::string_view name) {
    const auto found = std::find(std::begin(format_names), std::end(format_names), name);
    if (found == std::end(format_names))
        end_with_error("unknown format %s; there are cobertura, lcov, sonar, json, markdown, github and text",
                       printable(name).c_str());
    return static_cast<exchange_format>(found - std::begin(format_names));
}

static bool has_format(const exchange_options& options, exchange_format format) {
    return std::any_of(options.outputs.begin(), options.outputs.end(),
                       [format](const exchange_output& output) { return output.format == format; });
}

/// True when both go to one place, in whatever spelling: the later one would replace the other.
static bool same_target(const std::string& a, const std::string& b) {
    if (a == b || a.empty() || b.empty())
        return a == b;
    std::error_code error_a;
    std::error_code error_b;
    const fs::path path_a = fs::weakly_canonical(fs::absolute(a, error_a), error_a);
    const fs::path path_b = fs::weakly_canonical(fs::absolute(b, error_b), error_b);
    return !error_a && !error_b && path_a == path_b;
}

static void check_outputs(const exchange_options& options) {
    for (std::size_t i = 0; i < options.outputs.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            const exchange_output& a = options.outputs[i];
            const exchange_output& b = options.outputs[j];
            if (a.format == b.format)
                end_with_error("the format %s is asked for twice; name it once",
                               std::string(format_names[static_cast<std::size_t>(a.format)]).c_str());
            if (same_target(a.file, b.file))
                end_with_error("two formats cannot go to %s; give each a file of its own",
                               a.file.empty() ? "the standard output" : printable(a.file).c_str());
        }
    }
}

static void check_options(const exchange_options& options) {
    check_outputs(options);
    for (std::size_t i = 0; i < kExchangeFormats; ++i)
        if (options.format_option[i] && !has_format(options, static_cast<exchange_format>(i)))
            end_with_error("option %s is for the format %s only; leave it out", options.format_option[i],
                           std::string(format_names[i]).c_str());
    if (options.strip != kDetectPrefix && options.diff.empty())
        end_with_error("option -strip is for -diff only; leave it out");
    if (options.functions && (options.order == row_order::functions || options.order == row_order::lines))
        end_with_error("with -functions, -sort needs name, blocks or uncovered");
    for (const exchange_output& output : options.outputs)
        if (output.format == exchange_format::cobertura && output.file.empty() && options.split != 0)
            end_with_error("option -split needs -o or -cobertura with a file name");
}

void parse_exchange_options(int argc, char** argv, exchange_options* options) {
    std::string first;
    read_coverage_arguments({"vexcov-export", print_usage, print_formats}, own_rows, argc, argv, options,
                            [&](const char* name) {
                                const exchange_format format = format_of(name);
                                if (!first.empty())
                                    end_with_error("more than one format: %s and %s; see -FORMAT FILE",
                                                   first.c_str(), printable(name).c_str());
                                first = name;
                                add_output(options, format, "-");
                            });
    if (options->outputs.empty())
        end_with_error("no format given: vexcov-export FORMAT [options] (see vexcov-export -help)");
    if (!options->first_file.empty() && first.empty())
        end_with_error("option -o needs a format: vexcov-export FORMAT -o FILE");
    for (exchange_output& output : options->outputs)
        if (!first.empty() && output.format == format_of(first) && output.file.empty() &&
            options->first_file != "-")
            output.file = options->first_file;
    options->also_whole = !options->diff.empty();
    check_options(*options);
}
