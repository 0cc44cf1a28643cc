#include "profile/dpi_file.h"

#include "common/little_endian.h"
#include "profile/checked_io.h"
#include "profile/dpi_message.h"
#include "profile/dpi_reader.h"
#include "profile/dpi_record.h"

#include <algorithm>
#include <cstring>
#include <set>

constexpr std::size_t kLongName = 4096; ///< bytes of a name from which on it is not compared needlessly

DPI_FILE::DPI_FILE() = default;
DPI_FILE::~DPI_FILE() {
    checked_fclose(stream);
}

[[noreturn]] static void fail_format(const char* fileName) {
    PGOPTI_Tool_Error(1,
                      "%s has old or incompatible file format\n\tDelete file and redo instrumentation "
                      "compilation/execution.",
                      fileName);
}

namespace {

/// A name that an index entry refers to, while the names are collected.
struct name_reference {
    std::uint64_t offset;
    std::uint32_t entry;
    bool is_function;
};

/// The name read last: names that lie in it are not read again.
struct name_text {
    const char* text = "";
    std::uint64_t offset = 0;
    std::uint64_t end = 0; ///< offset of its NUL, or of the end of the file
};

/// Order in which names of different length are never compared.
struct shorter_first {
    bool operator()(std::string_view a, std::string_view b) const {
        return a.size() != b.size() ? a.size() < b.size() : a < b;
    }
};
using long_names = std::set<std::string_view, shorter_first>;

} // namespace

/// Reads the string at `offset` into memory of the handle. Long names that are stored more than once share
/// their memory, so that look-ups see that they are the same without comparing them again and again.
static name_text read_name(DPI_FILE* file, const char* fileName, std::uint64_t offset, long_names& known) {
    const std::string text = pgopti_Read_String(file, fileName, offset);
    if (text.size() >= kLongName) {
        const auto same = known.find(text);
        if (same != known.end())
            return {same->data(), offset, offset + text.size()};
    }
    file->names.push_back(std::make_unique<char[]>(text.size() + 1));
    char* const kept = file->names.back().get();
    std::memcpy(kept, text.c_str(), text.size() + 1);
    if (text.size() >= kLongName)
        known.insert({kept, text.size()});
    return {kept, offset, offset + text.size()};
}

/// Gives every index entry its names. They are read in the order of their offsets, so that the file is read
/// in one sweep and strings that overlap share their memory: it never exceeds the size of the file.
static void load_names(DPI_FILE* file, const char* fileName, std::vector<name_reference>& references) {
    std::sort(references.begin(), references.end(),
              [](const name_reference& a, const name_reference& b) { return a.offset < b.offset; });
    long_names known;
    name_text name;
    bool first = true;
    for (const name_reference& reference : references) {
        if (first || reference.offset > name.end)
            name = read_name(file, fileName, reference.offset, known);
        first = false;
        if (name.end - reference.offset > UINT32_MAX)
            fail_format(fileName);
        const std::uint64_t skipped = reference.offset - name.offset;
        const std::uint32_t length = static_cast<std::uint32_t>(name.end - reference.offset);
        DPI_INDEX_ENTRY& entry = file->index[reference.entry];
        (reference.is_function ? entry.key_func_name : entry.file_name) = name.text + skipped;
        (reference.is_function ? entry.func_name_length : entry.file_name_length) = length;
    }
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
        fail_format(fileName);
}

/// True when the keys ascend, as they do in a sound profile: then no two are equal.
static bool has_ascending_keys(const std::vector<DPI_INDEX_ENTRY>& index) {
    const auto is_not_before = [](const DPI_INDEX_ENTRY& a, const DPI_INDEX_ENTRY& b) {
        // Names may overlap in the file: to compare long ones could take out of proportion to its size.
        if (std::max(a.file_name_length, a.func_name_length) >= kLongName)
            return true;
        return pgopti_Name_Compare({a.file_name, a.file_name_length}, {a.key_func_name, a.func_name_length},
                                   b) >= 0;
    };
    return std::adjacent_find(index.begin(), index.end(), is_not_before) == index.end();
}

/// Checks record after record and fills the index.
static void build_index(DPI_FILE* file, const char* fileName) {
    std::vector<name_reference> references;
    std::vector<unsigned char> record;
    std::uint64_t position = PGOPTI_HEADER_SIZE;
    for (std::uint32_t i = 0; i < file->num_records; ++i) {
        read_record(file, fileName, position, record);
        const DPI_RECORD view = {record.data(), file->layout};
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
    load_names(file, fileName, references);
    file->is_ascending = has_ascending_keys(file->index);
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

float pgopti_Dpi_Max_Entry_Count(DPI_RECORD record, std::uint32_t numRuns, float* recordMax, float fileMax) {
    const std::uint32_t routines = DPI_routine_count_get(record);
    for (std::uint32_t i = 0; i < routines; ++i) {
        const float count = DPI_entry_counter_get(record, i) / static_cast<float>(numRuns);
        *recordMax = std::max(*recordMax, count);
        fileMax = std::max(fileMax, count);
    }
    return fileMax;
}

std::string pgopti_Read_String(DPI_FILE* file, const char* fileName, std::uint64_t offset) {
    std::string text;
    while (offset < file->reader->size()) {
        std::size_t available = 0;
        const unsigned char* bytes = file->reader->peek(offset, &available, fileName);
        const void* end = std::memchr(bytes, 0, available);
        if (end) {
            text.append(reinterpret_cast<const char*>(bytes), static_cast<const char*>(end));
            break;
        }
        text.append(reinterpret_cast<const char*>(bytes), available);
        offset += available;
    }
    return text;
}

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
        fail_format(fileName);
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
