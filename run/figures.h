// The figures of the report's summary page.
#pragma once

#include <cstdint>
#include <cstdio>

struct part_figures {
    std::int64_t total;
    std::int64_t covered; ///< with a reference profile: missed
};

struct report_figures {
    bool made; ///< there is a report, and these are its figures
    bool differential;
    part_figures files, functions, blocks;
};

/// Those of the report that this process has written.
report_figures figures_of_report();

/// Prints them as a table, with the numbers as on the page.
void print_figures(std::FILE* stream, const report_figures& figures);
