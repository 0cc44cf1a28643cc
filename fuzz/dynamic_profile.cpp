// Input: a dynamic profile. It is opened, every record is asked for, and what the reader says is compared
// with the bytes.
#include "fuzz/harness.h"
#include "profile/dpi_file.h"
#include "profile/dpi_lookup.h"
#include "profile/dpi_names.h"
#include "profile/dpi_record.h"

#include <bit>
#include <cstring>
#include <vector>

static std::uint64_t number_at(std::string_view bytes, std::uint64_t place, std::size_t width) {
    std::uint64_t value = 0;
    for (std::size_t i = width; i-- > 0;)
        value = value << 8 | static_cast<unsigned char>(bytes[static_cast<std::size_t>(place) + i]);
    return value;
}

static std::string text_at(std::string_view bytes, std::uint64_t place) {
    if (place >= bytes.size())
        return {};
    const std::string_view rest = bytes.substr(static_cast<std::size_t>(place));
    return std::string(rest.substr(0, rest.find('\0')));
}

static std::string key_of(const DPI_INDEX_ENTRY& entry) {
    return std::string(entry.file_name) + "'" + entry.key_func_name + "'";
}

/// Compares the index with the bytes. Returns whether all records have one width.
static bool check_index(const DPI_FILE& file, std::string_view bytes) {
    require(file.num_runs == number_at(bytes, 4, 4) && file.num_records == number_at(bytes, 8, 4) &&
                file.header_word == number_at(bytes, 12, 4),
            "the header's numbers");
    require(file.index.size() == file.num_records, "every record is in the index");
    bool one_width = true;
    std::size_t place = 528;
    for (const DPI_INDEX_ENTRY& entry : file.index) {
        const bool wide = (bytes[place] & 0x40) != 0;
        one_width = one_width && wide == file.layout->is_pgo_64();
        const std::size_t width = wide ? 8 : 4;
        require(entry.position == place && entry.size == number_at(bytes, place + width, 4),
                "place of a record");
        require(entry.file_name == text_at(bytes, number_at(bytes, place + (wide ? 40 : 32), width)),
                "file name");
        require(entry.key_func_name == text_at(bytes, number_at(bytes, place + (wide ? 48 : 36), width)),
                "function name");
        require(entry.file_name_length == std::strlen(entry.file_name) &&
                    entry.func_name_length == std::strlen(entry.key_func_name),
                "length of a name");
        require(entry.word == number_at(bytes, place + 28, 4), "word of a record");
        require(entry.flags == (number_at(bytes, place + (wide ? 32 : 24), 4) & 3), "flags of a record");
        place += entry.size;
    }
    require(place <= bytes.size(), "the records lie in the file");
    return one_width;
}

/// Looks at every area of a record and compares the counters with the bytes.
static void check_record(DPI_FILE* file, const DPI_SEGMENT& segment, std::string_view bytes) {
    const DPI_RECORD record = segment.view();
    const std::uint32_t blocks = DPI_block_count_get(record);
    const bool wide = segment.layout->is_pgo_64();
    const std::size_t head = wide ? 80 : 60;
    std::uint32_t covered = 0;
    for (std::uint32_t i = 0; i < blocks; ++i) {
        const std::string_view record_bytes(reinterpret_cast<const char*>(record.bytes),
                                            segment.record.size());
        const std::uint64_t bits =
            number_at(record_bytes, head + (wide ? 8 : 4) * std::size_t{i}, wide ? 8 : 4);
        const float count =
            wide ? static_cast<float>(bits) : std::bit_cast<float>(static_cast<std::uint32_t>(bits));
        const float read = DPI_counter_get(record, i);
        require(std::memcmp(&read, &count, sizeof read) == 0, "a counter");
        covered += count >= 1.0F ? 1 : 0;
        if (DPI_has_line_info(record)) {
            const std::size_t from_end = (std::size_t{blocks} - i) * 8;
            require(from_end <= segment.record.size(), "the positions lie in the record");
            DPI_block_position_get(record, i);
        }
    }
    require(DPI_covered_blocks(record) == covered, "number of covered blocks");
    DPI_entry_frequency(record);
    for (std::uint32_t i = 0; i < DPI_routine_count_get(record); ++i) {
        const std::uint64_t place = DPI_routine_name_get(record, i);
        require(pgopti_Read_String(file, "p", place) == text_at(bytes, place), "a routine name");
    }
    const std::uint64_t table = DPI_vtbl_name_get(record);
    require(pgopti_Read_String(file, "p", table) == text_at(bytes, table), "name of a virtual table");
}

/// True when the record holds the offset of a routine name that no seek can reach.
static bool is_unreachable(const DPI_INDEX_ENTRY& entry, std::string_view bytes) {
    if ((number_at(bytes, entry.position, 1) & 0x40) == 0)
        return false;
    const std::uint64_t third_group = number_at(bytes, entry.position + 24, 4);
    std::uint64_t place = entry.position + 80 + third_group * (8 + 96);
    place += 8 * (number_at(bytes, entry.position + 16, 4) + number_at(bytes, entry.position + 20, 4));
    const std::uint64_t end = place + 8 * number_at(bytes, entry.position + 12, 4);
    for (; place < end; place += 8)
        if (number_at(bytes, place, 8) >> 63 != 0)
            return true;
    return false;
}

/// `*fails` is set before a record is asked for that must end the run.
static void check_segments(DPI_FILE* file, std::string_view bytes, bool one_width, bool* fails) {
    std::vector<std::string> keys;
    for (const DPI_INDEX_ENTRY& entry : file->index)
        keys.push_back(key_of(entry));
    bool sorted = true;
    for (std::size_t i = 1; i < keys.size(); ++i)
        sorted = sorted && keys[i - 1] <= keys[i];
    const char* source = nullptr;
    const char* function = nullptr;
    std::size_t seen = 0;
    for (PGOPTI_Get_First_File_Function_Pair(file, &source, &function); source;
         PGOPTI_Get_Next_File_Function_Pair(file, &source, &function)) {
        const DPI_INDEX_ENTRY* entry = pgopti_Get_Pgopti_Name(file, source, function);
        require(entry || !sorted, "a record of a sorted profile is found");
        require(!entry || key_of(*entry) == keys[seen], "the record that was asked for");
        ++seen;
        *fails = entry && is_unreachable(*entry, bytes);
        DPI_SEGMENT* segment = PGOPTI_Get_Segment(file, "p", source, function);
        require((segment != nullptr) == (entry != nullptr), "a record that is found can be read");
        if (segment && one_width)
            check_record(file, *segment, bytes);
        PGOPTI_Free_Segment(segment);
    }
    require(seen == keys.size(), "the iteration meets every record");
    const DPI_INDEX_ENTRY* absent = pgopti_Get_Pgopti_Name(file, "absent", "");
    require(!absent || key_of(*absent) == "absent''", "a key that is not there");
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    scratch().put("p", bytes);
    DPI_FILE* file = nullptr;
    bool one_width = false;
    bool fails = false;
    const outcome end = run_in_scratch([&] {
        file = PGOPTI_Open_Dpi_File("p");
        if (!file)
            return;
        one_width = check_index(*file, bytes);
        check_segments(file, bytes, one_width, &fails);
    });
    require(!file || !one_width || end.ended == fails, "no failure once a profile of one width is open");
    require(file || end.ended || end.errors.find("bad magic") != std::string::npos,
            "a warning for what is no profile");
    PGOPTI_Close_Dpi_File(file);
    return 0;
}
