#include "profile/dpi_record.h"

#include "common/little_endian.h"

#include <bit>

/// A field of W bytes.
static std::uint64_t read_word(DPI_RECORD record, std::uint64_t offset) {
    return record.layout->is_pgo_64() ? read_u64(record.bytes + offset) : read_u32(record.bytes + offset);
}

/// A 4-byte field.
static std::uint32_t read_field(DPI_RECORD record, std::uint64_t offset) {
    return read_u32(record.bytes + offset);
}

static std::uint64_t pad(std::uint64_t bytes, std::uint64_t width) {
    return (bytes + width - 1) / width * width;
}

namespace {

/// Where the areas of a record start, in bytes from its first byte. Sums of 32-bit counts times small sizes:
/// they cannot overflow 64 bits.
struct record_areas {
    std::uint64_t counter_count;
    std::uint64_t counters;
    std::uint64_t values;
    std::uint64_t routine_names;
    std::uint64_t entry_indices;
    std::uint64_t positions;
    std::uint64_t end;

    explicit record_areas(DPI_RECORD record) {
        const PGOPTI_RECORD_LAYOUT& layout = *record.layout;
        const std::uint64_t routines = read_field(record, layout.routines);
        const std::uint64_t blocks = read_field(record, layout.blocks);
        const std::uint64_t third_group = read_field(record, layout.third_group);
        counter_count = blocks + read_field(record, layout.second_group) + third_group;
        counters = layout.header_size;
        values = counters + counter_count * layout.width;
        routine_names = values + third_group * PGOPTI_VALUE_AREA_SIZE;
        entry_indices = routine_names + routines * layout.width;
        positions = entry_indices + pad(routines * 4, layout.width);
        end = positions + (DPI_has_line_info(record) ? blocks * 8 : 0);
    }
};

} // namespace

/// Index of the counter that holds the entry count of routine `i`.
static std::uint32_t entry_index(DPI_RECORD record, std::uint32_t i) {
    return read_field(record, record_areas(record).entry_indices + std::uint64_t{i} * 4);
}

const PGOPTI_RECORD_LAYOUT& DPI_layout_of(const unsigned char* record) {
    return (record[0] & PGOPTI_FLAG_64) != 0 ? PGOPTI_LAYOUT_64 : PGOPTI_LAYOUT_32;
}

bool DPI_record_is_sound(DPI_RECORD record, std::size_t size) {
    if (size < record.layout->header_size)
        return false;
    const record_areas areas(record);
    if (areas.end > size)
        return false;
    const std::uint32_t routines = DPI_routine_count_get(record);
    for (std::uint32_t i = 0; i < routines; ++i)
        if (read_field(record, areas.entry_indices + std::uint64_t{i} * 4) >= areas.counter_count)
            return false;
    return true;
}

DPI_AREAS DPI_areas_get(DPI_RECORD record) {
    const record_areas areas(record);
    const unsigned char* const start = record.bytes;
    return {areas.counter_count,
            start + areas.counters,
            start + areas.values,
            start + areas.routine_names,
            start + areas.entry_indices,
            start + areas.positions,
            start + areas.end};
}

std::uint32_t DPI_record_size_get(DPI_RECORD record) {
    return read_field(record, record.layout->size);
}

std::uint32_t DPI_routine_count_get(DPI_RECORD record) {
    return read_field(record, record.layout->routines);
}

std::uint32_t DPI_block_count_get(DPI_RECORD record) {
    return read_field(record, record.layout->blocks);
}

std::uint32_t DPI_flag_word_get(DPI_RECORD record) {
    return read_field(record, record.layout->flag_word);
}

std::uint32_t DPI_word_get(DPI_RECORD record) {
    return read_field(record, record.layout->word);
}

std::uint8_t DPI_version_get(DPI_RECORD record) {
    return record.bytes[1];
}

bool DPI_has_line_info(DPI_RECORD record) {
    return (record.bytes[0] & PGOPTI_FLAG_LINES) != 0;
}

std::uint64_t DPI_file_name_get(DPI_RECORD record) {
    return read_word(record, record.layout->file_name);
}

std::uint64_t DPI_key_func_name_get(DPI_RECORD record) {
    return read_word(record, record.layout->key_func_name);
}

std::uint64_t DPI_vtbl_name_get(DPI_RECORD record) {
    return read_word(record, record.layout->vtbl_name);
}

std::uint64_t DPI_routine_name_get(DPI_RECORD record, std::uint32_t i) {
    return read_word(record, record_areas(record).routine_names + std::uint64_t{i} * record.layout->width);
}

static std::uint64_t stored_counter(DPI_RECORD record, std::uint32_t i) {
    return read_word(record, record.layout->header_size + std::uint64_t{i} * record.layout->width);
}

static float narrow_counter(std::uint64_t stored) {
    return std::bit_cast<float>(static_cast<std::uint32_t>(stored));
}

float DPI_counter_get(DPI_RECORD record, std::uint32_t i) {
    const std::uint64_t stored = stored_counter(record, i);
    // Deliberate: counts are taken at single precision in both layouts, so that a program counted with
    // either width gives the same report.
    return record.layout->is_pgo_64() ? static_cast<float>(stored) : narrow_counter(stored);
}

std::uint64_t DPI_exact_counter_get(DPI_RECORD record, std::uint32_t i) {
    const std::uint64_t stored = stored_counter(record, i);
    return record.layout->is_pgo_64() ? stored
                                      : DPI_count_to_u64(static_cast<double>(narrow_counter(stored)));
}

float DPI_entry_counter_get(DPI_RECORD record, std::uint32_t i) {
    return DPI_counter_get(record, entry_index(record, i));
}

DPI_POSITION DPI_block_position_get(DPI_RECORD record, std::uint32_t i) {
    const std::uint64_t position = record_areas(record).positions + std::uint64_t{i} * 8;
    return {read_field(record, position), read_field(record, position + 4)};
}

std::uint32_t DPI_covered_blocks(DPI_RECORD record) {
    std::uint32_t covered = 0;
    const std::uint32_t blocks = DPI_block_count_get(record);
    for (std::uint32_t i = 0; i < blocks; ++i)
        if (DPI_count_to_u64(static_cast<double>(DPI_counter_get(record, i))) != 0)
            ++covered;
    return covered;
}

std::uint64_t DPI_entry_frequency(DPI_RECORD record) {
    std::uint64_t frequency = 0;
    const std::uint32_t routines = DPI_routine_count_get(record);
    for (std::uint32_t i = 0; i < routines; ++i)
        frequency = DPI_count_to_u64(static_cast<double>(frequency) +
                                     static_cast<double>(DPI_entry_counter_get(record, i)));
    return frequency;
}

std::uint64_t DPI_exact_entry_count(DPI_RECORD record) {
    std::uint64_t sum = 0;
    const std::uint32_t routines = DPI_routine_count_get(record);
    for (std::uint32_t i = 0; i < routines; ++i) {
        const std::uint64_t count = DPI_exact_counter_get(record, entry_index(record, i));
        sum = count > UINT64_MAX - sum ? UINT64_MAX : sum + count;
    }
    return sum;
}

std::uint64_t DPI_count_to_u64(double count) {
    constexpr double kTwoTo64 = 18446744073709551616.0;
    constexpr std::uint64_t kLargest = 0xFFFFFF0000000000; // the largest single-precision number below 2^64
    if (!(count > 0.0))
        return 0;
    return count < kTwoTo64 ? static_cast<std::uint64_t>(count) : kLargest;
}
