// The options that every companion of vexcov takes, with the meaning and the defaults that vexcov gives them:
//
//   -spi FILE  -dpi FILE  -ref FILE  -comp FILE  -prj NAME  -nopartial
//   -onelinedsbl TEXT  -beginblkdsbl TEXT  -endblkdsbl TEXT
//
// and -root DIR, below which source files get relative names. A companion derives the record of its options
// from coverage_options and reads its arguments with read_coverage_arguments.
#pragma once

#include "common/companion.h"

#include <array>
#include <cstddef>
#include <string>

/// What is to be read. The texts of infeasible-code markers go to the run configuration (run_config.h), where
/// those of the component list go, too.
struct coverage_options {
    std::string spi_file = "pgopti.spi"; ///< static profile
    std::string dpi_file = "pgopti.dpi"; ///< dynamic profile
    std::string reference;               ///< dynamic profile of the reference run; only with_reference
    bool with_reference = false;         ///< differential mode
    std::string components;              ///< component list; only with_components
    bool with_components = false;
    std::string project; ///< name of the project; empty for none
    std::string root;    ///< directory that names are relative to; empty: the working directory
    bool no_partial = false;
    bool also_whole = false; ///< no option: in differential mode every file comes without the reference, too
};

/// Number of the rows below.
constexpr std::size_t kCoverageRows = 10;

/// Takes the value of shared row `Row`.
void set_coverage_option(std::size_t row, coverage_options* options, const char* value);

/// What row `row` is: its name, whether it takes a value, and what is said when that is missing.
struct coverage_row {
    const char* name;
    bool takes_value;
    const char* missing;
};
extern const coverage_row coverage_rows[kCoverageRows];

template <typename Options, std::size_t... Row>
void add_coverage_rows(option_row<Options*>* table, std::index_sequence<Row...>) {
    ((table[Row] = {coverage_rows[Row].name,
                    [](Options* options, const char* value) { set_coverage_option(Row, options, value); },
                    coverage_rows[Row].takes_value, coverage_rows[Row].missing}),
     ...);
}

/// The rows of a companion, `own`, behind those of coverage_options.
template <typename Options, std::size_t N>
std::array<option_row<Options*>, kCoverageRows + N> with_coverage_rows(const option_row<Options*> (&own)[N]) {
    std::array<option_row<Options*>, kCoverageRows + N> table = {};
    add_coverage_rows<Options>(table.data(), std::make_index_sequence<kCoverageRows>());
    for (std::size_t i = 0; i < N; ++i)
        table[kCoverageRows + i] = own[i];
    return table;
}

/// Prints the lines of a usage text about these options.
void print_coverage_usage();

/// What the options change in each other, once all arguments were read; this is said.
void check_coverage_options(coverage_options* options);

/// Reads the arguments of a companion whose own options are `own`; see read_arguments.
template <typename Options, std::size_t N, typename Take>
void read_coverage_arguments(const companion& program, const option_row<Options*> (&own)[N], int argc,
                             char** argv, Options* options, Take take_name) {
    const auto table = with_coverage_rows(own);
    read_arguments(program, std::span<const option_row<Options*>>(table), argc, argv, options, take_name);
    check_coverage_options(options);
}
