#include "profile/spi_writer.h"

#include "common/text_buffer.h"

#include <algorithm>
#include <cstddef>
#include <string>

/// Size of a name buffer of the static profile's reader, NUL included.
constexpr std::size_t kDefaultNameSize = 4096;

static void put_version_head(text_buffer& out, const PGOPTI_PROFILE& profile) {
    std::size_t file_size = 0;
    std::size_t name_size = 0;
    for (const std::string& file : profile.files)
        file_size = std::max(file_size, file.size() + 1);
    for (const PGOPTI_ROUTINE& routine : profile.routines)
        name_size = std::max(name_size, routine.name.size() + 1);
    if (file_size <= kDefaultNameSize && name_size <= kDefaultNameSize)
        return;
    out.put("V1 ");
    out.put_number(std::max(file_size, kDefaultNameSize));
    out.put(' ');
    out.put_number(kDefaultNameSize);
    out.put(' ');
    out.put_number(std::max(name_size, kDefaultNameSize));
    out.put('\n');
}

void PGOPTI_SPI_Write(std::FILE* stream, const PGOPTI_PROFILE& profile) {
    text_buffer out(stream);
    put_version_head(out, profile);
    for (const PGOPTI_ROUTINE& routine : profile.routines) {
        out.put(profile.files[routine.file]);
        out.put(" - ");
        out.put(routine.name);
        out.put(' ');
        out.put_number(routine.line);
        out.put(' ');
        out.put_number(routine.block_count);
        out.put(" I\n");
    }
}
