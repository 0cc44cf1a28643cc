#include "profile_tool/show_json.h"

#include "common/little_endian.h"

#include <bit>
#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/serialize.hpp>
#include <cmath>
#include <string>

namespace json = boost::json;

/// Bytes of the UTF-8 character at the start of `text`; 0 when there is none.
static std::size_t character_size(std::string_view text) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char first = byte(0);
    const std::size_t size = first < 0x80   ? 1
                             : first < 0xC2 ? 0
                             : first < 0xE0 ? 2
                             : first < 0xF0 ? 3
                             : first < 0xF5 ? 4
                                            : 0;
    if (size > text.size())
        return 0;
    for (std::size_t i = 1; i < size; ++i)
        if ((byte(i) & 0xC0) != 0x80)
            return 0;
    // Longer forms than needed, halves of surrogate pairs, and what is above U+10FFFF.
    const bool wrong = size > 1 && ((first == 0xE0 && byte(1) < 0xA0) || (first == 0xED && byte(1) > 0x9F) ||
                                    (first == 0xF0 && byte(1) < 0x90) || (first == 0xF4 && byte(1) > 0x8F));
    return wrong ? 0 : size;
}

static std::string utf8_of(std::string_view bytes) {
    std::string text;
    while (!bytes.empty()) {
        const std::size_t size = character_size(bytes);
        text.append(size != 0 ? bytes.substr(0, size) : "\xEF\xBF\xBD");
        bytes.remove_prefix(size != 0 ? size : 1);
    }
    return text;
}

static json::value counter_value(DPI_RECORD record, const DPI_AREAS& areas, std::uint64_t i) {
    if (record.layout->is_pgo_64())
        return read_u64(areas.counters + 8 * i);
    const float count = std::bit_cast<float>(read_u32(areas.counters + 4 * i));
    if (!std::isfinite(count))
        return nullptr;
    constexpr float kTwoTo63 = 9223372036854775808.0F;
    if (std::trunc(count) == count && std::fabs(count) < kTwoTo63)
        return static_cast<std::int64_t>(count);
    return static_cast<double>(count);
}

static json::array counters_of(DPI_RECORD record, const DPI_AREAS& areas, std::uint64_t first,
                               std::uint64_t count) {
    json::array counters;
    for (std::uint64_t i = first; i < first + count; ++i)
        counters.push_back(counter_value(record, areas, i));
    return counters;
}

static json::array blocks_of(DPI_RECORD record, const DPI_AREAS& areas) {
    json::array blocks;
    for (std::uint32_t i = 0; i < DPI_block_count_get(record); ++i) {
        json::object block;
        if (DPI_has_line_info(record))
            block["column"] = DPI_block_position_get(record, i).column;
        block["count"] = counter_value(record, areas, i);
        if (DPI_has_line_info(record))
            block["line"] = DPI_block_position_get(record, i).line;
        blocks.push_back(std::move(block));
    }
    return blocks;
}

static json::object record_value(const DPI_CURSOR& cursor) {
    const DPI_RECORD record = cursor.record();
    const DPI_AREAS areas = DPI_areas_get(record);
    const std::uint32_t blocks = DPI_block_count_get(record);
    const std::uint32_t second = read_u32(record.bytes + record.layout->second_group);
    const std::uint32_t third = read_u32(record.bytes + record.layout->third_group);
    json::array entries;
    for (std::uint32_t i = 0; i < DPI_routine_count_get(record); ++i)
        entries.push_back(read_u32(areas.entry_indices + std::size_t{i} * 4));
    json::object value;
    value["blocks"] = blocks_of(record, areas);
    value["entries"] = std::move(entries);
    value["file"] = utf8_of(cursor.file_name());
    value["function"] = utf8_of(cursor.function_name());
    value["second"] = counters_of(record, areas, blocks, second);
    value["third"] = counters_of(record, areas, std::uint64_t{blocks} + second, third);
    value["width"] = record.layout->width * 8;
    return value;
}

bool show_json(DPI_CURSOR& cursor, text_buffer& out) {
    out.put("{\"format\":1,\"records\":[\n");
    for (bool first = true; cursor.next(); first = false) {
        if (!first)
            out.put(",\n");
        out.put(json::serialize(record_value(cursor)));
    }
    out.put("\n],\"runs\":");
    out.put_number(cursor.num_runs());
    out.put(",\"text\":");
    const std::string_view text = cursor.header_text();
    out.put(json::serialize(json::value(utf8_of(text.substr(0, text.find('\0'))))));
    out.put(",\"word\":");
    out.put_number(cursor.header_word());
    out.put("}\n");
    return cursor.error().empty();
}
