#include "profile/dpi_lookup.h"

#include "profile/dpi_names.h"
#include "profile/dpi_reader.h"

#include <algorithm>
#include <cstring>
#include <memory>

namespace {

/// The text of a key, in the pieces that it is made of.
struct key_text {
    std::string_view pieces[4];
    std::size_t piece = 0; ///< index of the piece that holds the next byte

    key_text(std::string_view file, std::string_view function) : pieces{file, "'", function, "'"} {}

    /// What is left of the current piece; empty at the end of the key.
    std::string_view rest() {
        while (piece < 3 && pieces[piece].empty())
            ++piece;
        return pieces[piece];
    }
    void skip(std::size_t count) { pieces[piece].remove_prefix(count); }
};

} // namespace

int pgopti_Name_Compare(std::string_view file, std::string_view function, const DPI_INDEX_ENTRY& entry) {
    key_text key(file, function);
    key_text stored({entry.file_name, entry.file_name_length}, {entry.key_func_name, entry.func_name_length});
    for (;;) {
        const std::string_view a = key.rest();
        const std::string_view b = stored.rest();
        const std::size_t shared = std::min(a.size(), b.size());
        if (shared == 0)
            return a.empty() ? (b.empty() ? 0 : -1) : 1;
        // Records share their file names: a long one is not compared with itself again and again.
        const int difference = a.data() == b.data() ? 0 : std::memcmp(a.data(), b.data(), shared);
        if (difference != 0)
            return difference;
        key.skip(shared);
        stored.skip(shared);
    }
}

bool pgopti_Has_Ascending_Keys(const std::vector<DPI_INDEX_ENTRY>& index) {
    const auto is_not_before = [](const DPI_INDEX_ENTRY& a, const DPI_INDEX_ENTRY& b) {
        if (std::max(a.file_name_length, a.func_name_length) >= PGOPTI_LONG_NAME)
            return true;
        return pgopti_Name_Compare({a.file_name, a.file_name_length}, {a.key_func_name, a.func_name_length},
                                   b) >= 0;
    };
    return std::adjacent_find(index.begin(), index.end(), is_not_before) == index.end();
}

const DPI_INDEX_ENTRY* pgopti_Get_Pgopti_Name(const DPI_FILE* file, std::string_view sourceFile,
                                              std::string_view function) {
    std::size_t low = 0;
    std::size_t high = file->index.size();
    while (low < high) {
        const std::size_t middle = (low + high) / 2;
        const int order = pgopti_Name_Compare(sourceFile, function, file->index[middle]);
        if (order == 0)
            return &file->index[middle];
        if (order < 0)
            high = middle;
        else
            low = middle + 1;
    }
    return nullptr;
}

/// The index entry of a routine, or null. Routines are mostly asked for in the order of their records: the
/// entry behind the one found last is tried first. Not where keys may be equal, as the search decides between
/// them.
static const DPI_INDEX_ENTRY* find_entry(DPI_FILE* file, std::string_view sourceFile,
                                         std::string_view function) {
    const DPI_INDEX_ENTRY* entry = nullptr;
    if (file->is_ascending && file->expected < file->index.size() &&
        pgopti_Name_Compare(sourceFile, function, file->index[file->expected]) == 0)
        entry = &file->index[file->expected];
    else
        entry = pgopti_Get_Pgopti_Name(file, sourceFile, function);
    if (entry)
        file->expected = static_cast<std::size_t>(entry - file->index.data()) + 1;
    return entry;
}

/// The names that stand in a record besides its key function name. Their text is not needed here.
static void check_names(DPI_RECORD record, const char* fileName) {
    pgopti_Check_Offset(fileName, DPI_file_name_get(record));
    pgopti_Check_Offset(fileName, DPI_vtbl_name_get(record));
    const std::uint32_t routines = DPI_routine_count_get(record);
    for (std::uint32_t i = 0; i < routines; ++i)
        pgopti_Check_Offset(fileName, DPI_routine_name_get(record, i));
}

DPI_SEGMENT* PGOPTI_Get_Segment(DPI_FILE* file, const char* fileName, std::string_view sourceFile,
                                std::string_view function) {
    const DPI_INDEX_ENTRY* entry = find_entry(file, sourceFile, function);
    if (!entry)
        return nullptr;
    auto segment = std::make_unique<DPI_SEGMENT>();
    segment->record.resize(entry->size);
    file->reader->read(entry->position, segment->record.data(), entry->size, fileName);
    segment->num_runs = file->num_runs;
    segment->layout = file->layout;
    // The record was sound in its own layout, which need not be the one that the file is read in. Its version
    // is not looked at again, as it is that of its own.
    if (!DPI_record_is_sound(segment->view(), entry->size))
        pgopti_Fail_Format(fileName);
    check_names(segment->view(), fileName);
    return segment.release();
}

void PGOPTI_Free_Segment(DPI_SEGMENT* segment) {
    delete segment;
}

void PGOPTI_Get_First_File_Function_Pair(DPI_FILE* file, const char** sourceFile, const char** function) {
    file->cursor = 0;
    PGOPTI_Get_Next_File_Function_Pair(file, sourceFile, function);
}

void PGOPTI_Get_Next_File_Function_Pair(DPI_FILE* file, const char** sourceFile, const char** function) {
    const bool more = file->cursor < file->index.size();
    *sourceFile = more ? file->index[file->cursor].file_name : nullptr;
    *function = more ? file->index[file->cursor].key_func_name : nullptr;
    if (more)
        ++file->cursor;
}
