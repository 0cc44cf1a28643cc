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
// Blocks of one line form a group in which INSTANCE counts from 1. Names are written as they are.
#pragma once

#include "analysis/block_sink.h"

#include <cstdio>

/// Writes both exports, to outtxt and outxml, while the source files are analysed; one of them may be null.
extern const block_sink block_export;

/// True when `a` lies before `b`: by line, then column.
bool block_compare(const blocks& a, const blocks& b);

/// Orders the blocks by position; blocks at one position stand in reverse order of their entry.
void sort_blocks(block_buffer& buffer);

/// Write sorted blocks. Nothing is written for none. Return true.
bool printTXT_bcov_full(std::FILE* stream, const block_buffer& buffer);
bool printXML_bcov_full(std::FILE* stream, const block_buffer& buffer);
