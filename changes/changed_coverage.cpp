#include "changes/changed_coverage.h"

#include "analysis/line_walk.h"
#include "common/message.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

namespace fs = std::filesystem;

/// What stands behind the last dot of a file's name, the dot included; empty for none.
static std::string_view extension_of(std::string_view name) {
    const std::size_t last = name.rfind('/') == std::string_view::npos ? 0 : name.rfind('/') + 1;
    const std::size_t dot = name.find_last_of('.');
    return dot == std::string_view::npos || dot <= last ? std::string_view() : name.substr(dot);
}

/// The blocks that begin at a position, in the colour that the report gives them; a closing adjustment is
/// none.
static covered_count blocks_at(const block_list_node& position, bool no_partial) {
    const std::int64_t total = position.numBlocks - position.numAdjusted;
    const Color color = getColor(position.count, position.bNotInRef != 0, position.numBlocks,
                                 position.numExecuted, position.bAdjusted(), false);
    if (color == clrCovered || (color == clrPartial && no_partial))
        return {total, total};
    return {total, color == clrPartial ? std::int64_t{position.numExecuted} - position.numAdjusted : 0};
}

namespace {

/// Counts the changed lines of one source file.
class line_counter {
  public:
    line_counter(const source_analysis& analysis, std::span<const line_coverage> lines,
                 const std::vector<line_range>& changed, changed_file_coverage* result)
        : analysis_(analysis), lines_(lines), changed_(changed), result_(*result) {}

    void count_lines();
    /// Takes the blocks that only this run executed; `analysis_` is that of the differential mode.
    void count_new_blocks();

  private:
    template <typename Take> void each_changed_line(Take take) const;
    template <typename Take> void each_position(Take take) const;

    const source_analysis& analysis_;
    std::span<const line_coverage> lines_;
    const std::vector<line_range>& changed_;
    changed_file_coverage& result_;
};

} // namespace

/// Calls `take` with the changed lines that hold code.
template <typename Take> void line_counter::each_changed_line(Take take) const {
    auto range = changed_.begin();
    for (const line_coverage& line : lines_) {
        while (range != changed_.end() && range->last < line.number)
            ++range;
        if (range == changed_.end())
            return;
        if (range->first <= line.number)
            take(line);
    }
}

/// Calls `take` with the positions on changed lines that hold code.
template <typename Take> void line_counter::each_position(Take take) const {
    const std::vector<block_list_node>& positions = analysis_.positions.positions();
    auto position = positions.begin();
    each_changed_line([&](const line_coverage& line) {
        while (position != positions.end() && position->line < line.number)
            ++position;
        for (; position != positions.end() && position->line == line.number; ++position)
            take(*position);
    });
}

void line_counter::count_lines() {
    each_changed_line([this](const line_coverage& line) {
        ++result_.lines.total;
        result_.lines.covered += line.covered() ? 1 : 0;
        if (!line.covered())
            add_line(&result_.uncovered, line.number);
    });
    each_position([this](const block_list_node& position) {
        const covered_count blocks = blocks_at(position, analysis_.no_partial);
        result_.blocks.total += blocks.total;
        result_.blocks.covered += blocks.covered;
    });
}

void line_counter::count_new_blocks() {
    each_position([this](const block_list_node& position) {
        if (position.numExecuted == 0)
            return;
        result_.new_blocks += position.numExecuted;
        if (result_.new_lines.empty() || result_.new_lines.back().last != position.line)
            add_line(&result_.new_lines, position.line);
    });
}

static changed_file_coverage count_changed(const changed_file& changed, const file_coverage& file) {
    changed_file_coverage result;
    result.name = changed.name;
    result.source = file.name;
    if (!file.whole) {
        line_counter(file.analysis, file.lines, changed.lines, &result).count_lines();
        return result;
    }
    std::vector<line_coverage> whole_lines;
    collect_lines(*file.whole, whole_lines);
    line_counter(*file.whole, whole_lines, changed.lines, &result).count_lines();
    line_counter(file.analysis, whole_lines, changed.lines, &result).count_new_blocks();
    return result;
}

/// The name as a static profile can have it: its fields end at blanks.
static std::string written_name(std::string name) {
    std::replace_if(
        name.begin(), name.end(), [](unsigned char c) { return c <= 0x20 || c == 0x7f; }, '_');
    return name;
}

change_tracker::change_tracker(std::vector<changed_file> files, bool root_given)
    : files_(std::move(files)), root_given_(root_given) {
    for (std::size_t i = 0; i < files_.size(); ++i) {
        if (files_[i].change == file_change::deleted)
            continue;
        by_name_.emplace(files_[i].name, i);
        const std::string written = written_name(files_[i].name);
        if (written != files_[i].name)
            written_names_.emplace(written, i);
    }
    by_name_.insert(written_names_.begin(), written_names_.end()); // a file of that name wins
}

/// Notes what the file at `path` may be, below `root`; false when it is no changed file.
bool change_tracker::take_path(const std::string& path, const std::string& root, const file_coverage& file) {
    const std::size_t root_end = root.ends_with('/') ? root.size() - 1 : root.size();
    bool taken = false;
    for (std::size_t slash = path.find('/'); slash != std::string::npos; slash = path.find('/', slash + 1)) {
        const bool is_root = slash == root_end && path.starts_with(root);
        const auto found = by_name_.find(std::string_view(path).substr(slash + 1));
        if (found == by_name_.end() || (root_given_ && !is_root))
            continue;
        const std::string directory = slash == 0 ? "/" : path.substr(0, slash);
        fits_[is_root ? root_ : directory].push_back(
            {found->second, file.analysis.positions.lines() - 1, count_changed(files_[found->second], file)});
        taken = true;
    }
    return taken;
}

void change_tracker::take(const file_coverage& file, const root_names& names) {
    root_ = names.root();
    any_below_root_ = any_below_root_ || file.below_root;
    extensions_.emplace(extension_of(file.name));
    const std::string path =
        !file.below_root ? file.name : root_ + (root_.ends_with('/') ? "" : "/") + file.name;
    if (take_path(path, root_, file))
        return;
    std::error_code error;
    const std::string physical = fs::canonical(path, error);
    if (!error && physical != path)
        take_path(physical, fs::weakly_canonical(root_, error), file);
}

/// A file that got lines, and has an extension of source files.
bool change_tracker::may_hold_code(const changed_file& file) const {
    return file.change != file_change::deleted && !file.lines.empty() &&
           extensions_.contains(std::string(extension_of(file.name)));
}

/// No file of the diff is known. That is well when they are no source files, or lie where they should and
/// have no data.
void change_tracker::refuse_foreign() const {
    const changed_file* unknown = nullptr;
    for (const changed_file& file : files_) {
        if (!may_hold_code(file))
            continue;
        std::error_code error;
        if (fs::is_regular_file(fs::path(root_) / file.name, error))
            return;
        unknown = unknown ? unknown : &file;
    }
    if (unknown)
        end_with_error("the profile has no file of the diff, such as %s; -root names the directory that the "
                       "names of the diff are relative to",
                       printable(unknown->name).c_str());
}

const std::string& change_tracker::best_directory() const {
    const std::pair<const std::string, std::vector<fit>>* best = nullptr;
    const std::string* rival = nullptr;
    for (const auto& candidate : fits_) {
        if (best && candidate.second.size() < best->second.size())
            continue;
        const bool as_many = best && candidate.second.size() == best->second.size();
        if (as_many && candidate.first != root_) {
            rival = &candidate.first;
            continue;
        }
        best = &candidate;
        rival = nullptr;
    }
    if (rival && best->first != root_)
        end_with_error("the names of the diff may be relative to %s or to %s; -root says which",
                       printable(best->first).c_str(), printable(*rival).c_str());
    return best->first;
}

/// Another directory was found than the root, below which a file of such a name lies, too: without data, and
/// its lines are not those of the file that was found.
void change_tracker::refuse_doubtful(const std::string& directory) const {
    if (directory == root_ || !any_below_root_)
        return;
    for (const fit& one : fits_.find(directory)->second) {
        const std::string& name = files_[one.changed].name;
        const fs::path below_root = fs::path(root_) / name;
        std::error_code error;
        if (fs::is_regular_file(below_root, error) &&
            !fs::equivalent(below_root, fs::path(directory) / name, error))
            end_with_error("the names of the diff may be relative to %s or to %s; -root says which",
                           printable(root_).c_str(), printable(directory).c_str());
    }
}

changed_coverage change_tracker::finish() {
    changed_coverage result;
    result.empty = files_.empty();
    std::vector<bool> known(files_.size());
    if (fits_.empty()) {
        refuse_foreign();
    } else {
        result.directory = best_directory();
        refuse_doubtful(result.directory);
        result.is_root = result.directory == root_;
        for (fit& one : fits_.find(result.directory)->second) {
            const std::vector<line_range>& lines = files_[one.changed].lines;
            if (!lines.empty() && lines.back().last > one.lines)
                end_with_error("the diff adds line %u to %s, which has %u lines: it is not of these sources; "
                               "make it again",
                               lines.back().last, printable(one.coverage.source).c_str(), one.lines);
            known[one.changed] = true;
            result.files.push_back(std::move(one.coverage));
        }
    }
    for (std::size_t i = 0; i < files_.size(); ++i)
        if (!known[i] && files_[i].change != file_change::deleted && !files_[i].lines.empty())
            result.without_data.push_back(files_[i].name);
    return result;
}
