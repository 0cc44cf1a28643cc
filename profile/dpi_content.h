// What a record of the dynamic profile holds, apart from the layout it is stored in: for whoever changes or
// makes records.
#pragma once

#include "profile/dpi_record.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

/// Header fields that nothing here looks at; they belong to the instrumentation.
enum DPI_CARRIED_FIELD {
    DPI_CARRIED_TAG, ///< the tag word without width, line information and version
    DPI_CARRIED_WORD,
    DPI_CARRIED_FLAG_WORD,
    DPI_CARRIED_ADDRESS,
    DPI_CARRIED_VTBL_ADDRESS,
    DPI_CARRIED_SPARE_4,  ///< of a 64-bit record, the word at offset 4
    DPI_CARRIED_SPARE_36, ///< likewise, at offset 36
    DPI_CARRIED_COUNT
};

/// One record. Names are offsets; what they count from is up to the user of the record.
struct DPI_CONTENT {
    std::array<std::uint64_t, DPI_CARRIED_COUNT> carried = {};
    std::uint64_t file_name = 0;
    std::uint64_t key_func_name = 0;
    std::uint64_t vtbl_name = 0;         ///< 0 for none
    bool has_positions = false;          ///< line information is there, though a record may have no block
    std::uint32_t second_group = 0;      ///< counters of the second group
    std::uint32_t third_group = 0;       ///< likewise, each with a value area
    std::vector<std::uint64_t> counters; ///< the blocks', then those of the two other groups
    std::string values;                  ///< the value areas as they are stored
    std::vector<std::uint64_t> routine_names;
    std::string entry_indices; ///< as they are stored, 4 bytes for each routine name
    std::string positions;     ///< likewise, 8 bytes for each block, if there are any

    std::size_t block_count() const { return counters.size() - second_group - third_group; }
};

/// Largest count up to which a single-precision number holds every whole number.
constexpr std::uint64_t DPI_EXACT_SINGLE = std::uint64_t{1} << 24;

/// Counter `i` of a record as a whole number, infinity and what exceeds 64 bits as all ones. False for a
/// single-precision number that is none: negative, with a fraction, or not a number.
bool DPI_whole_counter_get(const DPI_AREAS& areas, const PGOPTI_RECORD_LAYOUT& layout, std::uint64_t i,
                           std::uint64_t* count);

/// Takes a sound record. False when one of its counters is no whole number; `*content` is of no use then.
bool DPI_decode(DPI_RECORD record, DPI_CONTENT* content);

/// Bytes of the record in `layout`.
std::uint64_t DPI_encoded_size(const DPI_CONTENT& content, const PGOPTI_RECORD_LAYOUT& layout);

/// Appends the record in `layout`, with `behind` at its end, to `*bytes`. Its size must fit in 32 bits and
/// the names in W bytes. The 32-bit layout stores counts at single precision.
void DPI_encode(const DPI_CONTENT& content, const PGOPTI_RECORD_LAYOUT& layout, std::string_view behind,
                std::string* bytes);
