#include "profile_tool/check_command.h"

#include "common/fatal.h"
#include "common/platform.h"
#include "common/printable.h"
#include "common/remedy.h"
#include "common/source_text.h"
#include "profile/dpi_content.h"
#include "profile/dpi_cursor.h"
#include "profile_tool/block_tail.h"
#include "profile_tool/findings.h"
#include "profile_tool/page_collisions.h"
#include "profile_tool/static_lines.h"
#include "profile_tool/tool_message.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <optional>
#include <set>
#include <sys/stat.h>
#include <unordered_map>
#include <vector>

namespace {

/// The static profile, for looking up.
struct static_facts {
    std::unordered_map<std::string, std::vector<std::int32_t>> blocks; ///< of each key, as records have it
    std::set<std::string> files;
};

/// A check of the records, one after the other.
class record_check {
  public:
    record_check(const static_facts& facts, findings* found) : facts_(facts), found_(*found) {}

    void examine(const DPI_CURSOR& cursor);

  private:
    void examine_key(const DPI_CURSOR& cursor);
    void examine_blocks(const DPI_CURSOR& cursor);
    void examine_counters(const DPI_CURSOR& cursor);
    void examine_positions(const DPI_CURSOR& cursor);

    const static_facts& facts_;
    findings& found_;
    std::string previous_key_;
    bool is_first_ = true;
    std::string source_file_; ///< whose text is at hand
    std::optional<source_text> source_;
};

} // namespace

static std::string record_name(const DPI_CURSOR& cursor) {
    return printable(cursor.file_name()) + ": " + printable(cursor.function_name());
}

void record_check::examine_key(const DPI_CURSOR& cursor) {
    const int order = is_first_ ? 1 : cursor.key().compare(previous_key_);
    is_first_ = false;
    if (order <= 0)
        found_.add(order == 0 ? FINDING_DOUBLE : FINDING_UNSORTED, [&] { return record_name(cursor); });
    previous_key_ = cursor.key();
}

/// Blocks that every run has.
static std::size_t common_blocks(DPI_RECORD record) {
    if (!DPI_has_line_info(record))
        return DPI_block_count_get(record);
    return find_block_parts({reinterpret_cast<const char*>(DPI_areas_get(record).positions),
                             8 * std::size_t{DPI_block_count_get(record)}})
        .common;
}

void record_check::examine_blocks(const DPI_CURSOR& cursor) {
    const auto routine = facts_.blocks.find(std::string(cursor.key()));
    if (routine == facts_.blocks.end())
        return found_.add(FINDING_NO_ROUTINE, [&] { return record_name(cursor); });
    const std::uint32_t blocks = DPI_block_count_get(cursor.record());
    const std::vector<std::int32_t>& known = routine->second;
    const auto knows = [&](std::size_t number) {
        return std::find(known.begin(), known.end(), static_cast<std::int64_t>(number)) != known.end();
    };
    if (!knows(blocks) && !knows(common_blocks(cursor.record())))
        found_.add(FINDING_BLOCKS, [&] {
            return record_name(cursor) + " has " + std::to_string(blocks) + ", not " +
                   std::to_string(known.front());
        });
}

void record_check::examine_counters(const DPI_CURSOR& cursor) {
    const DPI_RECORD record = cursor.record();
    const DPI_AREAS areas = DPI_areas_get(record);
    if (record.layout->is_pgo_64())
        return;
    for (std::uint64_t i = 0; i < areas.counter_count; ++i) {
        std::uint64_t count = 0;
        // Infinity counts as the highest number there, but it is no count.
        if (DPI_whole_counter_get(areas, *record.layout, i, &count) && count != UINT64_MAX)
            continue;
        found_.add(FINDING_COUNTERS, [&] { return record_name(cursor) + ", counter " + std::to_string(i); });
        return;
    }
}

void record_check::examine_positions(const DPI_CURSOR& cursor) {
    const DPI_RECORD record = cursor.record();
    if (!source_ || source_file_ != cursor.file_name()) {
        source_file_ = cursor.file_name();
        source_.emplace(source_file_);
    }
    if (!source_->readable() || !DPI_has_line_info(record))
        return;
    for (std::uint32_t i = 0; i < DPI_block_count_get(record); ++i) {
        const DPI_POSITION stored = DPI_block_position_get(record, i);
        const source_position position = {std::max(stored.line, 1U), std::max(stored.column, 1U)};
        if (source_->offset_of(position))
            continue;
        found_.add(FINDING_POSITIONS, [&] {
            return record_name(cursor) + " at " + std::to_string(stored.line) + ":" +
                   std::to_string(stored.column);
        });
        return;
    }
}

void record_check::examine(const DPI_CURSOR& cursor) {
    examine_key(cursor);
    examine_blocks(cursor);
    examine_counters(cursor);
    examine_positions(cursor);
}

/// Whether a source file is there and a report could read it. A disk that cannot tell ends the run.
static bool is_there(const std::string& file, struct stat* status) {
    if (stat(file.c_str(), status) == 0)
        return S_ISREG(status->st_mode);
    if (errno != ENOENT && errno != ENOTDIR && errno != EACCES && errno != ELOOP && errno != ENAMETOOLONG)
        tool_error("cannot examine " + printable(file) + ": " + reason_of(errno));
    return false;
}

static void check_sources(const std::set<std::string>& files, std::int64_t profile_time, findings* found) {
    for (const std::string& file : files) {
        struct stat status;
        if (!is_there(file, &status))
            found->add(FINDING_MISSING, [&] { return printable(file); });
        else if (modification_time(status) > profile_time)
            found->add(FINDING_NEWER, [&] { return printable(file); });
    }
    for (const page_collision& pages : find_page_collisions(files))
        found->add(FINDING_PAGES, [&] {
            return printable(pages.source) + " and " + printable(pages.other) + ": " + printable(pages.page);
        });
}

void check_profile(const tool_options& options) {
    const std::string& path = options.profiles.front();
    DPI_CURSOR cursor;
    if (!cursor.open(path))
        tool_error(cursor.error());
    static_facts facts;
    std::string error;
    const auto take = [&](const SPI_RECORD& record) {
        facts.blocks[record.file_name + "'" + record.proc_name + "'"].push_back(record.block_count);
        facts.files.insert(record.file_name);
    };
    if (!read_static_lines(options.spi.empty() ? static_profile_beside(path) : options.spi.front(), take,
                           &error))
        tool_error(error);
    findings found;
    record_check records(facts, &found);
    while (cursor.next()) {
        records.examine(cursor);
        facts.files.emplace(cursor.file_name());
    }
    if (!cursor.error().empty())
        tool_error(cursor.error());
    check_sources(facts.files, cursor.modified(), &found);
    found.print();
    if (!found.is_empty())
        pgt_Exit(2);
}
