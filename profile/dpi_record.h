// One record of the dynamic profile: the only place that knows how its areas lie.
//
// The accessors trust the record: only one that DPI_record_is_sound accepted may be given to them. Header
// fields may be asked for as soon as PGOPTI_RECORD_HEAD_SIZE bytes are there.
#pragma once

#include "profile/dpi_format.h"

#include <cstddef>
#include <cstdint>

/// The bytes of a record as stored in the file, and the layout in which they are read. A view: the bytes
/// belong to somebody else. Without bytes it stands for a record that is not there.
struct DPI_RECORD {
    const unsigned char* bytes = nullptr;
    const PGOPTI_RECORD_LAYOUT* layout = nullptr;
};

/// The layout that the flags in the first byte of a record name.
const PGOPTI_RECORD_LAYOUT& DPI_layout_of(const unsigned char* record);

/// True when the areas of a record of `size` bytes lie within it in its layout and every entry-counter index
/// names one of its counters.
bool DPI_record_is_sound(DPI_RECORD record, std::size_t size);

/// Where the areas of a record lie, for those who take them as a whole.
struct DPI_AREAS {
    std::uint64_t counter_count;        ///< of all three groups
    const unsigned char* counters;      ///< W bytes each
    const unsigned char* values;        ///< PGOPTI_VALUE_AREA_SIZE bytes for each counter of the third group
    const unsigned char* routine_names; ///< offsets of W bytes
    const unsigned char* entry_indices; ///< 4 bytes each
    const unsigned char* positions;     ///< 8 bytes for each block, with DPI_has_line_info
    const unsigned char* end;
};
DPI_AREAS DPI_areas_get(DPI_RECORD record);

/// Header fields.
std::uint32_t DPI_record_size_get(DPI_RECORD record);
std::uint32_t DPI_routine_count_get(DPI_RECORD record);
std::uint32_t DPI_block_count_get(DPI_RECORD record);
std::uint32_t DPI_flag_word_get(DPI_RECORD record);
std::uint32_t DPI_word_get(DPI_RECORD record);
std::uint8_t DPI_version_get(DPI_RECORD record);
/// True when the record carries the positions of its blocks.
bool DPI_has_line_info(DPI_RECORD record);

/// Offsets of names in the file.
std::uint64_t DPI_file_name_get(DPI_RECORD record);
std::uint64_t DPI_key_func_name_get(DPI_RECORD record);
std::uint64_t DPI_vtbl_name_get(DPI_RECORD record);
/// Offset of routine name `i`, i < DPI_routine_count_get.
std::uint64_t DPI_routine_name_get(DPI_RECORD record, std::uint32_t i);

/// Counter `i` at single precision; a 64-bit integer is rounded, which loses low digits above 2^24.
float DPI_counter_get(DPI_RECORD record, std::uint32_t i);

/// Counter `i` without loss: a 64-bit integer as stored, a single-precision number as DPI_count_to_u64 has
/// it.
std::uint64_t DPI_exact_counter_get(DPI_RECORD record, std::uint32_t i);

/// The counter that holds the entry count of routine `i`, at single precision.
float DPI_entry_counter_get(DPI_RECORD record, std::uint32_t i);

/// Line and column of block `i` as stored. Only with DPI_has_line_info.
struct DPI_POSITION {
    std::uint32_t line;
    std::uint32_t column;
};
DPI_POSITION DPI_block_position_get(DPI_RECORD record, std::uint32_t i);

/// Number of blocks with a count of at least 1.
std::uint32_t DPI_covered_blocks(DPI_RECORD record);

/// Sum of the routines' entry counts; each addition is done in double precision and truncated.
std::uint64_t DPI_entry_frequency(DPI_RECORD record);

/// Sum of the routines' entry counts, taken by DPI_exact_counter_get; at most all ones.
std::uint64_t DPI_exact_entry_count(DPI_RECORD record);

/// A count truncated toward zero. Not a number and negative values give 0, values that 64 bits cannot hold
/// the largest single-precision number that they can.
std::uint64_t DPI_count_to_u64(double count);
