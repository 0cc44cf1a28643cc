// A whole run of vexcov-run.
#pragma once

/// Parses the command line, runs the command, imports what its programs counted and writes the report. Ends
/// the run with the command's status; where that is 0 and there is no report, with a message and 1. main
/// calls it through run_program, after note_signals.
void run_tests(int argc, char** argv);
