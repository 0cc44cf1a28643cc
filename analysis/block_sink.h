// Where the blocks of a source file go while it is analysed.
//
// The block exports show every block with its own count, which the analysis does not keep. It hands them over
// function by function instead, so that nothing of them outlives its function.
#pragma once

#include <cstdint>
#include <vector>

/// One block of the function at hand.
struct blocks {
    std::int32_t line;
    std::int32_t column;
    double count; ///< executions
};

/// The feasible blocks of one function, entered from its last block to its first.
using block_buffer = std::vector<blocks>;

/// Enters one block.
inline void add_block_cov(std::int32_t line, std::int32_t column, block_buffer& buffer, double count) {
    buffer.push_back({line, column, count});
}

/// What takes the blocks, in this order: a file begins; each of its functions begins and ends, or is missing
/// from the profile; the file ends. `name` is the function's display name.
struct block_sink {
    void (*file_begins)(const char* path);
    void (*function_begins)(const char* name, std::uint64_t entry_count);
    void (*function_ends)(block_buffer& buffer); ///< may put the blocks in another order
    void (*function_missing)(const char* name, std::int32_t line);
    void (*file_ends)();
};
