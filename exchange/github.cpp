// Annotations of GitHub for code that was not reached:
//
//   ::warning file=NAME,line=N,endLine=N,title=Not covered::N lines of code were not executed
//   ::notice title=Coverage::N more places with N lines of code were not executed
//
// A place is a run of lines with code none of which was executed; what stands between them is no code. With a
// diff a place is a run of lines that it adds or changes. A step shows ten warnings and drops the others
// without a word: the ten largest places are written, the largest first, and the notice tells of the rest.
#include "changes/changed_coverage.h"
#include "changes/diff_input.h"
#include "common/text_buffer.h"
#include "exchange/annotation.h"
#include "exchange/writer.h"

#include <algorithm>
#include <optional>
#include <tuple>

namespace {

/// A run of lines that were not executed.
struct uncovered_place {
    std::string file;
    std::uint32_t first;
    std::uint32_t last;
    std::uint64_t lines; ///< of code
};

class github_writer : public exchange_writer {
  public:
    explicit github_writer(const writer_target& target) : names_(target.names), out_(target.stream) {
        const exchange_options& options = target.options;
        if (!options.diff.empty())
            changes_.emplace(read_diff(options.diff, options.strip), !options.root.empty());
    }

    void add(const file_coverage& file) override;
    void finish(const coverage_totals& totals) override;

  private:
    void take(uncovered_place place);
    void take_all(const file_coverage& file);
    void take_changed();
    void put_places();

    const root_names& names_;
    text_buffer out_;
    std::optional<change_tracker> changes_; ///< with a diff
    std::vector<uncovered_place> largest_;  ///< a heap with the smallest of them in front
    std::uint64_t other_places_ = 0;
    std::uint64_t other_lines_ = 0;
};

} // namespace

/// The order in which places are written.
static bool comes_before(const uncovered_place& a, const uncovered_place& b) {
    return std::tie(b.lines, a.file, a.first) < std::tie(a.lines, b.file, b.first);
}

void github_writer::take(uncovered_place place) {
    if (place.lines == 0)
        return;
    largest_.push_back(std::move(place));
    std::push_heap(largest_.begin(), largest_.end(), comes_before);
    if (largest_.size() <= kMostAnnotations)
        return;
    std::pop_heap(largest_.begin(), largest_.end(), comes_before);
    ++other_places_;
    other_lines_ += largest_.back().lines;
    largest_.pop_back();
}

void github_writer::add(const file_coverage& file) {
    if (changes_)
        changes_->take(file, names_);
    else
        take_all(file);
}

void github_writer::take_all(const file_coverage& file) {
    uncovered_place place = {file.name, 0, 0, 0};
    for (const line_coverage& line : file.lines) {
        if (line.covered()) {
            take(place);
            place.lines = 0;
            continue;
        }
        if (place.lines++ == 0)
            place.first = line.number;
        place.last = line.number;
    }
    take(std::move(place));
}

void github_writer::take_changed() {
    for (const changed_file_coverage& file : changes_->finish().files)
        for (const line_range& lines : file.uncovered)
            take({file.name, lines.first, lines.last, std::uint64_t{lines.last} - lines.first + 1});
}

static std::string counted(std::uint64_t count, const char* one, const char* many) {
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

void github_writer::put_places() {
    std::sort_heap(largest_.begin(), largest_.end(), comes_before);
    for (const uncovered_place& place : largest_)
        out_.put(
            annotation_at(place.file, {place.first, place.last}, "warning", "Not covered",
                          counted(place.lines, "line of code was", "lines of code were") + " not executed"));
}

void github_writer::finish(const coverage_totals&) {
    if (changes_)
        take_changed();
    put_places();
    if (other_places_ != 0)
        out_.put(annotation("notice", "Coverage",
                            counted(other_places_, "more place", "more places") + " with " +
                                counted(other_lines_, "line of code was", "lines of code were") +
                                " not executed"));
    out_.flush();
}

std::unique_ptr<exchange_writer> make_github_writer(const writer_target& target) {
    return std::make_unique<github_writer>(target);
}
