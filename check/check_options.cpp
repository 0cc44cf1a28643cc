#include "check/check_options.h"

#include "common/message.h"

#include <charconv>
#include <cstdio>
#include <cstring>
#include <utility>

// clang-format off

static void print_usage() {
    std::fputs("Usage: vexcov-check [options]\n"
               "\n"
               "Compares the coverage of a program with what is asked for. Ends with status 0 when all of\n"
               "it is held, 2 when something is not, and 1 when the inputs cannot be used.\n"
               "\n"
               "   -min [PATTERN:]METRIC=PERCENT\n"
               "        Wants at least PERCENT of METRIC covered: blocks, lines or functions; with a\n"
               "        PATTERN, such as 'src/net/*', of the files that it fits. May be repeated.\n"
               "   -min-file [PATTERN:]METRIC=PERCENT\n"
               "        Wants it of each file. May be repeated.\n"
               "   -baseline FILE\n"
               "        Wants totals that are no lower than those in FILE, which vexcov-export json wrote.\n"
               "   -tolerance PERCENT\n"
               "        Lets them fall by PERCENT. Default is 0\n"
               "   -diff FILE\n"
               "        Counts only lines that the diff in FILE adds, such as git diff -U0 BASE...; - is\n"
               "        the standard input. -min and -min-file are then about these lines.\n"
               "   -max-uncovered N\n"
               "        Wants no more than N of these lines uncovered.\n"
               "   -strip N\n"
               "        Takes N leading folders off the names in the diff. Default is what the two names of\n"
               "        a file do not have in common, such as a/ and b/\n"
               "   -format FORMAT\n"
               "        Writes text, markdown, github (text and workflow commands) or json. Default is text\n",
               stdout);
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
    std::fputs("writes: text, Markdown, annotations of GitHub, JSON of format 1\n", stdout);
}

static void add_floor(check_options* options, const char* option, const char* value, bool each_file) {
    std::optional<coverage_floor> floor = read_floor(value);
    if (!floor)
        end_with_error("%s needs [PATTERN:]METRIC=PERCENT, where METRIC is blocks, lines or functions and "
                       "PERCENT a number from 0 to 100, not %s",
                       option, printable(value).c_str());
    floor->each_file = each_file;
    options->floors.push_back(std::move(*floor));
}

static void set_min(check_options* options, const char* value) {
    add_floor(options, "-min", value, false);
}

static void set_min_file(check_options* options, const char* value) {
    add_floor(options, "-min-file", value, true);
}

static void set_tolerance(check_options* options, const char* value) {
    options->tolerance = read_percentage(value);
    if (!options->tolerance)
        end_with_error("-tolerance needs a number from 0 to 100, not %s", printable(value).c_str());
}

/// Reads a whole number from 0 to `most`.
static std::int64_t read_number(const char* option, const char* value, std::int64_t most) {
    const char* const end = value + std::strlen(value);
    std::int64_t number = 0;
    const auto [last, error] = std::from_chars(value, end, number);
    if (error != std::errc() || last != end || number < 0 || number > most)
        end_with_error("%s needs a number from 0 to %lld, not %s", option, static_cast<long long>(most),
                       printable(value).c_str());
    return number;
}

static void set_max_uncovered(check_options* options, const char* value) {
    options->most_uncovered = read_number("-max-uncovered", value, 1'000'000'000);
}

static void set_strip(check_options* options, const char* value) {
    options->strip = static_cast<int>(read_number("-strip", value, kMostStripped));
}

static void set_format(check_options* options, const char* value) {
    static constexpr std::pair<const char*, check_format> formats[] = {{"text", check_format::text},
                                                                       {"markdown", check_format::markdown},
                                                                       {"github", check_format::github},
                                                                       {"json", check_format::json}};
    for (const auto& [name, format] : formats) {
        if (std::strcmp(name, value) != 0)
            continue;
        options->format = format;
        return;
    }
    end_with_error("unknown format %s; there are text, markdown, github and json", printable(value).c_str());
}

/// With what the message for a missing value names.
static const option_row<check_options*> own_rows[] = {
    {"-min", set_min, true, "[PATTERN:]METRIC=PERCENT"},
    {"-min-file", set_min_file, true, "[PATTERN:]METRIC=PERCENT"},
    {"-baseline", [](check_options* options, const char* v) { options->baseline = v; }, true, "a file name"},
    {"-tolerance", set_tolerance, true, "a percentage"},
    {"-diff", [](check_options* options, const char* v) { options->diff = v; }, true, "a file name"},
    {"-max-uncovered", set_max_uncovered, true, "a number"},
    {"-strip", set_strip, true, "a number"},
    {"-format", set_format, true, "a format"},
};

static void refuse_name(const char* name) {
    end_with_error("unexpected argument %s (vexcov-check -help lists the options)", printable(name).c_str());
}

static void check_agreement(const check_options& options) {
    const bool with_diff = options.diff.has_value();
    if (options.floors.empty() && !options.baseline && !with_diff)
        end_with_error("nothing to compare with: give -min, -min-file, -baseline or -diff (see vexcov-check "
                       "-help)");
    if (options.tolerance && !options.baseline)
        end_with_error("option -tolerance is for -baseline only; leave it out");
    if (options.most_uncovered && !with_diff)
        end_with_error("option -max-uncovered is for -diff only; leave it out");
    if (options.strip != kDetectPrefix && !with_diff)
        end_with_error("option -strip is for -diff only; leave it out");
    for (const coverage_floor& floor : options.floors)
        if (with_diff && floor.what == metric::functions)
            end_with_error(
                "with -diff there are floors for lines and blocks, not for functions; leave those out");
}

void read_check_options(int argc, char** argv, check_options* options) {
    read_coverage_arguments({"vexcov-check", print_usage, print_formats}, own_rows, argc, argv, options,
                            refuse_name);
    check_agreement(*options);
}
