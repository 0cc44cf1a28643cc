// A whole run of vexcov: its phases in their order.
#pragma once

/// Parses the command line, opens the profiles and exports, and writes the report or the function exports.
/// Ends the run through pgt_Exit when a phase fails; main calls it through run_program.
void run_report(int argc, char** argv);
