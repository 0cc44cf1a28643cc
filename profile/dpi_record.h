// One record of the dynamic profile: the only place that knows the two record layouts.
//
// A record is its bytes as stored in the file. The accessors read the layout that is_pgo_64 selects and trust
// the record: only records that DPI_record_is_sound accepted in that layout may be given to them.
#pragma once

#include "profile/dpi_format.h"

#include <cstddef>
#include <cstdint>

/// Layout of the record that was opened last. Deliberate: there is one flag for the whole process, so a main
/// and a reference profile must have the same counter width; only counts of one width can be compared.
extern bool is_pgo_64;

/// The layout that is_pgo_64 selects.
const PGOPTI_RECORD_LAYOUT& DPI_layout();

/// True when the areas of a record of `size` bytes lie within it in the current layout and every
/// entry-counter index names one of its counters.
bool DPI_record_is_sound(const unsigned char* record, std::size_t size);

/// Header fields.
std::uint32_t DPI_record_size_get(const unsigned char* record);
std::uint32_t DPI_routine_count_get(const unsigned char* record);
std::uint32_t DPI_block_count_get(const unsigned char* record);
std::uint32_t DPI_flag_word_get(const unsigned char* record);
std::uint32_t DPI_word_get(const unsigned char* record);
std::uint8_t DPI_version_get(const unsigned char* record);
/// True when the record carries the positions of its blocks.
bool DPI_has_line_info(const unsigned char* record);

/// Offsets of names in the file.
std::uint64_t DPI_file_name_get(const unsigned char* record);
std::uint64_t DPI_key_func_name_get(const unsigned char* record);
std::uint64_t DPI_vtbl_name_get(const unsigned char* record);
/// Offset of routine name `i`, i < DPI_routine_count_get.
std::uint64_t DPI_routine_name_get(const unsigned char* record, std::uint32_t i);

/// Counter `i` at single precision; a 64-bit integer is rounded, which loses low digits above 2^24.
float DPI_counter_get(const unsigned char* record, std::uint32_t i);

/// The counter that holds the entry count of routine `i`, at single precision.
float DPI_entry_counter_get(const unsigned char* record, std::uint32_t i);

/// Line and column of block `i` as stored. Only with DPI_has_line_info.
struct DPI_POSITION {
    std::uint32_t line;
    std::uint32_t column;
};
DPI_POSITION DPI_block_position_get(const unsigned char* record, std::uint32_t i);

/// Number of blocks with a count of at least 1.
std::uint32_t DPI_covered_blocks(const unsigned char* record);

/// Sum of the routines' entry counts; each addition is done in double precision and truncated.
std::uint64_t DPI_entry_frequency(const unsigned char* record);

/// A count truncated toward zero. Not a number and negative values give 0, values that 64 bits cannot hold
/// the largest single-precision number that they can.
std::uint64_t DPI_count_to_u64(double count);
