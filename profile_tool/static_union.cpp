#include "profile_tool/static_union.h"

#include "common/printable.h"
#include "common/remedy.h"
#include "profile/dpi_cursor.h"
#include "profile/spi_writer.h"

#include <algorithm>
#include <cerrno>
#include <tuple>
#include <utility>

static bool fail_read(const std::string& path, std::string* error) {
    *error = "cannot read " + printable(path) + ": " + reason_of(errno);
    return false;
}

/// True in `*same` when the file holds these bytes.
static bool compare_file(const std::string& path, std::string_view bytes, bool* same, std::string* error) {
    const file_ptr stream = open_static_profile(path, error);
    if (!stream)
        return false;
    std::string piece(std::size_t{1} << 16, '\0');
    *same = true;
    while (*same) {
        errno = 0;
        const std::size_t size = std::fread(piece.data(), 1, piece.size(), stream.get());
        if (std::ferror(stream.get()))
            return fail_read(path, error);
        if (size == 0)
            break;
        *same = bytes.substr(0, size) == std::string_view(piece.data(), size);
        bytes.remove_prefix(std::min(size, bytes.size()));
    }
    *same = *same && bytes.empty();
    return true;
}

static bool read_whole(const std::string& path, std::string* bytes, std::string* error) {
    const file_ptr stream = open_static_profile(path, error);
    if (!stream)
        return false;
    errno = 0;
    char piece[std::size_t{1} << 14];
    while (const std::size_t size = std::fread(piece, 1, sizeof piece, stream.get()))
        bytes->append(piece, size);
    return !std::ferror(stream.get()) || fail_read(path, error);
}

bool static_union::add(const std::string& path, const std::string& dynamic, std::int64_t time,
                       std::string* error) {
    if (!std::exchange(has_first_, true)) {
        first_path_ = path;
        first_time_ = time;
        first_dynamic_.push_back(dynamic);
        // Its lines are put into order when there is one that differs; a corrupt one is refused at once.
        return read_whole(path, &first_, error) && read_static_lines(
                                                       path, [](const SPI_RECORD&) {}, error);
    }
    if (is_uniform_) {
        if (!compare_file(path, first_, &is_uniform_, error))
            return false;
        if (is_uniform_) {
            first_time_ = std::max(first_time_, time);
            first_dynamic_.push_back(dynamic);
            return true;
        }
        if (!start_map(error))
            return false;
    }
    routine_map lines;
    paths_.push_back(path);
    keys_.clear();
    return read_keys(dynamic, error) && read_static_lines(path, taker(&lines, time), error) &&
           unite(lines, error);
}

/// The first ones were the same; now there is one that is not.
bool static_union::start_map(std::string* error) {
    routine_map lines;
    paths_.push_back(first_path_);
    for (const std::string& dynamic : first_dynamic_)
        if (!read_keys(dynamic, error))
            return false;
    const bool read =
        read_static_lines(first_, first_path_, taker(&lines, first_time_), error) && unite(lines, error);
    first_ = {};
    first_dynamic_ = {};
    return read;
}

/// Adds the functions that ran in a dynamic profile.
bool static_union::read_keys(const std::string& dynamic, std::string* error) {
    DPI_CURSOR cursor;
    if (dynamic.empty())
        return true;
    if (cursor.open(dynamic, locked_))
        while (cursor.next()) {
            std::int64_t& time = keys_.try_emplace(std::string(cursor.key()), INT64_MIN).first->second;
            time = std::max(time, cursor.modified());
        }
    *error = cursor.error();
    return error->empty();
}

/// Puts lines of the static profile that was added to paths_ last into a map.
static_line_taker static_union::taker(routine_map* added, std::int64_t time) const {
    return [this, added, time, path = paths_.size() - 1](const SPI_RECORD& record) {
        const auto [place, is_new] = added->try_emplace(record.file_name + ' ' + record.proc_name);
        routine_lines& lines = place->second;
        if (is_new) {
            const auto ran = keys_.find(record.file_name + "'" + record.proc_name + "'");
            lines.has_run = ran != keys_.end();
            lines.time = lines.has_run ? ran->second : time;
            lines.path = path;
        }
        lines.lines.push_back({record.line, record.block_count, record.second_name, record.flag});
    };
}

/// Whether two that are not the same may stand for one routine.
bool static_union::agree(const routine_lines& a, const routine_lines& b) {
    return !(a.has_run && b.has_run) && a.lines.size() == 1 && b.lines.size() == 1 &&
           a.lines[0].block_count == b.lines[0].block_count;
}

/// Whether `a` is to stay and not `b`, which is not the same. Whatever the order, the same one stays.
bool static_union::is_better(const routine_lines& a, const routine_lines& b) const {
    const std::int64_t time_a = newest_ ? a.time : 0;
    const std::int64_t time_b = newest_ ? b.time : 0;
    return std::tie(a.has_run, time_a, a.lines) > std::tie(b.has_run, time_b, b.lines);
}

bool static_union::refuse(const std::string& key, const routine_lines& known, const routine_lines& lines,
                          std::string* error) const {
    const std::size_t blank = key.find(' ');
    *error = "routine " + printable(key.substr(blank + 1)) + " of " + printable(key.substr(0, blank)) +
             " is not the same in " + printable(paths_[lines.path]) + " and in " +
             printable(paths_[known.path]) + "; -newest takes that of the profile that was changed last";
    return false;
}

bool static_union::unite(routine_map& added, std::string* error) {
    for (auto& [key, lines] : added) {
        std::sort(lines.lines.begin(), lines.lines.end());
        lines.lines.erase(std::unique(lines.lines.begin(), lines.lines.end()), lines.lines.end());
        const auto [place, is_new] = routines_.try_emplace(key);
        routine_lines& known = place->second;
        if (!is_new && known.lines == lines.lines) {
            // Where the routine ran, a newer profile in which it did not run makes its counts no newer.
            std::tie(known.has_run, known.time) =
                std::max(std::pair(known.has_run, known.time), std::pair(lines.has_run, lines.time));
            continue;
        }
        if (!is_new && !newest_ && !agree(known, lines))
            return refuse(key, known, lines, error);
        if (is_new || is_better(lines, known))
            known = std::move(lines);
    }
    return true;
}

void static_union::write(std::FILE* stream) const {
    if (is_uniform_) {
        std::fwrite(first_.data(), 1, first_.size(), stream);
        return;
    }
    std::vector<const routine_map::value_type*> sorted;
    for (const auto& routine : routines_)
        sorted.push_back(&routine);
    std::sort(sorted.begin(), sorted.end(), [](const auto* a, const auto* b) { return a->first < b->first; });
    std::vector<SPI_RECORD_VIEW> records;
    for (const auto* routine : sorted) {
        const std::string_view key = routine->first;
        const std::size_t blank = key.find(' ');
        for (const line_facts& facts : routine->second.lines)
            records.push_back({key.substr(0, blank), facts.second_name, key.substr(blank + 1), facts.line,
                               facts.block_count, facts.flag});
    }
    PGOPTI_SPI_Write_Records(stream, records);
}
