// What the companions of vexcov have in common on the command line: the walk over the arguments, -help and
// -version, and their messages.
#pragma once

#include "common/option_table.h"
#include "inputs/coverage_options.h"

#include <array>
#include <cstddef>
#include <span>

/// A program.
struct companion {
    const char* name;      ///< "vexcov-export"
    void (*print_usage)(); ///< to standard output
};

/// "-help" and "-version" print to standard output and end the run with status 0; for any other argument
/// that is no option, nothing happens and false is the result.
bool take_common_option(const companion& program, const char* argument);

/// Ends the run: for an option that the program does not have, and for one without its value.
[[noreturn]] void refuse_option(const companion& program, const char* argument);
[[noreturn]] void refuse_missing_value(const char* option, const char* missing);

/// Reads the arguments into `options`, whose options begin with one or two dashes; `take_name(name)` is given
/// every argument that is none. Anything that cannot be understood ends the run with a message and status 1.
template <typename Options, std::size_t N, typename Take>
void read_arguments(const companion& program, const std::array<option_row<Options*>, N>& table, int argc,
                    char** argv, Options* options, Take take_name) {
    const std::span<const option_row<Options*>> rows(table);
    for (argument_reader arguments(rows, argc, argv, {.two_dashes = true}); arguments.next();) {
        switch (arguments.kind()) {
        case argument_kind::option:
            arguments.option().apply(options, arguments.value());
            break;
        case argument_kind::missing_value:
            refuse_missing_value(arguments.option().name, arguments.option().missing);
        case argument_kind::unknown:
            if (!take_common_option(program, arguments.text()))
                refuse_option(program, arguments.text());
            break;
        case argument_kind::positional:
            take_name(arguments.text());
        }
    }
    check_coverage_options(options);
}
