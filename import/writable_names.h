// Names that the static profile can hold: its fields end at white space.
#pragma once

#include "profile/profile_content.h"

#include <cstdint>

struct replaced_names {
    std::uint64_t files = 0;     ///< source files with another name than they have
    std::uint64_t functions = 0; ///< likewise
};

/// Puts "_" for each blank and control character in the names of `profile` and "(anonymous)" for an empty
/// one; names that were different stay so, by "_2" and so on behind them. Routines stay in the order of their
/// keys.
replaced_names make_names_writable(PGOPTI_PROFILE* profile);

/// Tells in one warning of what was replaced, if anything was.
void warn_of_replaced_names(const replaced_names& replaced);
