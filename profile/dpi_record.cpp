#include "profile/dpi_record.h"

#include <cstring>

bool is_pgo_64 = false;

const PGOPTI_RECORD_LAYOUT& DPI_layout() {
    return is_pgo_64 ? PGOPTI_LAYOUT_64 : PGOPTI_LAYOUT_32;
}

static std::uint64_t read_u64(const unsigned char* p) {
    return std::uint64_t{pgopti_Read_U32(p)} | std::uint64_t{pgopti_Read_U32(p + 4)} << 32;
}

/// A field of W bytes.
static std::uint64_t read_word(const unsigned char* p) {
    return is_pgo_64 ? read_u64(p) : pgopti_Read_U32(p);
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
    std::uint64_t routine_names;
    std::uint64_t entry_indices;
    std::uint64_t positions;
    std::uint64_t end;

    explicit record_areas(const unsigned char* record) {
        const PGOPTI_RECORD_LAYOUT& layout = DPI_layout();
        const std::uint64_t routines = pgopti_Read_U32(record + layout.routines);
        const std::uint64_t blocks = pgopti_Read_U32(record + layout.blocks);
        const std::uint64_t third_group = pgopti_Read_U32(record + layout.third_group);
        counter_count = blocks + pgopti_Read_U32(record + layout.second_group) + third_group;
        counters = layout.header_size;
        routine_names = counters + counter_count * layout.width + third_group * PGOPTI_VALUE_AREA_SIZE;
        entry_indices = routine_names + routines * layout.width;
        positions = entry_indices + pad(routines * 4, layout.width);
        end = positions + (DPI_has_line_info(record) ? blocks * 8 : 0);
    }
};

} // namespace

bool DPI_record_is_sound(const unsigned char* record, std::size_t size) {
    const PGOPTI_RECORD_LAYOUT& layout = DPI_layout();
    if (size < layout.header_size)
        return false;
    const record_areas areas(record);
    if (areas.end > size)
        return false;
    const std::uint32_t routines = DPI_routine_count_get(record);
    for (std::uint32_t i = 0; i < routines; ++i)
        if (pgopti_Read_U32(record + areas.entry_indices + std::uint64_t{i} * 4) >= areas.counter_count)
            return false;
    return true;
}

std::uint32_t DPI_record_size_get(const unsigned char* record) {
    return pgopti_Read_U32(record + DPI_layout().size);
}

std::uint32_t DPI_routine_count_get(const unsigned char* record) {
    return pgopti_Read_U32(record + DPI_layout().routines);
}

std::uint32_t DPI_block_count_get(const unsigned char* record) {
    return pgopti_Read_U32(record + DPI_layout().blocks);
}

std::uint32_t DPI_flag_word_get(const unsigned char* record) {
    return pgopti_Read_U32(record + DPI_layout().flag_word);
}

std::uint32_t DPI_word_get(const unsigned char* record) {
    return pgopti_Read_U32(record + DPI_layout().word);
}

std::uint8_t DPI_version_get(const unsigned char* record) {
    return record[1];
}

bool DPI_has_line_info(const unsigned char* record) {
    return (record[0] & PGOPTI_FLAG_LINES) != 0;
}

std::uint64_t DPI_file_name_get(const unsigned char* record) {
    return read_word(record + DPI_layout().file_name);
}

std::uint64_t DPI_key_func_name_get(const unsigned char* record) {
    return read_word(record + DPI_layout().key_func_name);
}

std::uint64_t DPI_vtbl_name_get(const unsigned char* record) {
    return read_word(record + DPI_layout().vtbl_name);
}

std::uint64_t DPI_routine_name_get(const unsigned char* record, std::uint32_t i) {
    return read_word(record + record_areas(record).routine_names + std::uint64_t{i} * DPI_layout().width);
}

float DPI_counter_get(const unsigned char* record, std::uint32_t i) {
    const PGOPTI_RECORD_LAYOUT& layout = DPI_layout();
    const unsigned char* counter = record + layout.header_size + std::uint64_t{i} * layout.width;
    // Deliberate: counts are taken at single precision in both layouts, so that a program counted with
    // either width gives the same report.
    if (is_pgo_64)
        return static_cast<float>(read_u64(counter));
    const std::uint32_t bits = pgopti_Read_U32(counter);
    float value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

float DPI_entry_counter_get(const unsigned char* record, std::uint32_t i) {
    return DPI_counter_get(
        record, pgopti_Read_U32(record + record_areas(record).entry_indices + std::uint64_t{i} * 4));
}

DPI_POSITION DPI_block_position_get(const unsigned char* record, std::uint32_t i) {
    const unsigned char* position = record + record_areas(record).positions + std::uint64_t{i} * 8;
    return {pgopti_Read_U32(position), pgopti_Read_U32(position + 4)};
}

std::uint32_t DPI_covered_blocks(const unsigned char* record) {
    std::uint32_t covered = 0;
    const std::uint32_t blocks = DPI_block_count_get(record);
    for (std::uint32_t i = 0; i < blocks; ++i)
        if (DPI_count_to_u64(static_cast<double>(DPI_counter_get(record, i))) != 0)
            ++covered;
    return covered;
}

std::uint64_t DPI_entry_frequency(const unsigned char* record) {
    std::uint64_t frequency = 0;
    const std::uint32_t routines = DPI_routine_count_get(record);
    for (std::uint32_t i = 0; i < routines; ++i)
        frequency = DPI_count_to_u64(static_cast<double>(frequency) +
                                     static_cast<double>(DPI_entry_counter_get(record, i)));
    return frequency;
}

std::uint64_t DPI_count_to_u64(double count) {
    constexpr double kTwoTo64 = 18446744073709551616.0;
    constexpr std::uint64_t kLargest = 0xFFFFFF0000000000; // the largest single-precision number below 2^64
    if (!(count > 0.0))
        return 0;
    return count < kTwoTo64 ? static_cast<std::uint64_t>(count) : kLargest;
}
