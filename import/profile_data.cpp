#include "import/profile_data.h"

#include "import/function_starts.h"
#include "import/record_order.h"
#include "import/region_blocks.h"
#include "import/source_outline.h"

#include <algorithm>
#include <cstring>
#include <optional>

namespace {

/// The places of a file's functions, and which of them lie inside which.
struct file_extents {
    std::vector<source_extent> extents;                ///< ascending by start, the longer first; each once
    std::vector<function_start> starts;                ///< for each extent
    std::vector<std::vector<nested_function>> nested;  ///< for each extent, those directly inside
    std::vector<std::optional<source_position>> marks; ///< for each extent that shares the line of its start
                                                       ///< with code of another one, its first code
};

} // namespace

/// Compares two texts as if each were followed by an apostrophe, as in the keys of the profile.
static int compare_with_apostrophe(const std::string& a, const std::string& b) {
    const std::size_t shorter = std::min(a.size(), b.size());
    const int order = std::memcmp(a.data(), b.data(), shorter);
    if (order != 0 || a.size() == b.size())
        return order;
    if (a.size() == shorter)
        return '\'' <= static_cast<unsigned char>(b[shorter]) ? -1 : 1;
    return static_cast<unsigned char>(a[shorter]) < '\'' ? -1 : 1;
}

/// Indices of the files in the order of their keys.
static std::vector<std::uint32_t> file_order(const std::vector<std::string>& files) {
    std::vector<std::uint32_t> order(files.size());
    for (std::uint32_t i = 0; i < order.size(); ++i)
        order[i] = i;
    std::sort(order.begin(), order.end(), [&](std::uint32_t a, std::uint32_t b) {
        return compare_with_apostrophe(files[a], files[b]) < 0;
    });
    return order;
}

/// For each file its functions, ascending by name; those of one name in the order of addition.
static std::vector<std::vector<std::uint32_t>> functions_by_file(record_store* store) {
    const std::vector<stored_function>& functions = store->functions();
    std::vector<std::vector<std::uint32_t>> by_file(store->files().size());
    for (std::uint32_t i = 0; i < functions.size(); ++i)
        by_file[functions[i].file].push_back(i);
    for (std::vector<std::uint32_t>& indices : by_file) {
        std::stable_sort(indices.begin(), indices.end(), [&](std::uint32_t a, std::uint32_t b) {
            return compare_with_apostrophe(functions[a].name, functions[b].name) < 0;
        });
    }
    return by_file;
}

static bool longer_first(const source_extent& a, const source_extent& b) {
    return a.start != b.start ? a.start < b.start : a.end > b.end;
}

static file_extents find_nested(const record_store& store, const std::vector<std::uint32_t>& indices,
                                const source_text& source) {
    file_extents result;
    for (const std::uint32_t index : indices)
        result.extents.push_back(store.functions()[index].extent);
    std::vector<source_extent>& extents = result.extents;
    std::sort(extents.begin(), extents.end(), longer_first);
    extents.erase(std::unique(extents.begin(), extents.end()), extents.end());
    result.starts = find_function_starts(source, source_outline(source), extents);
    result.nested.resize(extents.size());
    result.marks.resize(extents.size());
    const std::vector<source_extent> nothing_skipped;
    code_cursor cursor(source, nothing_skipped, {kLargestLine, kLargestColumn});
    std::vector<std::size_t> open;   // extents around the current one, the innermost last
    source_position behind = {0, 0}; // where the last of the functions that have ended does
    for (std::size_t i = 0; i < extents.size(); ++i) {
        for (; !open.empty() && extents[open.back()].end <= extents[i].start; open.pop_back())
            behind = std::max(behind, extents[open.back()].end);
        const function_start& start = result.starts[i];
        const bool is_nested = !open.empty() && extents[open.back()].start < extents[i].start &&
                               extents[i].end < extents[open.back()].end;
        if (!start.starts_line && (is_nested || behind.line == start.position.line))
            result.marks[i] = first_code_inside(extents[i], &cursor);
        if (is_nested)
            result.nested[open.back()].push_back(
                {{start.position, extents[i].end}, result.marks[i] ? result.marks[i]->line : start.line});
        open.push_back(i);
    }
    return result;
}

static bool same_places(const std::vector<profile_block>& a, const std::vector<profile_block>& b) {
    return std::equal(
        a.begin(), a.end(), b.begin(), b.end(),
        [](const profile_block& x, const profile_block& y) { return x.position == y.position; });
}

/// The order in which functions of one name are preferred: the one with more blocks, then the one with the
/// lower positions. Counts must not decide, or two runs of one program could not be compared.
static bool is_preferred(const std::vector<profile_block>& a, const std::vector<profile_block>& b) {
    if (a.size() != b.size())
        return a.size() > b.size();
    return std::lexicographical_compare(
        a.begin(), a.end(), b.begin(), b.end(),
        [](const profile_block& x, const profile_block& y) { return x.position < y.position; });
}

namespace {

/// Makes the routines of one source file.
class file_builder {
  public:
    /// `file`: the last one of the profile.
    file_builder(record_store* store, const source_names& names, const std::string& file,
                 const std::vector<std::uint32_t>& indices, profile_data* profile)
        : store_(*store), indices_(indices), profile_(*profile), source_(names.path_of(file)),
          extents_(find_nested(*store, indices, source_)) {}

    void build();

  private:
    /// A function as one or several entries of the store have it.
    struct candidate {
        std::vector<profile_block> blocks;
        source_extent extent;
        std::uint64_t count;
    };

    candidate lay_out(stored_function* function);
    void merge(candidate* best, candidate other);
    void add_routine(const std::string& name, candidate function);
    std::size_t extent_index(const source_extent& extent) const;

    record_store& store_;
    const std::vector<std::uint32_t>& indices_;
    profile_data& profile_;
    source_text source_;
    file_extents extents_;
    block_builder block_builder_{source_};
};

std::size_t file_builder::extent_index(const source_extent& extent) const {
    const auto found =
        std::lower_bound(extents_.extents.begin(), extents_.extents.end(), extent, longer_first);
    return static_cast<std::size_t>(found - extents_.extents.begin());
}

/// The regions are released: the blocks replace them.
file_builder::candidate file_builder::lay_out(stored_function* function) {
    const std::vector<source_region> regions = std::move(function->regions);
    function->regions = {};
    const std::size_t index = extent_index(function->extent);
    return {block_builder_.build(regions, function->extent, extents_.starts[index].position,
                                 extents_.nested[index], extents_.marks[index]),
            function->extent, function->count};
}

void file_builder::merge(candidate* best, candidate other) {
    if (same_places(best->blocks, other.blocks)) {
        best->count = add_counts(best->count, other.count);
        for (std::size_t i = 0; i < best->blocks.size(); ++i)
            best->blocks[i].count = add_counts(best->blocks[i].count, other.blocks[i].count);
        return;
    }
    profile_.different.add(profile_.profile.files.back());
    if (is_preferred(other.blocks, best->blocks))
        *best = std::move(other);
}

void file_builder::add_routine(const std::string& name, candidate function) {
    count_last_block(&function.blocks, function.count);
    if (source_.readable()) {
        for (const profile_block& block : function.blocks)
            if (!source_.contains(block.position))
                profile_.misplaced.add(profile_.profile.files.back());
    }
    const std::size_t index = extent_index(function.extent);
    const std::optional<source_position>& mark = extents_.marks[index];
    PGOPTI_ROUTINE routine = {};
    routine.file = static_cast<std::uint32_t>(profile_.profile.files.size() - 1);
    routine.name = name;
    routine.line = mark ? mark->line : extents_.starts[index].line;
    routine.block_count = static_cast<std::uint32_t>(function.blocks.size());
    routine.has_record = function.count > 0;
    if (routine.has_record)
        routine.blocks = stored_blocks(function.blocks);
    profile_.profile.routines.push_back(std::move(routine));
}

void file_builder::build() {
    std::vector<stored_function>& functions = store_.functions();
    for (std::size_t i = 0; i < indices_.size();) {
        const std::string& name = functions[indices_[i]].name;
        candidate best = lay_out(&functions[indices_[i]]);
        for (++i; i < indices_.size() && functions[indices_[i]].name == name; ++i)
            merge(&best, lay_out(&functions[indices_[i]]));
        add_routine(name, std::move(best));
    }
}

} // namespace

profile_data build_profile(record_store* store, const source_names& names) {
    profile_data data;
    PGOPTI_PROFILE& profile = data.profile;
    const std::vector<std::vector<std::uint32_t>> by_file = functions_by_file(store);
    bool apostrophe = false;
    for (const std::uint32_t file : file_order(store->files())) {
        const std::string& name = store->files()[file];
        profile.files.push_back(name);
        file_builder(store, names, name, by_file[file], &data).build();
        apostrophe = apostrophe || name.find('\'') != std::string::npos;
    }
    if (apostrophe) // in a file name; it can make the keys of two files interleave
        sort_records(&profile);
    store->functions().clear();
    return data;
}
