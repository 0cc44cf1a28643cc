// Command line of vexcov-export: "vexcov-export FORMAT [options] [-o FILE]" and "-FORMAT FILE" for more.
#pragma once

#include "changes/unified_diff.h"
#include "inputs/coverage_options.h"

#include <cstdint>
#include <string>
#include <vector>

enum class exchange_format { cobertura, lcov, sonar, json, markdown, github, text };

constexpr std::size_t kExchangeFormats = 7;

/// One output that is asked for.
struct exchange_output {
    exchange_format format;
    std::string file; ///< empty for standard output
};

/// By what the rows of the format text are sorted.
enum class row_order { name, blocks, functions, lines, uncovered };

/// What the command line asks for; fixed before the first input is read.
struct exchange_options : coverage_options {
    std::vector<exchange_output> outputs; ///< at least one; each format once, standard output once
    std::uint64_t timestamp = 0;          ///< seconds since 1970, of the format cobertura
    std::uint64_t split = 0;              ///< most bytes of a file, of the format cobertura; 0: no parts
    std::string diff;                     ///< of the format github: a unified diff; empty for none
    int strip = kDetectPrefix;            ///< folders that the names in it lose
    bool functions = false;               ///< of the format text: a row for each function
    row_order order = row_order::name;

    // While reading.
    std::string first_file;                           ///< of -o
    const char* format_option[kExchangeFormats] = {}; ///< an option of one format that was given
};

/// Reads the argument vector into `options`. -help and -version print to standard output and end the run with
/// status 0; anything that cannot be understood ends it with a message and status 1.
void parse_exchange_options(int argc, char** argv, exchange_options* options);
