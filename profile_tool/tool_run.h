// A whole run of vexcov-profile.
#pragma once

/// Parses the command line and does what its command asks for. Ends with status 1 after a message when
/// something cannot be read or written, and with 2 when "check" has found something. main calls it through
/// run_program.
void run_profile_tool(int argc, char** argv);
