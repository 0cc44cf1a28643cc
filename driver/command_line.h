// The command line.
#pragma once

/// Reads the options into the run configuration (run_config.h) and the colour table, and prints the banner.
/// Unknown arguments are skipped. Returns false when the usage text is to be shown: for a help option, and
/// for some options without their value. Other options without their value end the run with a message on
/// standard error and exit status 1.
bool bParseCommandLine(int argc, char** argv);
