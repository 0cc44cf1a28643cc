#include "profile/dpi_content.h"

#include "common/little_endian.h"

#include <bit>
#include <cmath>

/// The bits of the tag word that say how the record is laid out.
constexpr std::uint32_t kLayoutBits = 0xFF00U | PGOPTI_FLAG_64 | PGOPTI_FLAG_LINES;

/// Words of a 64-bit record that nobody is known to use.
constexpr std::size_t kSpare4 = 4;
constexpr std::size_t kSpare36 = 36;

bool DPI_whole_counter_get(const DPI_AREAS& areas, const PGOPTI_RECORD_LAYOUT& layout, std::uint64_t i,
                           std::uint64_t* count) {
    if (layout.is_pgo_64()) {
        *count = read_u64(areas.counters + 8 * i);
        return true;
    }
    constexpr float kTwoTo64 = 18446744073709551616.0F;
    const float stored = std::bit_cast<float>(read_u32(areas.counters + 4 * i));
    if (!(stored >= 0.0F) || std::trunc(stored) != stored)
        return false;
    *count = stored < kTwoTo64 ? static_cast<std::uint64_t>(stored) : UINT64_MAX;
    return true;
}

static std::string_view bytes_between(const unsigned char* start, const unsigned char* end) {
    return {reinterpret_cast<const char*>(start), static_cast<std::size_t>(end - start)};
}

static void decode_header(DPI_RECORD record, DPI_CONTENT* content) {
    const PGOPTI_RECORD_LAYOUT& layout = *record.layout;
    const unsigned char* const bytes = record.bytes;
    const bool wide = layout.is_pgo_64();
    content->carried = {read_u32(bytes) & ~kLayoutBits,
                        DPI_word_get(record),
                        DPI_flag_word_get(record),
                        read_u64(bytes + layout.address),
                        read_u64(bytes + layout.vtbl_address),
                        wide ? read_u32(bytes + kSpare4) : 0,
                        wide ? read_u32(bytes + kSpare36) : 0};
    content->file_name = DPI_file_name_get(record);
    content->key_func_name = DPI_key_func_name_get(record);
    content->vtbl_name = DPI_vtbl_name_get(record);
    content->has_positions = DPI_has_line_info(record);
    content->second_group = read_u32(bytes + layout.second_group);
    content->third_group = read_u32(bytes + layout.third_group);
}

bool DPI_decode(DPI_RECORD record, DPI_CONTENT* content) {
    const PGOPTI_RECORD_LAYOUT& layout = *record.layout;
    const DPI_AREAS areas = DPI_areas_get(record);
    decode_header(record, content);
    content->counters.resize(static_cast<std::size_t>(areas.counter_count));
    for (std::size_t i = 0; i < content->counters.size(); ++i)
        if (!DPI_whole_counter_get(areas, layout, i, &content->counters[i]))
            return false;
    content->values = bytes_between(areas.values, areas.routine_names);
    const std::uint32_t routines = DPI_routine_count_get(record);
    content->routine_names.resize(routines);
    for (std::uint32_t i = 0; i < routines; ++i)
        content->routine_names[i] = layout.is_pgo_64() ? read_u64(areas.routine_names + std::size_t{i} * 8)
                                                       : read_u32(areas.routine_names + std::size_t{i} * 4);
    content->entry_indices =
        bytes_between(areas.entry_indices, areas.entry_indices + std::size_t{routines} * 4);
    content->positions = bytes_between(areas.positions, areas.end);
    return true;
}

/// Bytes of the entry-counter indices, padded.
static std::size_t index_area_size(const DPI_CONTENT& content, const PGOPTI_RECORD_LAYOUT& layout) {
    return (content.entry_indices.size() + layout.width - 1) / layout.width * layout.width;
}

std::uint64_t DPI_encoded_size(const DPI_CONTENT& content, const PGOPTI_RECORD_LAYOUT& layout) {
    return layout.header_size + (content.counters.size() + content.routine_names.size()) * layout.width +
           content.values.size() + index_area_size(content, layout) + content.positions.size();
}

static void put_number(std::string* bytes, std::uint64_t value, std::size_t width) {
    char stored[8];
    store_number(stored, value, width);
    bytes->append(stored, width);
}

static void put_header(const DPI_CONTENT& content, const PGOPTI_RECORD_LAYOUT& layout, std::uint64_t size,
                       std::string* bytes) {
    const std::size_t start = bytes->size();
    bytes->append(layout.header_size, '\0');
    char* const header = bytes->data() + start;
    const std::uint32_t flags = (layout.is_pgo_64() ? std::uint32_t{PGOPTI_FLAG_64} : 0) |
                                (content.has_positions ? std::uint32_t{PGOPTI_FLAG_LINES} : 0);
    store_number(header, content.carried[DPI_CARRIED_TAG] | flags | std::uint32_t{layout.version} << 8, 4);
    if (layout.is_pgo_64()) {
        store_number(header + kSpare4, content.carried[DPI_CARRIED_SPARE_4], 4);
        store_number(header + kSpare36, content.carried[DPI_CARRIED_SPARE_36], 4);
    }
    store_number(header + layout.size, size, 4);
    store_number(header + layout.routines, content.routine_names.size(), 4);
    store_number(header + layout.blocks, content.block_count(), 4);
    store_number(header + layout.second_group, content.second_group, 4);
    store_number(header + layout.third_group, content.third_group, 4);
    store_number(header + layout.flag_word, content.carried[DPI_CARRIED_FLAG_WORD], 4);
    store_number(header + layout.word, content.carried[DPI_CARRIED_WORD], 4);
    store_number(header + layout.file_name, content.file_name, layout.width);
    store_number(header + layout.key_func_name, content.key_func_name, layout.width);
    store_number(header + layout.address, content.carried[DPI_CARRIED_ADDRESS], 8);
    store_number(header + layout.vtbl_address, content.carried[DPI_CARRIED_VTBL_ADDRESS], 8);
    store_number(header + layout.vtbl_name, content.vtbl_name, layout.width);
}

void DPI_encode(const DPI_CONTENT& content, const PGOPTI_RECORD_LAYOUT& layout, std::string_view behind,
                std::string* bytes) {
    const std::uint64_t size = DPI_encoded_size(content, layout) + behind.size();
    put_header(content, layout, size, bytes);
    for (const std::uint64_t count : content.counters)
        put_number(bytes,
                   layout.is_pgo_64() ? count : std::bit_cast<std::uint32_t>(static_cast<float>(count)),
                   layout.width);
    bytes->append(content.values);
    for (const std::uint64_t name : content.routine_names)
        put_number(bytes, name, layout.width);
    bytes->append(content.entry_indices);
    bytes->append(index_area_size(content, layout) - content.entry_indices.size(), '\0');
    bytes->append(content.positions);
    bytes->append(behind);
}
