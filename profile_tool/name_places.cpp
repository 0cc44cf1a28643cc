#include "profile_tool/name_places.h"

#include <algorithm>
#include <utility>

namespace {

/// Follows the names of record after record as one placing would have them.
struct placing_walk {
    bool holds = true;
    bool has_base = false;
    std::uint64_t base = 0; ///< offset of the first name
    std::uint64_t size = 0; ///< of the names up to here

    /// The next name of the area has this offset and length.
    void expect(std::uint64_t offset, std::size_t length) {
        if (!std::exchange(has_base, true))
            base = offset;
        holds = holds && offset == base + size;
        size += length + 1;
    }
};

/// A record's place of its file name, for those that are shared.
struct file_place {
    std::uint64_t offset;
    std::string name;
};

struct name_walks {
    placing_walk apart;
    placing_walk shared;            ///< of the names behind the file names
    std::vector<file_place> places; ///< of file names, where they differ from the record before
};

} // namespace

bool is_line_end(std::string_view name) {
    constexpr std::string_view blanks = " \t\v\f\r";
    return name.find_first_of(std::string_view("\n\0", 2)) == name.npos &&
           (name.empty() || blanks.find(name.front()) == blanks.npos);
}

static bool walk_record(DPI_CURSOR& cursor, name_walks* walks, name_places* places) {
    const DPI_RECORD record = cursor.record();
    const bool ends_so = DPI_areas_get(record).end == record.bytes + DPI_record_size_get(record);
    places->is_sayable = places->is_sayable && ends_so && is_line_end(cursor.file_name()) &&
                         is_line_end(cursor.function_name());
    const std::uint64_t function = DPI_key_func_name_get(record);
    const std::size_t length = cursor.function_name().size();
    std::string name;
    walks->shared.expect(function, length);
    for (std::uint32_t i = 0; i < DPI_routine_count_get(record); ++i) {
        const std::uint64_t offset = DPI_routine_name_get(record, i);
        if (!cursor.read_name(offset, &name))
            return false;
        places->is_sayable = places->is_sayable && is_line_end(name);
        walks->apart.expect(offset, name.size());
        if (offset != function)
            walks->shared.expect(offset, name.size());
    }
    const std::uint64_t file = DPI_file_name_get(record);
    if (walks->places.empty() || walks->places.back().offset != file)
        walks->places.push_back({file, std::string(cursor.file_name())});
    walks->apart.expect(file, cursor.file_name().size());
    walks->apart.expect(function, length);
    if (const std::uint64_t table = DPI_vtbl_name_get(record)) {
        if (!cursor.read_name(table, &name))
            return false;
        places->is_sayable =
            places->is_sayable && !name.empty() && name.find_first_of(" \t\v\f\r\n") == name.npos;
        walks->apart.expect(table, name.size());
        walks->shared.expect(table, name.size());
    }
    return true;
}

/// Reads the file names between the records and the other names. False when those of the records are not the
/// first ones of their text.
static bool find_files(DPI_CURSOR& cursor, const name_walks& walks, std::uint64_t start,
                       name_places* places) {
    std::vector<std::pair<std::string, std::uint64_t>> offsets;
    std::string name;
    std::uint64_t at = start;
    while (at < walks.shared.base && cursor.read_name(at, &name)) {
        offsets.emplace_back(name, at);
        places->files.push_back(name);
        at += name.size() + 1;
    }
    std::sort(offsets.begin(), offsets.end());
    return at == walks.shared.base &&
           std::all_of(walks.places.begin(), walks.places.end(), [&](const file_place& place) {
               const auto found =
                   std::lower_bound(offsets.begin(), offsets.end(), std::pair(place.name, std::uint64_t{0}));
               return found != offsets.end() && found->first == place.name && found->second == place.offset;
           });
}

bool find_names(DPI_CURSOR& cursor, name_places* places) {
    name_walks walks;
    std::string previous;
    std::uint64_t end = PGOPTI_HEADER_SIZE; // of the records
    const std::string_view text = cursor.header_text();
    const std::string_view said = text.substr(0, text.find('\0'));
    places->is_sayable = said.size() < text.size() && is_line_end(said) &&
                         text.find_first_not_of('\0', said.size()) == text.npos;
    while (cursor.next()) {
        places->is_ascending = places->is_ascending && previous <= cursor.key();
        previous = cursor.key();
        if (!walk_record(cursor, &walks, places))
            return false;
        end = cursor.record_position() + DPI_record_size_get(cursor.record());
    }
    const auto ends_file = [&](const placing_walk& walk) {
        return walk.holds && walk.base + walk.size == cursor.file_size();
    };
    if (walks.places.empty())
        walks.apart.base = walks.shared.base = cursor.file_size();
    if (ends_file(walks.apart) && walks.apart.base == end)
        places->placing = name_placing::apart;
    else if (ends_file(walks.shared) && find_files(cursor, walks, end, places))
        places->placing = name_placing::shared;
    return cursor.error().empty();
}
