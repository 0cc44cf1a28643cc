// Command line of vexcov-profile: "vexcov-profile COMMAND [options] [profiles]".
#pragma once

#include <string>
#include <vector>

enum class tool_command { show, check, merge };

/// How a profile is shown.
enum class show_form {
    text,      ///< everything, as the writer of test profiles reads it
    functions, ///< a table
    json
};

/// What the command line asks for; fixed before the first profile is read.
struct tool_options {
    tool_command command = tool_command::show;
    std::vector<std::string> profiles; ///< dynamic profiles; without any, pgopti.dpi
    std::vector<std::string> spi;      ///< static profiles; without any, those beside the dynamic ones
    show_form form = show_form::text;
    std::string output;  ///< merge: name of the profiles to write
    bool newest = false; ///< merge: of records that do not agree, the newest profile's counts
};

/// Reads the argument vector into `options`. -help and -version print to standard output and end the run with
/// status 0; anything that cannot be understood ends it with a message and status 1.
void parse_tool_options(int argc, char** argv, tool_options* options);

/// The static profile that belongs to a dynamic one: ".spi" in place of ".dpi", or behind another name.
std::string static_profile_beside(const std::string& dynamic_profile);
