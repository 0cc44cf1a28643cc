#include "import/lcov/trace_profile.h"

#include "common/source_text.h"
#include "import/gcc/file_records.h"
#include "import/gcc/source_lines.h"
#include "import/gcc/stretches.h"
#include "import/record_order.h"

#include <algorithm>
#include <numeric>
#include <tuple>
#include <utility>

/// The routine of lines outside every function.
constexpr const char* kFileRoutine = "(file)";

constexpr std::size_t kOutside = ~std::size_t{0};
constexpr std::size_t kNoHeir = kOutside - 1;

namespace {

/// A function with the lines that are its own.
struct owned_lines {
    const trace_function* function; ///< null: the routine of the file
    std::vector<trace_line> lines;  ///< ascending
};

/// Gives each line of a file to a function.
class line_distribution {
  public:
    explicit line_distribution(traced_file* file) : file_(*file) {}

    /// All functions in the order of their lines, the routine of the file last.
    std::vector<owned_lines> distribute();

  private:
    /// A function around the line at hand.
    struct open_function {
        std::size_t index;
        std::size_t executed; ///< the innermost executed one that is or is around this one, or kOutside
        std::uint32_t end;    ///< not behind that of the one around it
    };

    void find_ends();
    void find_dead();
    void order();
    void open(std::size_t index);
    std::size_t innermost(const trace_line& line);
    std::size_t owner(const trace_line& line, std::size_t around) const;
    void add_outside(std::vector<trace_line> outside, std::vector<owned_lines>* result) const;

    traced_file& file_;
    std::vector<bool> dead_; ///< for each function whether lines follow its first and none was executed
    std::vector<std::size_t> order_; ///< of the functions: by line, those inside behind those around them
    std::size_t next_ = 0;           ///< in order_: the next to open
    std::vector<open_function> open_;
    std::vector<std::size_t> heirs_; ///< for each function who gets the rest of its lines, or kNoHeir
};

/// A function whose last line is not known reaches to the next one.
void line_distribution::find_ends() {
    std::uint32_t next = kLargestLine; // line of the functions behind the ones at hand
    std::uint32_t behind = kLargestLine;
    for (auto function = file_.functions.rbegin(); function != file_.functions.rend(); ++function) {
        if (function->line != next) {
            behind = next == kLargestLine ? next : next - 1;
            next = function->line;
        }
        function->end = std::max(function->end == 0 ? behind : function->end, function->line);
    }
}

void line_distribution::find_dead() {
    std::vector<std::uint32_t> counted, executed;
    for (const trace_line& line : file_.lines) {
        if (line.counted)
            counted.push_back(line.line);
        if (line.count != 0)
            executed.push_back(line.line);
    }
    const auto any_in = [](const std::vector<std::uint32_t>& lines, const trace_function& function) {
        const auto next = std::upper_bound(lines.begin(), lines.end(), function.line);
        return next != lines.end() && *next <= function.end;
    };
    for (const trace_function& function : file_.functions)
        dead_.push_back(any_in(counted, function) && !any_in(executed, function));
}

/// Of several at one place, such as the instances of a template or what one macro makes, the last gets the
/// lines: a called one, unless none of the lines behind the first was executed.
void line_distribution::order() {
    const std::vector<trace_function>& functions = file_.functions;
    const auto key = [this, &functions](std::size_t i) {
        return std::tuple(functions[i].line, ~functions[i].end, (functions[i].entries != 0) != dead_[i]);
    };
    order_.resize(functions.size());
    std::iota(order_.begin(), order_.end(), std::size_t{0});
    std::stable_sort(order_.begin(), order_.end(),
                     [&key](std::size_t a, std::size_t b) { return key(a) < key(b); });
}

void line_distribution::open(std::size_t index) {
    const trace_function& function = file_.functions[index];
    while (!open_.empty() && open_.back().end < function.line)
        open_.pop_back();
    open_function opened = {index, index, function.end};
    if (!open_.empty())
        opened.end = std::min(opened.end, open_.back().end);
    if (function.entries == 0)
        opened.executed = open_.empty() ? kOutside : open_.back().executed;
    open_.push_back(opened);
}

/// The innermost function around a line, or kOutside.
std::size_t line_distribution::innermost(const trace_line& line) {
    for (; next_ < order_.size() && file_.functions[order_[next_]].line <= line.line; ++next_)
        open(order_[next_]);
    while (!open_.empty() && open_.back().end < line.line)
        open_.pop_back();
    return open_.empty() ? kOutside : open_.back().index;
}

/// Executed lines in a function that was not belong to one around it. Behind them, the rest of the function
/// does so, too, as the mark of a function that was never called reaches to the next block only.
std::size_t line_distribution::owner(const trace_line& line, std::size_t around) const {
    if (around == kOutside)
        return kOutside;
    if (line.count != 0)
        return open_.back().executed;
    return heirs_[around] == kNoHeir ? around : heirs_[around];
}

std::vector<owned_lines> line_distribution::distribute() {
    find_ends();
    find_dead();
    order();
    const std::vector<trace_function>& functions = file_.functions;
    std::vector<owned_lines> result;
    result.reserve(functions.size() + 1);
    for (const trace_function& function : functions)
        result.push_back({&function, {}});
    heirs_.assign(functions.size(), kNoHeir);
    std::vector<trace_line> outside;
    for (const trace_line& line : file_.lines) {
        if (!line.counted)
            continue;
        const std::size_t around = innermost(line);
        const std::size_t index = owner(line, around);
        if (index != around && !result[around].lines.empty())
            heirs_[around] = index;
        (index == kOutside ? outside : result[index].lines).push_back(line);
    }
    add_outside(std::move(outside), &result);
    return result;
}

/// The routine of the file, or several where none of it was executed.
void line_distribution::add_outside(std::vector<trace_line> outside, std::vector<owned_lines>* result) const {
    if (any_executed(outside)) {
        result->push_back({nullptr, std::move(outside)});
        return;
    }
    std::vector<std::uint32_t> starts;
    for (const trace_function& function : file_.functions)
        starts.push_back(function.line);
    for (std::vector<trace_line>& stretch : split_stretches(outside, starts))
        result->push_back({nullptr, std::move(stretch)});
}

} // namespace

/// The blocks of a function or of the file's routine; the last one stands behind the end of the last line.
static placed_function place(const owned_lines& owned, const source_lines& source) {
    const trace_function* const function = owned.function;
    placed_function placed = {kFileRoutine, function ? function->line : 0, false, 0, {}};
    if (function) {
        placed.name = function->name;
        placed.called = function->entries != 0;
    }
    std::vector<profile_block> partial; // behind all others, as other runs may not have them
    std::uint32_t last_line = placed.line;
    for (const trace_line& line : owned.lines) {
        const source_position position = source.first_code(line.line);
        const bool head = function && line.line == function->line && line.count != 0;
        placed.blocks.push_back({position, head ? function->entries : line.count});
        placed.called = placed.called || (!function && line.count != 0);
        if (line.count != 0 && line.taken && line.passed)
            partial.push_back({position, 0});
        last_line = line.line;
    }
    if (placed.blocks.empty())
        placed.blocks.push_back({source.first_code(placed.line), function->entries});
    else if (!placed.called || !function)
        placed.line = owned.lines.front().line;
    const source_position last = placed.blocks.back().position;
    placed.last = placed.blocks.size();
    placed.blocks.push_back({std::max(source.behind(last_line), {last.line, last.column + 1}), 0});
    placed.blocks.insert(placed.blocks.end(), partial.begin(), partial.end());
    return placed;
}

trace_profile build_trace_profile(trace_store* store, const source_names& names) {
    trace_profile result;
    PGOPTI_PROFILE& profile = result.profile;
    for (auto& [name, file] : store->files()) {
        const source_text text(names.path_of(name));
        const source_lines source(text);
        std::vector<placed_function> functions;
        for (const owned_lines& owned : line_distribution(&file).distribute())
            functions.push_back(place(owned, source));
        file = {};
        if (functions.empty())
            continue;
        if (!source.readable())
            result.unreadable.add(name);
        for (const placed_function& function : functions) {
            for (const profile_block& block : function.blocks)
                if (source.beyond_end(block.position.line))
                    result.misplaced.add(name);
        }
        profile.files.push_back(name);
        add_file_records(static_cast<std::uint32_t>(profile.files.size() - 1), std::move(functions),
                         &profile);
    }
    sort_records(&profile);
    return result;
}
