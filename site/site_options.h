// The command line of vexcov-site.
#pragma once

#include "inputs/coverage_options.h"

#include <string>

struct site_options : coverage_options {
    std::string directory = "coverage-site"; ///< that the site is written to
    std::string title;                       ///< of the start page; the project by default
    std::string baseline;                    ///< figures of an older run, as vexcov-export json writes them
    std::string diff;                        ///< unified diff whose lines are to be shown
    std::string style_sheet;                 ///< copied beside the site's own, and read behind it
};

/// Reads the arguments. -help and -version end the run with status 0, what cannot be understood with a
/// message and status 1.
void parse_site_options(int argc, char** argv, site_options* options);
