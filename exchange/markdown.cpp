// A summary in Markdown, as a job of GitHub or GitLab shows it:
//
//   ## Coverage of PROJECT
//
//   `█████████████████░░░` **87.41%** of N blocks
//
//   | | covered | total | |
//   |---|---:|---:|---:|
//   | Blocks | N | N | 87.41% |              and so lines, functions and files
//
//   ### Files with the most uncovered blocks
//
//   | File | Blocks | Lines | Functions | Uncovered blocks |
//   |---|---:|---:|---:|---:|
//   | NAME | 12.34% | 12.34% | 12.34% | N |  for each file that is not covered in full, the worst first
//
//   N more files are not covered in full.   where there was no room for them
//   All files are covered in full.          where there was none
//
// A summary of more than 1 MiB is refused, and one just below that has vanished without a word.
#include "common/text_buffer.h"
#include "exchange/file_rows.h"
#include "exchange/safe_text.h"
#include "exchange/writer.h"
#include "inputs/percent_text.h"

#include <algorithm>

namespace {

class markdown_writer : public exchange_writer {
  public:
    explicit markdown_writer(const writer_target& target) : options_(target.options), out_(target.stream) {}

    void add(const file_coverage& file) override;
    void finish(const coverage_totals& totals) override;

  private:
    void put(std::string_view text);
    void put_totals(const coverage_totals& totals);
    void put_rows();

    const exchange_options& options_;
    text_buffer out_;
    std::size_t size_ = 0;       ///< bytes written
    std::vector<file_row> rows_; ///< of files that are not covered in full
};

} // namespace

constexpr std::size_t kMostBytes = 900000;
constexpr std::size_t kClosingBytes = 100; ///< room for the line behind the table
constexpr std::int64_t kBarLength = 20;

void markdown_writer::put(std::string_view text) {
    out_.put(text);
    size_ += text.size();
}

void markdown_writer::add(const file_coverage& file) {
    if (uncovered(file.figures.blocks) > 0)
        rows_.push_back({file.name, file.figures});
}

static std::string bar_of(const covered_count& count) {
    const std::int64_t full = std::min(ten_thousandths(count) * kBarLength / 10000, kBarLength);
    std::string bar;
    for (std::int64_t i = 0; i < kBarLength; ++i)
        bar += i < full ? "\u2588" : "\u2591";
    return bar;
}

static std::string total_row(const char* title, const covered_count& count) {
    std::string row = "| ";
    row.append(title).append(" | ").append(std::to_string(count.covered)).append(" | ");
    return row.append(std::to_string(count.total)).append(" | ").append(percent_text(count)).append("% |\n");
}

void markdown_writer::put_totals(const coverage_totals& totals) {
    put("## Coverage");
    if (!options_.project.empty()) {
        put(" of ");
        put(markdown_text(options_.project));
    }
    put("\n\n");
    put("`");
    put(bar_of(totals.figures.blocks));
    put("` **");
    put(percent_text(totals.figures.blocks));
    put("%** of ");
    put(std::to_string(totals.figures.blocks.total));
    put(" blocks\n\n");
    put("| | covered | total | |\n");
    put("|---|---:|---:|---:|\n");
    put(total_row("Blocks", totals.figures.blocks));
    put(total_row("Lines", totals.figures.lines));
    put(total_row("Functions", totals.figures.functions));
    put(total_row("Files", totals.files));
    put("\n");
}

static std::string file_text(const file_row& row) {
    std::string text = "| ";
    text.append(markdown_text(row.name));
    for (const covered_count* count : {&row.figures.blocks, &row.figures.lines, &row.figures.functions})
        text.append(" | ").append(count->total > 0 ? percent_text(*count).append("%") : "");
    return text.append(" | ").append(std::to_string(uncovered(row.figures.blocks))).append(" |\n");
}

void markdown_writer::put_rows() {
    std::stable_sort(rows_.begin(), rows_.end(), [](const file_row& a, const file_row& b) {
        return uncovered(a.figures.blocks) > uncovered(b.figures.blocks);
    });
    put("### Files with the most uncovered blocks\n\n");
    put("| File | Blocks | Lines | Functions | Uncovered blocks |\n");
    put("|---|---:|---:|---:|---:|\n");
    std::size_t shown = 0;
    for (; shown < rows_.size(); ++shown) {
        const std::string row = file_text(rows_[shown]);
        if (size_ + row.size() + kClosingBytes > kMostBytes)
            break;
        put(row);
    }
    if (shown == rows_.size())
        return;
    put("\n");
    put(std::to_string(rows_.size() - shown));
    put(" more files are not covered in full.\n");
}

void markdown_writer::finish(const coverage_totals& totals) {
    put_totals(totals);
    if (rows_.empty())
        put("All files are covered in full.\n");
    else
        put_rows();
    out_.flush();
}

std::unique_ptr<exchange_writer> make_markdown_writer(const writer_target& target) {
    return std::make_unique<markdown_writer>(target);
}
