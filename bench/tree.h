// Trees of made-up C sources with both profiles, for measuring.
//
//   FOLDER/src/NN/file_NNNNNNN.c   the sources; with depth in FOLDER/src/NN/d/d/...
//   FOLDER/pgopti.spi              static profile
//   FOLDER/pgopti.dpi              dynamic profile, 64-bit records with positions
//   FOLDER/reference.dpi           dynamic profile of another run, only with reference
//   FOLDER/components.txt          component list, only with patterns
//
// The same sizes always give the same bytes. The profiles are written by hand from the layout in dpi_format.h
// and share no code with the reader.
#pragma once

#include <cstdint>
#include <string>

enum placing_kind {
    PLACE_IN_ORDER,
    PLACE_REVERSED,
    PLACE_AT_ONE_POSITION,
    PLACE_BEYOND_LINE, ///< all on the first line, each in its own column behind the end
    PLACE_BEYOND_FILE, ///< each on its own line behind the end
};

/// What is written. All numbers are counts, unless the comment says otherwise.
struct tree_sizes {
    std::uint64_t files = 10;
    std::uint64_t functions = 100; ///< in each file
    std::uint64_t blocks = 12;     ///< in each function
    std::uint64_t lines = 20;      ///< of each function, with the empty line behind it; at least 6
    std::uint64_t positions = 2; ///< the most on one line; block starts beyond lines x positions share theirs
    std::uint64_t length = 0;    ///< least length of a line of code in bytes
    std::uint64_t folders = 100; ///< over which the files are spread
    std::uint64_t depth = 1;     ///< most folders below each other that files lie in
    std::uint64_t patterns = 0;  ///< in the component list; the last one selects every file
    std::uint64_t flat = 0;      ///< pairs of begin and end markers in each file, one behind the other
    std::uint64_t nested = 0;    ///< pairs of begin and end markers in each file, each inside the one before
    std::uint64_t extra = 0; ///< further records of the dynamic profile, of functions not in the static one
    std::uint64_t shared_file = 0;     ///< bytes of the file name that the further records share
    std::uint64_t shared_function = 0; ///< 0, or bytes of the function name that the further records share
    std::uint64_t highest = 100000;    ///< the highest count of a block
    std::uint64_t missed = 10; ///< of functions, and of their blocks, one in so many did not run; 0: all did
    std::uint64_t twins = 1;   ///< so many functions in turn show the same name and line
    std::uint64_t order =
        0; ///< of the static profile: 0 by name, 1 by line and name, 2 by line, names descend
    std::uint64_t one_line = 0;  ///< 1: all functions of a file are said to be on one line
    std::uint64_t one_name = 0;  ///< 1: all functions of a file have one name, and one record
    std::uint64_t placing = 0;   ///< of the blocks of a function: one of placing_kind
    std::uint64_t reference = 0; ///< 1: with a second dynamic profile
};

/// Writes a tree into `folder`, which is made when it is not there. There must be at least one file,
/// function, block and position. Prints a message and ends the process with status 1 when something cannot be
/// written.
void write_tree(const std::string& folder, const tree_sizes& sizes);
