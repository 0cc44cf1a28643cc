// The block coverage exports: every feasible block of every function with its position and count.
//
//   text: file - NAME                        XML: <MODULE name="NAME">
//         function - NAME<tab>FREQ                <FUNCTION name="NAME" freq="FREQ">
//         INSTANCE<tab>LINE<tab>COLUMN<tab>COUNT  <BLOCK line="LINE" col="COLUMN">
//         ...                                     <INSTANCE id="INSTANCE" freq="COUNT">
//                                                 </INSTANCE>
//                                                 ...
//                                                 </BLOCK>
//                                                 </FUNCTION>
//                                                 </MODULE>
//
// Blocks of one line form a group in which INSTANCE counts from 1. Names are written as they are. The heads
// and tails of modules and functions are written by markBlocks.
#pragma once

#include <cstdint>
#include <cstdio>
#include <vector>

/// One block of the function being written.
struct blocks {
    std::int32_t line;
    std::int32_t column;
    double count; ///< executions
};

/// The blocks of one function. Entered from the function's last block to its first; sort_blocks puts them in
/// order.
using block_buffer = std::vector<blocks>;

/// Enters one block.
void add_block_cov(std::int32_t line, std::int32_t column, block_buffer& buffer, double count);

/// True when `a` lies before `b`: by line, then column.
bool block_compare(const blocks& a, const blocks& b);

/// Orders the blocks by position; blocks at one position stand in reverse order of their entry.
void sort_blocks(block_buffer& buffer);

/// Write sorted blocks. Nothing is written for none. Return true.
bool printTXT_bcov_full(std::FILE* stream, const block_buffer& buffer);
bool printXML_bcov_full(std::FILE* stream, const block_buffer& buffer);
