// What the two profiles of a program hold, for writing them.
#pragma once

#include "profile/dpi_record.h"

#include <cstdint>
#include <string>
#include <vector>

/// A basic block with its count.
struct PGOPTI_BLOCK {
    DPI_POSITION position;
    std::uint64_t count;
};

/// One routine of the program.
struct PGOPTI_ROUTINE {
    std::uint32_t file;               ///< index into PGOPTI_PROFILE::files
    std::string name;                 ///< routine name and key function name
    std::uint32_t line;               ///< first line
    std::uint32_t block_count;        ///< number of blocks that every run of the program has
    bool has_record;                  ///< it was called: the dynamic profile has a record of it
    std::vector<PGOPTI_BLOCK> blocks; ///< of its record, at least `block_count`; the first is the entry
};

struct PGOPTI_PROFILE {
    std::vector<std::string> files;       ///< source files
    std::vector<PGOPTI_ROUTINE> routines; ///< ascending by key: file ' name ', as unsigned bytes
    std::uint32_t num_runs = 0;           ///< runs added up in the counts
    std::uint32_t header_word = 0;        ///< of the dynamic profile; carried
    std::string header_text;              ///< likewise; at most 511 bytes, what is beyond is left out
};
