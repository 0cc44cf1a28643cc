#include "import/main_file.h"

#include "common/message.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace {

/// Region kinds of the export.
enum export_kind { kCode = 0, kExpansion = 1, kSkipped = 2, kGap = 3 };

/// What the messages of one function need.
struct message_place {
    const std::string& input;
    const export_function& function;
};

} // namespace

[[noreturn]] static void bad_number(const message_place& place, const char* what, std::int64_t value) {
    end_with_error("%s: function \"%s\" has %s %lld, which cannot be; make it again", place.input.c_str(),
                   printable(place.function.name).c_str(), what, static_cast<long long>(value));
}

static void check_range(const message_place& place, const char* what, std::int64_t value,
                        std::int64_t largest) {
    if (value < 0 || value > largest)
        bad_number(place, what, value);
}

static void check_region(const message_place& place, const export_region& region) {
    const std::int64_t files = static_cast<std::int64_t>(place.function.filenames.size());
    check_range(place, "a region starting in line", region[kLineStart], kLargestLine);
    check_range(place, "a region starting in column", region[kColumnStart], kLargestColumn);
    check_range(place, "a region ending in line", region[kLineEnd], kLargestLine);
    check_range(place, "a region ending in column", region[kColumnEnd], kLargestColumn);
    check_range(place, "an execution count of", region[kExecutionCount], kLargestCount);
    check_range(place, "a region with file number", region[kFileID], files - 1);
    if (region[kKind] == kExpansion)
        check_range(place, "an expansion to file number", region[kExpandedFileID], files - 1);
    if (std::tie(region[kLineEnd], region[kColumnEnd]) < std::tie(region[kLineStart], region[kColumnStart]))
        bad_number(place, "a region that ends before its start in line", region[kLineStart]);
}

/// Whether check_region would find no fault: all at once, as nearly all regions have none.
static bool is_sound(const export_region& region, std::size_t files) {
    const auto is_within = [&region](export_region_field field, std::uint64_t largest) {
        return static_cast<std::uint64_t>(region[field]) <= largest;
    };
    const bool ends_behind_start = region[kLineStart] != region[kLineEnd]
                                       ? region[kLineStart] < region[kLineEnd]
                                       : region[kColumnStart] <= region[kColumnEnd];
    return is_within(kLineStart, kLargestLine) && is_within(kColumnStart, kLargestColumn) &&
           is_within(kLineEnd, kLargestLine) && is_within(kColumnEnd, kLargestColumn) &&
           is_within(kExecutionCount, kLargestCount) && static_cast<std::uint64_t>(region[kFileID]) < files &&
           (region[kKind] != kExpansion || static_cast<std::uint64_t>(region[kExpandedFileID]) < files) &&
           ends_behind_start;
}

/// Checks the regions and returns the lowest file number that no expansion leads to. `*alone`: there are no
/// expansions.
static std::int64_t main_file_number(const message_place& place, bool* alone) {
    *alone = true;
    const std::size_t files = place.function.filenames.size();
    for (const export_region& region : place.function.regions) {
        if (!is_sound(region, files))
            check_region(place, region);
        *alone = *alone && region[kKind] != kExpansion;
    }
    if (*alone && files != 0) // mostly
        return 0;
    std::vector<bool> expanded(files);
    for (const export_region& region : place.function.regions) {
        if (region[kKind] == kExpansion)
            expanded[static_cast<std::size_t>(region[kExpandedFileID])] = true;
    }
    const auto main = std::find(expanded.begin(), expanded.end(), false);
    if (main == expanded.end())
        end_with_error("%s: function \"%s\" has no main file; make it again", place.input.c_str(),
                       printable(place.function.name).c_str());
    return main - expanded.begin();
}

/// A line or column of 0 is the first one.
static std::uint32_t line_or_column(std::int64_t value) {
    return static_cast<std::uint32_t>(std::max<std::int64_t>(value, 1));
}

static source_region to_source_region(const export_region& region, region_kind kind) {
    return {
        .start = {line_or_column(region[kLineStart]), line_or_column(region[kColumnStart])},
        .end_line = line_or_column(region[kLineEnd]),
        .end_column = line_or_column(region[kColumnEnd]) & kLargestColumn,
        .kind_bits = static_cast<std::uint32_t>(kind) & 3U,
        .count = static_cast<std::uint64_t>(region[kExecutionCount]),
    };
}

/// A place in one number, which is faster to compare.
static std::uint64_t one_number(std::int64_t line, std::int64_t column) {
    return (static_cast<std::uint64_t>(line) << 32) | static_cast<std::uint64_t>(column);
}

namespace {

/// The regions of one function's main file.
class main_file_regions {
  public:
    /// `alone`: the function has no expansions. `gap_ends` is used as memory.
    main_file_regions(const export_function& function, std::int64_t file, bool alone,
                      std::vector<std::uint64_t>* gap_ends)
        : function_(function), file_(file), gap_ends_(*gap_ends) {
        gap_ends_.clear();
        if (alone) // gaps are of interest to expansions only
            return;
        for (const export_region& region : function.regions) {
            if (region[kFileID] == file && region[kKind] == kGap)
                gap_ends_.push_back(one_number(region[kLineEnd], region[kColumnEnd]));
        }
        std::sort(gap_ends_.begin(), gap_ends_.end());
    }

    /// Appends the regions; false when none of them is counted code.
    bool collect(std::vector<source_region>* regions) const {
        const std::size_t before = regions->size();
        if (collect_as_code(regions, [this](const export_region& region) { return is_code(region); }))
            return true;
        regions->resize(before);
        return collect_as_code(regions,
                               [](const export_region& region) { return region[kKind] == kExpansion; });
    }

  private:
    /// A macro that is the whole body of an if, else or loop is known by its expansion only. A gap leads to
    /// it.
    bool is_code(const export_region& region) const {
        if (region[kKind] == kExpansion)
            return std::binary_search(gap_ends_.begin(), gap_ends_.end(),
                                      one_number(region[kLineStart], region[kColumnStart]));
        return region[kKind] == kCode;
    }

    template <typename Predicate>
    bool collect_as_code(std::vector<source_region>* regions, Predicate is_counted) const {
        bool found = false;
        for (const export_region& region : function_.regions) {
            if (region[kFileID] != file_) // often most of them: the text of macros from headers
                continue;
            const bool counted = is_counted(region);
            const std::int64_t kind = region[kKind];
            if (!counted && kind != kSkipped && kind != kGap)
                continue;
            const region_kind as = counted            ? region_kind::code
                                   : kind == kSkipped ? region_kind::skipped
                                                      : region_kind::gap;
            const source_region converted = to_source_region(region, as);
            if (converted.start == converted.end())
                continue;
            regions->push_back(converted);
            found = found || counted;
        }
        return found;
    }

    const export_function& function_;
    std::int64_t file_;
    std::vector<std::uint64_t>& gap_ends_; ///< ascending
};

} // namespace

/// Puts the regions in order and joins those of one extent. Parts of a macro argument that is used twice come
/// twice.
static void sort_and_join(std::vector<source_region>* regions) {
    const auto extent = [](const source_region& r) {
        return std::pair(one_number(r.start.line, r.start.column),
                         one_number(~r.end_line, (kLargestColumn - r.end_column) << 2 | r.kind_bits));
    };
    const auto before = [&](const source_region& a, const source_region& b) { return extent(a) < extent(b); };
    const auto not_before = [&](const source_region& a, const source_region& b) { return !before(a, b); };
    if (std::adjacent_find(regions->begin(), regions->end(), not_before) == regions->end())
        return; // they often are in order, and each is another one
    std::sort(regions->begin(), regions->end(), before);
    std::size_t kept = 0;
    for (std::size_t i = 0; i < regions->size(); ++i) {
        const source_region region = (*regions)[i];
        if (kept > 0 && extent((*regions)[kept - 1]) == extent(region))
            (*regions)[kept - 1].count = add_counts((*regions)[kept - 1].count, region.count);
        else
            (*regions)[kept++] = region;
    }
    regions->resize(kept);
}

/// `regions` are in order, and one of them is counted.
static source_extent function_extent(const std::vector<source_region>& regions) {
    source_extent extent = {};
    bool first = true;
    for (const source_region& region : regions) {
        if (region.kind() != region_kind::code)
            continue;
        if (first)
            extent = {region.start, region.end()};
        extent.end = std::max(extent.end, region.end());
        first = false;
    }
    return extent;
}

bool extract_main_file(const export_function& function, const std::string& input,
                       main_file_function* result) {
    const message_place place = {input, function};
    check_range(place, "an entry count of", function.count, kLargestCount);
    if (function.regions.empty())
        return false;
    bool alone = true;
    const std::int64_t file = main_file_number(place, &alone);
    result->file = function.filenames.at(static_cast<std::size_t>(file));
    result->count = static_cast<std::uint64_t>(function.count);
    result->regions.clear();
    if (!main_file_regions(function, file, alone, &result->gap_ends).collect(&result->regions))
        return false;
    sort_and_join(&result->regions);
    result->extent = function_extent(result->regions);
    return true;
}
