// The records come first, then the file names, then the routine names.
#include "profile/dpi_writer.h"

#include "common/little_endian.h"
#include "common/text_buffer.h"
#include "profile/dpi_content.h"

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

void pgopti_Put_Header(text_buffer& out, const DPI_HEADER& header) {
    char bytes[PGOPTI_HEADER_SIZE] = {};
    store_number(bytes + PGOPTI_HEADER_MAGIC, PGOPTI_DPI_MAGIC, 4);
    store_number(bytes + PGOPTI_HEADER_RUNS, header.runs, 4);
    store_number(bytes + PGOPTI_HEADER_RECORDS, header.records, 4);
    store_number(bytes + PGOPTI_HEADER_WORD, header.word, 4);
    header.text.copy(bytes + PGOPTI_HEADER_TEXT, PGOPTI_HEADER_TEXT_SIZE);
    out.put(std::string_view(bytes, sizeof bytes));
}

/// The record of a routine. `*content` is filled anew; it is the caller's for its memory.
static void fill_content(const PGOPTI_ROUTINE& routine, std::uint64_t file_name, std::uint64_t name,
                         DPI_CONTENT* content) {
    content->file_name = file_name;
    content->key_func_name = name;
    content->has_positions = true;
    content->counters.clear();
    content->positions.resize(routine.blocks.size() * 8);
    char* position = content->positions.data();
    for (const PGOPTI_BLOCK& block : routine.blocks) {
        content->counters.push_back(block.count);
        store_number(position, block.position.line, 4);
        store_number(position + 4, block.position.column, 4);
        position += 8;
    }
    content->routine_names.assign(routine_entries(routine), name);
    content->entry_indices.assign(4 * routine_entries(routine), '\0');
}

static void put_string(text_buffer& out, const std::string& text) {
    out.put(text);
    out.put('\0');
}

void DPI_WRITER::write(std::FILE* stream) const {
    text_buffer out(stream);
    pgopti_Put_Header(out, {profile_.num_runs, num_records_, profile_.header_word,
                            std::string_view(profile_.header_text).substr(0, PGOPTI_HEADER_TEXT_SIZE - 1)});
    std::uint64_t name = first_name_;
    DPI_CONTENT content;
    std::string record;
    for (const PGOPTI_ROUTINE& routine : profile_.routines) {
        if (!routine.has_record)
            continue;
        fill_content(routine, file_names_[routine.file], name, &content);
        record.clear();
        DPI_encode(content, layout_, {}, &record);
        out.put(record);
        name += routine.name.size() + 1;
    }
    for (const std::string& file : profile_.files)
        put_string(out, file);
    for (const PGOPTI_ROUTINE& routine : profile_.routines) {
        if (routine.has_record)
            put_string(out, routine.name);
    }
}
