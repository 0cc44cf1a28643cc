// Command line of vexcov-run: "vexcov-run [options] -- COMMAND [ARGUMENT]...".
#pragma once

#include <string>
#include <vector>

/// Who compiled the programs that the tests run.
enum class compiler { unknown, clang, gcc };

/// What the command line asks for; fixed before the command is started.
struct run_options {
    compiler compiled_by = compiler::unknown; ///< unknown: the one whose counts the run leaves
    std::vector<std::string> objects;         ///< where programs and notes are looked for; never empty
    std::string folder = ".";                 ///< of the report; made if need be
    std::string root = ".";                   ///< of the sources; an absolute path after parsing
    bool all_sources = false;                 ///< sources outside the root are in the report, too
    std::string gcov;                         ///< empty: the one of the compiler
    bool keep = false;                        ///< the profiles stay
    std::string spi_file; ///< the static one that stays; empty: in the folder of the report
    std::string dpi_file; ///< the dynamic one that stays; empty: in the folder of the report

    // Options of vexcov with their values. Names of files are absolute.
    std::vector<std::string> for_report;
    std::vector<std::string> inputs; ///< files that the report reads besides; all are among for_report
    std::vector<std::string>
        for_functions;             ///< of the function exports, which vexcov makes instead of a report
    bool function_exports = false; ///< some are asked for

    char** command = nullptr; ///< of the argument vector: the command and its arguments, ends in a null
};

/// Reads the argument vector into `options`. -help and -version print to standard output and end the run with
/// status 0; anything that cannot be understood ends it with a message and status 1.
void parse_run_options(int argc, char** argv, run_options* options);
