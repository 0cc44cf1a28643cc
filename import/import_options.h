// Command line of vexcov-import: "vexcov-import clang [options] [files]".
#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// What the command line asks for; fixed before the first input is read.
struct import_options {
    std::string spi_file = "pgopti.spi"; ///< static profile to write
    std::string dpi_file = "pgopti.dpi"; ///< dynamic profile to write
    std::string root;                    ///< source names below it become relative; empty: none do
    std::uint32_t runs = 1;              ///< number of runs that the profile stands for, at least 1
    std::vector<std::string> inputs; ///< files and directories to read; none: an export from standard input
};

/// Reads the argument vector into `options`. -help and -version print to standard output and end the run with
/// status 0; anything that cannot be understood ends it with a message and status 1.
void parse_import_options(int argc, char** argv, import_options* options);
