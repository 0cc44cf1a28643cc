// Command line of vexcov-import: "vexcov-import FORMAT [options] [inputs]".
#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// What the inputs are.
enum class import_format { clang, gcc, lcov };

/// What the command line asks for; fixed before the first input is read.
struct import_options {
    import_format format = import_format::clang;
    std::string spi_file = "pgopti.spi"; ///< static profile to write
    std::string dpi_file = "pgopti.dpi"; ///< dynamic profile to write
    std::string root;                    ///< source names below it become relative; empty: none do
    bool all_sources = false;            ///< source files outside the root are read, too
    std::uint32_t runs = 1;              ///< number of runs that the profile stands for, at least 1
    bool instances = false;              ///< the instances of a template stay functions of their own
    std::vector<std::string>
        inputs; ///< files and directories to read, merged in this order; none: what the format says
    std::vector<std::string>
        objects; ///< what was compiled, wherever the inputs lie: of clang's programs, of GCC's notes; what
                 ///< older runs left there is not read. On no command line of the importer

    // Of the format gcc.
    std::string gcov;                 ///< program to run; empty: the one of the compiler
    unsigned jobs = 0;                ///< runs of it at a time; 0: one for each processor
    const char* gcc_option = nullptr; ///< one of these options that was given
};

/// The inputs as messages name them: "app.info and 2 more".
std::string shown_inputs(const import_options& options);

/// Prints the versions of the formats that are read of clang and of GCC to standard output, without those
/// that no run of a program leaves, if asked.
void print_compiler_formats(bool of_runs_only);

/// Reads the argument vector into `options`. -help and -version print to standard output and end the run with
/// status 0; anything that cannot be understood ends it with a message and status 1.
void parse_import_options(int argc, char** argv, import_options* options);
