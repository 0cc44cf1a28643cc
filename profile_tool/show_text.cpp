#include "profile_tool/show_text.h"

#include "common/little_endian.h"
#include "common/printable.h"
#include "profile/dpi_content.h"
#include "profile_tool/name_places.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <string>
#include <vector>

constexpr std::size_t kBlocksPerLine = 8;
constexpr std::uint32_t kQuietNaN = 0x7FC00000; ///< what "nan" stands for

/// Bytes of the record's tag word that the text has words for.
constexpr std::uint32_t kSaidTagBits = 0xFF00U | PGOPTI_FLAG_64 | PGOPTI_FLAG_LINES;

static void put_counter(DPI_RECORD record, const DPI_AREAS& areas, std::uint64_t i, text_buffer& out) {
    if (record.layout->is_pgo_64())
        return out.put_number(read_u64(areas.counters + 8 * i));
    char text[64];
    const float count = std::bit_cast<float>(read_u32(areas.counters + 4 * i));
    out.put(std::string_view(
        text, static_cast<std::size_t>(std::to_chars(text, text + sizeof text, count).ptr - text)));
}

static void put_blocks(DPI_RECORD record, const DPI_AREAS& areas, text_buffer& out) {
    const std::uint32_t blocks = DPI_block_count_get(record);
    for (std::uint32_t i = 0; i < blocks; ++i) {
        out.put(i % kBlocksPerLine == 0 ? (i == 0 ? "blocks " : "\nblocks ") : " ");
        if (DPI_has_line_info(record)) {
            const DPI_POSITION position = DPI_block_position_get(record, i);
            out.put_number(position.line);
            out.put(':');
            out.put_number(position.column);
            out.put('=');
        }
        put_counter(record, areas, i, out);
    }
    if (blocks != 0)
        out.put('\n');
}

static void put_group(const char* key, DPI_RECORD record, const DPI_AREAS& areas, std::uint64_t first,
                      std::uint32_t count, text_buffer& out) {
    if (count == 0)
        return;
    out.put(key);
    for (std::uint64_t i = first; i < first + count; ++i) {
        out.put(' ');
        put_counter(record, areas, i, out);
    }
    out.put('\n');
}

static void put_field(const char* key, std::uint64_t value, text_buffer& out) {
    if (value == 0)
        return;
    out.put(key);
    out.put(' ');
    out.put_number(value);
    out.put('\n');
}

static void put_name(const char* key, std::string_view name, text_buffer& out) {
    out.put(key);
    out.put(' ');
    out.put(is_line_end(name) ? std::string(name) : printable(name));
    out.put('\n');
}

/// The routines, where they are not what the text means without a word.
static bool put_routines(DPI_CURSOR& cursor, const DPI_AREAS& areas, text_buffer& out) {
    const DPI_RECORD record = cursor.record();
    const std::uint32_t routines = DPI_routine_count_get(record);
    const std::uint32_t usual = DPI_block_count_get(record) == 0 ? 0 : 1;
    if (routines != usual || (routines == 1 && read_u32(areas.entry_indices) != 0)) {
        out.put("entry");
        for (std::uint32_t i = 0; i < routines; ++i) {
            out.put(' ');
            out.put_number(read_u32(areas.entry_indices + std::size_t{i} * 4));
        }
        out.put('\n');
    }
    std::vector<std::string> names(routines);
    for (std::uint32_t i = 0; i < routines; ++i)
        if (!cursor.read_name(DPI_routine_name_get(record, i), &names[i]))
            return false;
    if (!std::all_of(names.begin(), names.end(),
                     [&](const std::string& n) { return n == cursor.function_name(); }))
        for (const std::string& name : names)
            put_name("routine", name, out);
    return true;
}

static bool put_table(DPI_CURSOR& cursor, std::uint64_t address, text_buffer& out) {
    const std::uint64_t name = DPI_vtbl_name_get(cursor.record());
    if (address == 0 && name == 0)
        return true;
    std::string text;
    out.put("vtable ");
    out.put_number(address);
    if (name != 0) {
        if (!cursor.read_name(name, &text))
            return false;
        out.put(' ');
        out.put(printable(text));
    }
    out.put('\n');
    return true;
}

static void put_patch(const DPI_CURSOR& cursor, std::size_t offset, std::uint32_t value, text_buffer& out) {
    out.put("set u32 r");
    out.put_number(cursor.record_number());
    out.put('+');
    out.put_number(offset);
    out.put(' ');
    out.put_number(value);
    out.put('\n');
}

/// Words of the record that the text has no words for, from `start` to before `end`.
static void put_patches(const DPI_CURSOR& cursor, const unsigned char* start, const unsigned char* end,
                        text_buffer& out) {
    for (; start + 4 <= end; start += 4)
        if (const std::uint32_t value = read_u32(start))
            put_patch(cursor, static_cast<std::size_t>(start - cursor.record().bytes), value, out);
}

static void put_all_patches(const DPI_CURSOR& cursor, const DPI_AREAS& areas, text_buffer& out) {
    const DPI_RECORD record = cursor.record();
    const bool wide = record.layout->is_pgo_64();
    const std::uint32_t tag = read_u32(record.bytes);
    const bool has_blocks = DPI_block_count_get(record) != 0;
    if ((tag & ~kSaidTagBits) != 0 || (DPI_has_line_info(record) && !has_blocks))
        put_patch(cursor, 0, tag, out);
    if (wide) {
        put_patches(cursor, record.bytes + 4, record.bytes + 8, out);
        put_patches(cursor, record.bytes + 36, record.bytes + 40, out);
    }
    for (std::uint64_t i = 0; !wide && i < areas.counter_count; ++i) {
        const std::uint32_t bits = read_u32(areas.counters + 4 * i);
        const float count = std::bit_cast<float>(bits);
        if (count != count && bits != kQuietNaN)
            put_patch(cursor, static_cast<std::size_t>(areas.counters + 4 * i - record.bytes), bits, out);
    }
    put_patches(cursor, areas.values, areas.routine_names, out);
    put_patches(cursor, areas.entry_indices + std::size_t{DPI_routine_count_get(record)} * 4, areas.positions,
                out);
}

static bool put_record(DPI_CURSOR& cursor, text_buffer& out) {
    const DPI_RECORD record = cursor.record();
    const PGOPTI_RECORD_LAYOUT& layout = *record.layout;
    const DPI_AREAS areas = DPI_areas_get(record);
    const std::uint32_t blocks = DPI_block_count_get(record);
    const std::uint32_t second = read_u32(record.bytes + layout.second_group);
    const std::uint32_t third = read_u32(record.bytes + layout.third_group);
    out.put(layout.is_pgo_64() ? "record 64\n" : "record 32\n");
    put_name("file", cursor.file_name(), out);
    put_name("function", cursor.function_name(), out);
    put_blocks(record, areas, out);
    put_group("group2", record, areas, blocks, second, out);
    put_group("group3", record, areas, std::uint64_t{blocks} + second, third, out);
    if (!put_routines(cursor, areas, out))
        return false;
    put_field("flags", DPI_flag_word_get(record), out);
    put_field("word", DPI_word_get(record), out);
    put_field("address", read_u64(record.bytes + layout.address), out);
    if (!put_table(cursor, read_u64(record.bytes + layout.vtbl_address), out))
        return false;
    put_all_patches(cursor, areas, out);
    return true;
}

static void put_head(const DPI_CURSOR& cursor, const name_places& places, text_buffer& out) {
    if (places.placing == name_placing::other)
        out.put("# The names of this profile lie in an order of their own, or there is more behind them.\n");
    if (!places.is_sayable)
        out.put("# This profile holds names or bytes that have no place in the text.\n");
    out.put("header runs ");
    out.put_number(cursor.num_runs());
    if (cursor.header_word() != 0) {
        out.put(" word ");
        out.put_number(cursor.header_word());
    }
    const std::string_view text = cursor.header_text().substr(0, cursor.header_text().find('\0'));
    if (!text.empty()) {
        out.put(" text ");
        out.put(is_line_end(text) ? std::string(text) : printable(text));
    }
    out.put('\n');
    if (!places.is_ascending)
        out.put("order any\n");
    if (places.placing == name_placing::shared)
        for (const std::string& file : places.files)
            put_name("source", file, out);
}

bool show_text(DPI_CURSOR& cursor, text_buffer& out) {
    name_places places;
    if (!find_names(cursor, &places))
        return false;
    put_head(cursor, places, out);
    cursor.rewind();
    while (cursor.next())
        if (!put_record(cursor, out))
            return false;
    return cursor.error().empty();
}
