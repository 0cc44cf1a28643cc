#include "profile/spi_writer.h"

#include "common/text_buffer.h"

#include <algorithm>
#include <cstddef>
#include <string>

/// Size of a name buffer of the static profile's reader, NUL included.
constexpr std::size_t kDefaultNameSize = 4096;

/// Bytes that a reader needs for the longest names, each with its NUL.
struct longest_names {
    std::size_t file = kDefaultNameSize;
    std::size_t second = kDefaultNameSize;
    std::size_t routine = kDefaultNameSize;
};

static void put_version_head(text_buffer& out, const longest_names& longest) {
    if (std::max({longest.file, longest.second, longest.routine}) <= kDefaultNameSize)
        return;
    out.put("V1 ");
    out.put_number(longest.file);
    out.put(' ');
    out.put_number(longest.second);
    out.put(' ');
    out.put_number(longest.routine);
    out.put('\n');
}

static void put_line(text_buffer& out, const SPI_RECORD_VIEW& record) {
    out.put(record.file_name);
    out.put(' ');
    out.put(record.second_name);
    out.put(' ');
    out.put(record.proc_name);
    out.put(' ');
    out.put_number(record.line);
    out.put(' ');
    out.put_number(record.block_count);
    out.put(' ');
    out.put(record.flag);
    out.put('\n');
}

void PGOPTI_SPI_Write(std::FILE* stream, const PGOPTI_PROFILE& profile) {
    text_buffer out(stream);
    longest_names longest;
    for (const std::string& file : profile.files)
        longest.file = std::max(longest.file, file.size() + 1);
    for (const PGOPTI_ROUTINE& routine : profile.routines)
        longest.routine = std::max(longest.routine, routine.name.size() + 1);
    put_version_head(out, longest);
    for (const PGOPTI_ROUTINE& routine : profile.routines)
        put_line(out,
                 {profile.files[routine.file], "-", routine.name, routine.line, routine.block_count, 'I'});
}

void PGOPTI_SPI_Write_Records(std::FILE* stream, const std::vector<SPI_RECORD_VIEW>& records) {
    text_buffer out(stream);
    longest_names longest;
    for (const SPI_RECORD_VIEW& record : records) {
        longest.file = std::max(longest.file, record.file_name.size() + 1);
        longest.second = std::max(longest.second, record.second_name.size() + 1);
        longest.routine = std::max(longest.routine, record.proc_name.size() + 1);
    }
    put_version_head(out, longest);
    for (const SPI_RECORD_VIEW& record : records)
        put_line(out, record);
}
