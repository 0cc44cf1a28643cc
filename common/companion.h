// What the companions of vexcov have in common on the command line: the walk over the arguments, -help and
// -version, and their messages.
#pragma once

#include "common/option_table.h"

#include <cstddef>
#include <span>

/// A program.
struct companion {
    const char* name;        ///< "vexcov-export"
    void (*print_usage)();   ///< to standard output
    void (*print_formats)(); ///< the lines of -version behind the first: what is read and written
};

/// "-help" and "-version" print to standard output and end the run with status 0; for any other argument
/// that is no option, nothing happens and false is the result.
bool take_common_option(const companion& program, const char* argument);

/// Ends the run: for an option that the program does not have, and for one without its value.
[[noreturn]] void refuse_option(const companion& program, const char* argument);
[[noreturn]] void refuse_missing_value(const char* option, const char* missing);

/// Ends the run where a file, directory or program has an empty name: mostly a variable of a script that is
/// not set. `missing` is what the option needs, and `value` null for one that takes none.
void check_value(const char* option, const char* missing, const char* value);

/// Hands the option on. A table whose rows take a text in front of the value is given the option's name.
template <typename Options>
void apply_option(const option_row<Options*>& row, Options* options, const char* value) {
    row.apply(options, value);
}
template <typename Options>
void apply_option(const option_row<Options*, const char*>& row, Options* options, const char* value) {
    row.apply(options, row.name, value);
}

/// Reads the arguments into `options`, whose options begin with one or two dashes; `take_name(name)` is given
/// every argument that is none. Anything that cannot be understood ends the run with a message and status 1.
template <typename Options, typename Take, typename... Into>
void read_arguments(const companion& program, std::span<const option_row<Options*, Into...>> table, int argc,
                    char** argv, Options* options, Take take_name) {
    for (argument_reader arguments(table, argc, argv, {.two_dashes = true}); arguments.next();) {
        switch (arguments.kind()) {
        case argument_kind::option:
            check_value(arguments.option().name, arguments.option().missing, arguments.value());
            apply_option(arguments.option(), options, arguments.value());
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
}

/// The same with a table that is an array.
template <typename Options, std::size_t N, typename Take, typename... Into>
void read_arguments(const companion& program, const option_row<Options*, Into...> (&table)[N], int argc,
                    char** argv, Options* options, Take take_name) {
    read_arguments(program, std::span<const option_row<Options*, Into...>>(table), argc, argv, options,
                   take_name);
}
