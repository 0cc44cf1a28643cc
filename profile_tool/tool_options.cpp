#include "profile_tool/tool_options.h"

#include "common/companion.h"
#include "common/printable.h"
#include "profile_tool/tool_message.h"

#include <cstdio>
#include <string_view>
#include <utility>

static void print_usage() {
    std::fputs("Usage: vexcov-profile show [-functions | -json] [PROFILE]\n", stdout);
    std::fputs("       vexcov-profile check [-spi FILE] [PROFILE]\n", stdout);
    std::fputs("       vexcov-profile merge -o NAME [-newest] [-spi FILE]... PROFILE...\n", stdout);
    std::fputs("\n", stdout);
    std::fputs("Shows, checks and adds up profiles. PROFILE is a dynamic profile, pgopti.dpi by default.\n",
               stdout);
    std::fputs("Its static profile is the file beside it with .spi for .dpi.\n", stdout);
    std::fputs("\n", stdout);
    std::fputs("show: the header and every record with its blocks.\n", stdout);
    std::fputs("\n", stdout);
    std::fputs("   -functions\n", stdout);
    std::fputs("        A table: times entered, blocks covered, blocks, function, source file.\n", stdout);
    std::fputs("   -json\n", stdout);
    std::fputs("        The same as the text as JSON, one record a line.\n", stdout);
    std::fputs("\n", stdout);
    std::fputs("check: what a report would hide. Each finding comes with its number and the first few\n",
               stdout);
    std::fputs("places. The exit status is 0 without a finding, 2 with some, and 1 when a profile cannot\n",
               stdout);
    std::fputs("be read. Source files are looked up from the working directory.\n", stdout);
    std::fputs("\n", stdout);
    std::fputs("merge: the profiles of several runs of one program become one; runs and counts are added\n",
               stdout);
    std::fputs("up, in whatever order. The result can be merged further.\n", stdout);
    std::fputs("\n", stdout);
    std::fputs("   -o NAME\n", stdout);
    std::fputs("        Writes NAME.dpi and, when there are static profiles, NAME.spi. NAME may end in\n",
               stdout);
    std::fputs("        .dpi, and may be one of the profiles that are read.\n", stdout);
    std::fputs("   -newest\n", stdout);
    std::fputs("        Where records of one function do not agree in their blocks, those count that agree\n",
               stdout);
    std::fputs("        with the profile that was changed last. Without it they are an error.\n", stdout);
    std::fputs("   -spi FILE\n", stdout);
    std::fputs("        Reads this static profile, not those beside the dynamic ones. With merge, several\n",
               stdout);
    std::fputs("        may be given.\n", stdout);
    std::fputs("   -help\n", stdout);
    std::fputs("        Prints this text.\n", stdout);
    std::fputs("   -version\n", stdout);
    std::fputs("        Prints the version, and what is read and written.\n", stdout);
}

static void print_formats() {
    std::fputs("reads: profiles of 32 and 64 bits\n", stdout);
    std::fputs("writes: profiles of 32 and 64 bits, text, JSON of format 1\n", stdout);
}

namespace {

/// The options, and which of them were given.
struct parsed_options {
    tool_options* options;
    bool has_command = false;
    const char* show_option = nullptr;  ///< one that only "show" has
    const char* merge_option = nullptr; ///< one that only "merge" has
};

} // namespace

static void set_functions(parsed_options* parsed, const char*) {
    parsed->options->form = show_form::functions;
    parsed->show_option = "-functions";
}

static void set_json(parsed_options* parsed, const char*) {
    parsed->options->form = show_form::json;
    parsed->show_option = "-json";
}

static void set_output(parsed_options* parsed, const char* value) {
    if (!parsed->options->output.empty())
        tool_error("option -o is given twice; name one profile to write");
    parsed->options->output = value;
    parsed->merge_option = "-o";
}

static void set_newest(parsed_options* parsed, const char*) {
    parsed->options->newest = true;
    parsed->merge_option = "-newest";
}

static void add_spi(parsed_options* parsed, const char* value) {
    parsed->options->spi.emplace_back(value);
}

/// With what the message for a missing value names.
static const option_row<parsed_options*> option_table[] = {
    {"-functions", set_functions, false, nullptr},
    {"-json", set_json, false, nullptr},
    {"-o", set_output, true, "a name"},
    {"-newest", set_newest, false, nullptr},
    {"-spi", add_spi, true, "a file name"},
};

static bool take_command(std::string_view word, tool_options* options) {
    static constexpr std::pair<std::string_view, tool_command> commands[] = {
        {"show", tool_command::show}, {"check", tool_command::check}, {"merge", tool_command::merge}};
    for (const auto& [name, command] : commands) {
        if (name != word)
            continue;
        options->command = command;
        return true;
    }
    return false;
}

/// Takes the name of the command, then those of profiles.
static void take_name(const char* name, parsed_options* parsed) {
    if (parsed->has_command)
        parsed->options->profiles.emplace_back(name);
    else if (!(parsed->has_command = take_command(name, parsed->options)))
        tool_error("unknown command " + printable(name) + "; there are show, check and merge");
}

static void check_options(const parsed_options& parsed) {
    const tool_options& options = *parsed.options;
    if (!parsed.has_command)
        tool_error(
            "no command given: vexcov-profile COMMAND [options] [profiles] (see vexcov-profile -help)");
    const bool merges = options.command == tool_command::merge;
    if (parsed.show_option && options.command != tool_command::show)
        tool_error(std::string("option ") + parsed.show_option +
                   " is for the command show only; leave it out");
    if (parsed.merge_option && !merges)
        tool_error(std::string("option ") + parsed.merge_option +
                   " is for the command merge only; leave it out");
    if (!options.spi.empty() && options.command == tool_command::show)
        tool_error("option -spi is for the commands check and merge only; leave it out");
    if (!merges && (options.profiles.size() > 1 || options.spi.size() > 1))
        tool_error("only merge takes more than one profile (see vexcov-profile -help)");
    if (merges && (options.output.empty() || options.profiles.empty()))
        tool_error("merge needs -o NAME and the profiles to merge (see vexcov-profile -help)");
}

void parse_tool_options(int argc, char** argv, tool_options* options) {
    parsed_options parsed = {options};
    read_arguments({"vexcov-profile", print_usage, print_formats}, option_table, argc, argv, &parsed,
                   [&](const char* name) { take_name(name, &parsed); });
    check_options(parsed);
    if (options->profiles.empty())
        options->profiles.emplace_back("pgopti.dpi");
}

std::string static_profile_beside(const std::string& dynamic_profile) {
    const bool ends_so = dynamic_profile.ends_with(".dpi");
    return dynamic_profile.substr(0, dynamic_profile.size() - (ends_so ? 4 : 0)) + ".spi";
}
