#include "import/gcc/line_profile.h"

#include "import/gcc/line_blocks.h"
#include "import/gcc/stretches.h"
#include "import/record_order.h"

#include <algorithm>
#include <numeric>
#include <tuple>
#include <utility>

namespace {

/// Makes the records of one source file.
class file_placer {
  public:
    file_placer(std::vector<counted_function>* functions, std::vector<std::uint32_t> indices)
        : functions_(*functions), indices_(std::move(indices)) {}

    std::vector<placed_function> place(const source_text& text);

  private:
    const counted_function& at(std::size_t i) const { return functions_[indices_[i]]; }
    void order();
    void find_starts(const source_text& text, const source_outline& outline);
    void find_code_before();
    void find_shared_lines();
    void find_called_beside();
    void place_stretches(counted_function* outside, const source_lines& source, const source_outline& outline,
                         std::vector<placed_function>* placed);
    void share_first_line(const counted_function& inner, std::size_t outer);

    std::vector<counted_function>& functions_;
    std::vector<std::uint32_t> indices_; ///< of the file's functions, ascending by start, the longer first
    std::vector<function_surroundings> surroundings_;
    std::vector<std::uint32_t> called_starts_; ///< lines on which called functions begin, ascending
};

void file_placer::order() {
    std::sort(indices_.begin(), indices_.end(), [this](std::uint32_t a, std::uint32_t b) {
        const counted_function& x = functions_[a];
        const counted_function& y = functions_[b];
        if (x.extent.start != y.extent.start)
            return x.extent.start < y.extent.start;
        if (x.extent.end != y.extent.end)
            return x.extent.end > y.extent.end;
        return std::tie(x.name, x.demangled) < std::tie(y.name, y.demangled);
    });
}

void file_placer::find_starts(const source_text& text, const source_outline& outline) {
    std::vector<source_extent> extents;
    extents.reserve(indices_.size());
    for (std::size_t i = 0; i < indices_.size(); ++i)
        extents.push_back(at(i).extent);
    const std::vector<function_start> starts = find_function_starts(text, outline, extents);
    for (std::size_t i = 0; i < indices_.size(); ++i)
        surroundings_[i].start = starts[i];
}

void file_placer::find_code_before() {
    std::uint32_t last_line = 0; // of the functions that start before this one
    for (std::size_t i = 0; i < indices_.size();) {
        const source_position start = at(i).extent.start;
        std::uint32_t group_end = last_line;
        for (; i < indices_.size() && at(i).extent.start == start; ++i) {
            surroundings_[i].code_before = start.line != 0 && last_line >= start.line;
            group_end = std::max(group_end, at(i).extent.end.line);
        }
        last_line = group_end;
    }
}

/// Where the line on which `inner` begins was executed more often than it, the rest is the outer function's.
void file_placer::share_first_line(const counted_function& inner, std::size_t outer) {
    const auto line = std::lower_bound(inner.lines.begin(), inner.lines.end(), inner.extent.start.line,
                                       [](const counted_line& a, std::uint32_t b) { return a.line < b; });
    if (line == inner.lines.end() || line->line != inner.extent.start.line || line->count <= inner.entries)
        return;
    surroundings_[outer].shared.push_back({line->line, true, false, line->count - inner.entries});
}

void file_placer::find_shared_lines() {
    std::vector<std::size_t> open; // called functions around the current one, the innermost last
    for (std::size_t i = 0; i < indices_.size(); ++i) {
        const counted_function& function = at(i);
        const source_extent extent = function.extent;
        if (function.entries == 0 || extent.start.line == 0)
            continue;
        called_starts_.push_back(extent.start.line);
        while (!open.empty() && at(open.back()).extent.end < extent.start)
            open.pop_back();
        const bool again =
            !open.empty() && at(open.back()).extent == extent; // another instance of a template
        if (!again)
            open.push_back(i);
        if (open.size() > 1)
            share_first_line(function, open[open.size() - 2]);
    }
}

/// Other instances of one template do not count: they have the same lines.
void file_placer::find_called_beside() {
    using border = std::tuple<std::uint32_t, source_position, source_position>; // line and extent
    std::vector<border> borders; // where called functions begin and end
    for (std::size_t i = 0; i < indices_.size(); ++i) {
        const source_extent extent = at(i).extent;
        if (at(i).entries == 0 || extent.start.line == 0)
            continue;
        borders.emplace_back(surroundings_[i].start.position.line, extent.start, extent.end);
        borders.emplace_back(extent.end.line, extent.start, extent.end);
    }
    std::sort(borders.begin(), borders.end());
    borders.erase(std::unique(borders.begin(), borders.end()), borders.end());
    for (std::size_t i = 0; i < indices_.size(); ++i) {
        const source_extent extent = at(i).extent;
        const std::uint32_t line = surroundings_[i].start.line;
        auto other = std::lower_bound(borders.begin(), borders.end(), border(line, {0, 0}, {0, 0}));
        if (other != borders.end() && *other == border(line, extent.start, extent.end))
            ++other;
        surroundings_[i].beside_called = other != borders.end() && std::get<0>(*other) == line;
    }
}

/// Places code outside every function that was never executed.
void file_placer::place_stretches(counted_function* outside, const source_lines& source,
                                  const source_outline& outline, std::vector<placed_function>* placed) {
    std::vector<std::uint32_t> starts;
    for (std::size_t i = 0; i < indices_.size(); ++i)
        starts.push_back(at(i).extent.start.line);
    for (std::vector<counted_line>& stretch : split_stretches(outside->lines, starts)) {
        outside->lines = std::move(stretch);
        placed->push_back(place_function(*outside, {}, called_starts_, source, outline));
    }
}

std::vector<placed_function> file_placer::place(const source_text& text) {
    const source_lines source(text);
    const source_outline outline(text);
    order();
    surroundings_.resize(indices_.size());
    find_starts(text, outline);
    find_code_before();
    find_shared_lines();
    find_called_beside();
    std::vector<placed_function> functions;
    for (std::size_t i = 0; i < indices_.size(); ++i) {
        counted_function& function = functions_[indices_[i]];
        if (function.extent.start.line == 0 && !any_executed(function.lines))
            place_stretches(&function, source, outline, &functions);
        else
            functions.push_back(place_function(function, surroundings_[i], called_starts_, source, outline));
        function.lines = {};
    }
    return functions;
}

} // namespace

/// Blocks on lines that the file does not have.
static void count_misplaced(const std::vector<placed_function>& functions, const source_lines& source,
                            const std::string& file, named_count* misplaced) {
    for (const placed_function& function : functions) {
        for (const profile_block& block : function.blocks)
            if (source.beyond_end(block.position.line))
                misplaced->add(file);
    }
}

/// Indices of the store's files in the order of their names: that of their appearance may differ from run to
/// run.
static std::vector<std::uint32_t> order_of_names(const std::vector<std::string>& files) {
    std::vector<std::uint32_t> order(files.size());
    std::iota(order.begin(), order.end(), 0U);
    std::sort(order.begin(), order.end(),
              [&files](std::uint32_t a, std::uint32_t b) { return files[a] < files[b]; });
    return order;
}

line_profile build_line_profile(line_store* store, const source_names& names) {
    line_profile result;
    store->unite_instances();
    std::vector<counted_function>& functions = store->functions();
    std::vector<std::vector<std::uint32_t>> by_file(store->files().size());
    for (std::uint32_t i = 0; i < functions.size(); ++i)
        by_file[functions[i].file].push_back(i);
    for (const std::uint32_t file : order_of_names(store->files())) {
        const std::string& name = store->files()[file];
        const source_text text(names.path_of(name));
        const source_lines source(text);
        if (!source.readable())
            result.unreadable.add(name);
        std::vector<placed_function> placed = file_placer(&functions, std::move(by_file[file])).place(text);
        count_misplaced(placed, source, name, &result.misplaced);
        result.profile.files.push_back(name);
        add_file_records(static_cast<std::uint32_t>(result.profile.files.size() - 1), std::move(placed),
                         &result.profile);
    }
    functions.clear();
    sort_records(&result.profile);
    return result;
}
