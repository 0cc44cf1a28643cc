// The records come first, then the file names, then the routine names.
#include "profile/dpi_writer.h"

#include "common/little_endian.h"
#include "common/text_buffer.h"

#include <algorithm>
#include <bit>
#include <string_view>

/// Routine entries of a record. One needs a counter, which only a record with blocks has.
static std::uint32_t routine_entries(const PGOPTI_ROUTINE& routine) {
    return routine.blocks.empty() ? 0 : 1;
}

/// Bytes of the body before the positions, without the counters: routine name and entry-counter index,
/// padded.
static std::uint64_t routine_area_size(const PGOPTI_ROUTINE& routine, const PGOPTI_RECORD_LAYOUT& layout) {
    return std::uint64_t{2} * layout.width * routine_entries(routine);
}

static std::uint64_t record_size(const PGOPTI_ROUTINE& routine, const PGOPTI_RECORD_LAYOUT& layout) {
    return layout.header_size + routine_area_size(routine, layout) +
           routine.blocks.size() * (layout.width + 8);
}

/// The largest number that a field of W bytes holds.
static std::uint64_t largest_word(const PGOPTI_RECORD_LAYOUT& layout) {
    return layout.is_pgo_64() ? UINT64_MAX : UINT32_MAX;
}

DPI_WRITER::DPI_WRITER(const PGOPTI_PROFILE& profile, const PGOPTI_RECORD_LAYOUT& layout)
    : profile_(profile), layout_(layout) {
    const auto check = [this](const PGOPTI_ROUTINE& routine, std::uint64_t number, std::uint64_t largest) {
        if (number > largest && !too_large_)
            too_large_ = &routine;
    };
    std::uint64_t offset = PGOPTI_HEADER_SIZE;
    for (const PGOPTI_ROUTINE& routine : profile.routines) {
        if (!routine.has_record)
            continue;
        check(routine, record_size(routine, layout), UINT32_MAX);
        offset += record_size(routine, layout);
        ++num_records_;
    }
    for (const std::string& file : profile.files) {
        file_names_.push_back(offset);
        offset += file.size() + 1;
    }
    first_name_ = offset;
    for (const PGOPTI_ROUTINE& routine : profile.routines) {
        if (!routine.has_record)
            continue;
        check(routine, offset, largest_word(layout));
        offset += routine.name.size() + 1;
    }
}

static void put_number(text_buffer& out, std::uint64_t value, std::size_t width) {
    char bytes[8];
    store_number(bytes, value, width);
    out.put(std::string_view(bytes, width));
}

static void put_file_header(text_buffer& out, const PGOPTI_PROFILE& profile, std::uint32_t records) {
    char header[PGOPTI_HEADER_SIZE] = {};
    store_number(header + PGOPTI_HEADER_MAGIC, PGOPTI_DPI_MAGIC, 4);
    store_number(header + PGOPTI_HEADER_RUNS, profile.num_runs, 4);
    store_number(header + PGOPTI_HEADER_RECORDS, records, 4);
    store_number(header + PGOPTI_HEADER_WORD, profile.header_word, 4);
    profile.header_text.copy(header + PGOPTI_HEADER_TEXT, PGOPTI_HEADER_TEXT_SIZE - 1);
    out.put(std::string_view(header, sizeof header));
}

static void put_record_header(text_buffer& out, const PGOPTI_ROUTINE& routine,
                              const PGOPTI_RECORD_LAYOUT& layout, std::uint64_t file_name,
                              std::uint64_t name) {
    char header[std::max(PGOPTI_LAYOUT_32.header_size, PGOPTI_LAYOUT_64.header_size)] = {};
    store_number(header, PGOPTI_FLAG_LINES | (layout.is_pgo_64() ? PGOPTI_FLAG_64 : 0), 1);
    store_number(header + 1, layout.version, 1);
    store_number(header + layout.size, record_size(routine, layout), 4);
    store_number(header + layout.routines, routine_entries(routine), 4);
    store_number(header + layout.blocks, routine.blocks.size(), 4);
    store_number(header + layout.file_name, file_name, layout.width);
    store_number(header + layout.key_func_name, name, layout.width);
    out.put(std::string_view(header, layout.header_size));
}

static void put_record(text_buffer& out, const PGOPTI_ROUTINE& routine, const PGOPTI_RECORD_LAYOUT& layout,
                       std::uint64_t file_name, std::uint64_t name) {
    put_record_header(out, routine, layout, file_name, name);
    for (const PGOPTI_BLOCK& block : routine.blocks)
        put_number(out,
                   layout.is_pgo_64() ? block.count
                                      : std::bit_cast<std::uint32_t>(static_cast<float>(block.count)),
                   layout.width);
    if (routine_entries(routine) != 0) {
        put_number(out, name, layout.width);
        put_number(out, 0, layout.width); // index of the entry counter, padded
    }
    for (const PGOPTI_BLOCK& block : routine.blocks) {
        put_number(out, block.position.line, 4);
        put_number(out, block.position.column, 4);
    }
}

static void put_string(text_buffer& out, const std::string& text) {
    out.put(text);
    out.put('\0');
}

void DPI_WRITER::write(std::FILE* stream) const {
    text_buffer out(stream);
    put_file_header(out, profile_, num_records_);
    std::uint64_t name = first_name_;
    for (const PGOPTI_ROUTINE& routine : profile_.routines) {
        if (!routine.has_record)
            continue;
        put_record(out, routine, layout_, file_names_[routine.file], name);
        name += routine.name.size() + 1;
    }
    for (const std::string& file : profile_.files)
        put_string(out, file);
    for (const PGOPTI_ROUTINE& routine : profile_.routines) {
        if (routine.has_record)
            put_string(out, routine.name);
    }
}
