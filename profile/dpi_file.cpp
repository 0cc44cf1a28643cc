#include "profile/dpi_file.h"

#include "common/little_endian.h"
#include "profile/checked_io.h"
#include "profile/dpi_lookup.h"
#include "profile/dpi_message.h"
#include "profile/dpi_names.h"
#include "profile/dpi_reader.h"

#include <algorithm>

DPI_FILE::DPI_FILE() = default;
DPI_FILE::~DPI_FILE() {
    checked_fclose(stream);
}

void pgopti_Fail_Format(const char* fileName) {
    PGOPTI_Tool_Error(1,
                      "%s has old or incompatible file format\n\tDelete file and redo instrumentation "
                      "compilation/execution.",
                      fileName);
}

/// Reads the whole record at `position` into `record`, which is reused from record to record, and takes its
/// layout for the file's.
static void read_record(DPI_FILE* file, const char* fileName, std::uint64_t position,
                        std::vector<unsigned char>& record) {
    unsigned char head[PGOPTI_RECORD_HEAD_SIZE];
    file->reader->read(position, head, 4, fileName);
    file->layout = &DPI_layout_of(head);
    file->reader->read(position, head, sizeof head, fileName);
    const std::uint32_t size = DPI_record_size_get({head, file->layout});
    if (size <= file->reader->size() - position) // otherwise the read below fails, before memory is asked for
        record.resize(size);
    // A file that ends within the record is told as such, whatever the record's version.
    file->reader->read(position, record.data(), size, fileName);
    const DPI_RECORD view = {record.data(), file->layout};
    if (DPI_version_get({head, file->layout}) != file->layout->version || !DPI_record_is_sound(view, size))
        pgopti_Fail_Format(fileName);
}

/// A name that cannot be sought ends the run before the next record is looked at.
static void check_names(DPI_RECORD record, const char* fileName) {
    for (const std::uint64_t name :
         {DPI_file_name_get(record), DPI_key_func_name_get(record), DPI_vtbl_name_get(record)})
        pgopti_Check_Offset(fileName, name);
}

/// Checks record after record and fills the index.
static void build_index(DPI_FILE* file, const char* fileName) {
    std::vector<DPI_NAME_REFERENCE> references;
    std::vector<unsigned char> record;
    std::uint64_t position = PGOPTI_HEADER_SIZE;
    for (std::uint32_t i = 0; i < file->num_records; ++i) {
        read_record(file, fileName, position, record);
        const DPI_RECORD view = {record.data(), file->layout};
        check_names(view, fileName);
        DPI_INDEX_ENTRY entry = {};
        entry.position = position;
        entry.size = DPI_record_size_get(view);
        entry.word = DPI_word_get(view);
        entry.flags = static_cast<std::uint8_t>(DPI_flag_word_get(view) & 3);
        file->max_entry_count =
            pgopti_Dpi_Max_Entry_Count(view, file->num_runs, &entry.max_entry_count, file->max_entry_count);
        references.push_back({DPI_file_name_get(view), i, false});
        references.push_back({DPI_key_func_name_get(view), i, true});
        file->index.push_back(entry);
        position += entry.size;
    }
    if (!pgopti_Load_Names(file, fileName, references))
        pgopti_Fail_Format(fileName);
    file->is_ascending = pgopti_Has_Ascending_Keys(file->index);
}

DPI_FILE* PGOPTI_Open_Dpi_File(const char* fileName) {
    std::FILE* stream = checked_fopen(fileName, "rb");
    if (!stream)
        return nullptr;
    auto file = std::make_unique<DPI_FILE>();
    file->stream = stream;
    std::setvbuf(stream, nullptr, _IONBF, 0); // the reader's blocks are the buffer
    unsigned char header[PGOPTI_HEADER_SIZE];
    checked_fread(header, 1, sizeof header, stream, fileName);
    if (read_u32(header + PGOPTI_HEADER_MAGIC) != PGOPTI_DPI_MAGIC) {
        PGOPTI_Tool_Warning("%s has bad magic number", fileName);
        return nullptr;
    }
    file->num_records = read_u32(header + PGOPTI_HEADER_RECORDS);
    file->num_runs = read_u32(header + PGOPTI_HEADER_RUNS);
    file->header_word = read_u32(header + PGOPTI_HEADER_WORD);
    file->header_text.assign(header + PGOPTI_HEADER_TEXT,
                             header + PGOPTI_HEADER_TEXT + PGOPTI_HEADER_TEXT_SIZE);
    file->reader = std::make_unique<DPI_READER>(stream, fileName);
    build_index(file.get(), fileName);
    return file.release();
}

void PGOPTI_Close_Dpi_File(DPI_FILE* file) {
    delete file;
}

bool pgopti_Check_Runs(const DPI_FILE& file) {
    if (file.num_runs != 0)
        return true;
    std::fputs("Read in 0 runs for .dpi file - .dpi File corrupt!\n", stderr);
    return false;
}

float pgopti_Dpi_Max_Entry_Count(DPI_RECORD record, std::uint32_t numRuns, float* recordMax, float fileMax) {
    const std::uint32_t routines = DPI_routine_count_get(record);
    for (std::uint32_t i = 0; i < routines; ++i) {
        const float count = DPI_entry_counter_get(record, i) / static_cast<float>(numRuns);
        *recordMax = std::max(*recordMax, count);
        fileMax = std::max(fileMax, count);
    }
    return fileMax;
}
