// A table for the terminal:
//
//   file          functions             blocks              lines
//   NAME        12/  13  92.30%     12/  13  92.30%     12/  13  92.30%      for each file
//   TOTAL blocks: 87.41%
//
// or with -functions
//
//   function      place          count            blocks
//   NAME          FILE:LINE         12     12/  13  92.30%                   for each function
//   TOTAL blocks: 87.41%
//
// On a terminal names are cut at their beginning to its width, columns that have no room are left out from
// the left, and percentages have colours. The last line is what continuous integration searches for.
#include "common/message.h"
#include "common/text_buffer.h"
#include "exchange/file_rows.h"
#include "exchange/safe_text.h"
#include "exchange/writer.h"
#include "inputs/percent_text.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

/// A row of the table, of a file or a function.
struct text_row {
    std::string name;
    std::string place;   ///< of a function, "file:line"; empty for a file
    std::uint64_t count; ///< of a function
    coverage_figures figures;
};

/// A column behind the name; its cells are aligned at the right.
struct text_column {
    const char* title;
    std::size_t width;
    std::string (*cell)(const text_row& row);
    const covered_count* (*share)(const text_row& row); ///< what gives the cell its colour; may be null
};

class text_writer : public exchange_writer {
  public:
    explicit text_writer(const writer_target& target);

    void add(const file_coverage& file) override;
    void finish(const coverage_totals& totals) override;

  private:
    void add_functions(const file_coverage& file);
    void sort_rows();
    std::vector<text_column> columns() const;
    std::size_t fit(std::vector<text_column>* columns) const;
    void put_left(std::string_view text, std::size_t width);
    void put_row(const text_row& row, std::size_t name, const std::vector<text_column>& columns);

    const exchange_options& options_;
    text_buffer out_;
    bool colored_ = false;
    std::size_t terminal_width_ = 0; ///< 0 where there is no terminal
    std::vector<text_row> rows_;
};

} // namespace

constexpr std::size_t kGap = 2; ///< blanks between columns
constexpr std::size_t kNarrowestName = 16;
constexpr std::int64_t kGood = 8000;     ///< ten-thousandths from which a share is green
constexpr std::int64_t kMiddling = 5000; ///< and yellow; below it is red

/// Columns of the terminal; 80 where it does not tell.
static std::size_t width_of_terminal() {
    winsize size = {};
    return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col != 0 ? size.ws_col : 80;
}

static bool wants_color() {
    const char* const no_color = std::getenv("NO_COLOR");
    const char* const terminal = std::getenv("TERM");
    return (!no_color || *no_color == '\0') && terminal && std::string_view(terminal) != "dumb";
}

text_writer::text_writer(const writer_target& target) : options_(target.options), out_(target.stream) {
    if (!target.terminal || isatty(STDOUT_FILENO) == 0)
        return;
    terminal_width_ = width_of_terminal();
    colored_ = wants_color();
}

void text_writer::add_functions(const file_coverage& file) {
    for (const source_function& function : file.analysis.functions) {
        text_row row = {log_text(function.shown_name),
                        log_text(file.name) + ":" + std::to_string(function.line),
                        function.entry_count,
                        {}};
        row.figures.blocks = {function.blocks, function.covered};
        rows_.push_back(std::move(row));
    }
}

void text_writer::add(const file_coverage& file) {
    if (options_.functions)
        add_functions(file);
    else
        rows_.push_back({log_text(file.name), {}, 0, file.figures});
}

/// Rows that compare equal keep the order of the walk, by name.
void text_writer::sort_rows() {
    const auto sort_by = [this](auto before) { std::stable_sort(rows_.begin(), rows_.end(), before); };
    const auto sort_by_share = [&](covered_count coverage_figures::*share) {
        sort_by([share](const text_row& a, const text_row& b) {
            return less_covered(a.figures.*share, b.figures.*share);
        });
    };
    switch (options_.order) {
    case row_order::name:
        return sort_by([](const text_row& a, const text_row& b) { return a.name < b.name; });
    case row_order::blocks:
        return sort_by_share(&coverage_figures::blocks);
    case row_order::functions:
        return sort_by_share(&coverage_figures::functions);
    case row_order::lines:
        return sort_by_share(&coverage_figures::lines);
    case row_order::uncovered:
        return sort_by([](const text_row& a, const text_row& b) {
            return uncovered(a.figures.blocks) > uncovered(b.figures.blocks);
        });
    }
}

/// "12/13  92.30%"
static std::string share_text(const covered_count& count) {
    std::string percent = count.total > 0 ? percent_text(count) + "%" : "-";
    percent.insert(0, 9 - std::min<std::size_t>(percent.size(), 9), ' ');
    return std::to_string(count.covered) + "/" + std::to_string(count.total) + percent;
}

template <covered_count coverage_figures::*Share> static text_column share_column(const char* title) {
    return {title, 0, [](const text_row& row) { return share_text(row.figures.*Share); },
            [](const text_row& row) { return &(row.figures.*Share); }};
}

/// The columns, as wide as their widest cells.
std::vector<text_column> text_writer::columns() const {
    std::vector<text_column> result;
    if (options_.functions) {
        result = {{"place", 0, [](const text_row& row) { return row.place; }, nullptr},
                  {"count", 0, [](const text_row& row) { return std::to_string(row.count); }, nullptr},
                  share_column<&coverage_figures::blocks>("blocks")};
    } else {
        result = {share_column<&coverage_figures::functions>("functions"),
                  share_column<&coverage_figures::blocks>("blocks"),
                  share_column<&coverage_figures::lines>("lines")};
    }
    for (text_column& column : result) {
        column.width = std::string_view(column.title).size();
        for (const text_row& row : rows_)
            column.width = std::max(column.width, character_count(column.cell(row)));
    }
    return result;
}

static std::size_t width_of(const std::vector<text_column>& columns) {
    std::size_t width = 0;
    for (const text_column& column : columns)
        width += kGap + column.width;
    return width;
}

/// Takes away columns that the terminal has no room for; gives the width of the names.
std::size_t text_writer::fit(std::vector<text_column>* columns) const {
    std::size_t width = kNarrowestName;
    for (const text_row& row : rows_)
        width = std::max(width, character_count(row.name));
    if (terminal_width_ == 0)
        return width;
    while (columns->size() > 1 && kNarrowestName + width_of(*columns) > terminal_width_)
        columns->erase(columns->begin());
    const std::size_t others = width_of(*columns);
    const std::size_t room = terminal_width_ - std::min(terminal_width_, others);
    return std::min(width, std::max(room, kNarrowestName));
}

/// The end of a text in `width` characters, with dots where the beginning is missing.
static std::string cut_in_front(std::string_view text, std::size_t width) {
    std::size_t characters = character_count(text);
    if (characters <= width)
        return std::string(text);
    static constexpr std::string_view kDots = "...";
    std::size_t at = 0;
    for (; at < text.size() && characters > width - kDots.size(); ++at)
        characters -= (text[at] & 0xc0) != 0x80 ? 1 : 0;
    while (at < text.size() && (text[at] & 0xc0) == 0x80)
        ++at;
    return std::string(kDots) + std::string(text.substr(at));
}

void text_writer::put_left(std::string_view text, std::size_t width) {
    const std::string shown = cut_in_front(text, width);
    out_.put(shown);
    out_.fill(' ', width - std::min(width, character_count(shown)));
}

static const char* color_of(const covered_count& count) {
    const std::int64_t share = ten_thousandths(count);
    return share >= kGood ? "\33[32m" : share >= kMiddling ? "\33[33m" : "\33[31m";
}

void text_writer::put_row(const text_row& row, std::size_t name, const std::vector<text_column>& columns) {
    put_left(row.name, name);
    for (const text_column& column : columns) {
        const std::string cell = column.cell(row);
        out_.fill(' ', kGap + column.width - std::min(column.width, character_count(cell)));
        const covered_count* const share = column.share ? column.share(row) : nullptr;
        const bool colored = colored_ && share && share->total > 0;
        out_.put(colored ? color_of(*share) : "");
        out_.put(cell);
        out_.put(colored ? "\33[0m" : "");
    }
    out_.put('\n');
}

void text_writer::finish(const coverage_totals& totals) {
    sort_rows();
    std::vector<text_column> shown = columns();
    const std::size_t name = fit(&shown);
    put_left(options_.functions ? "function" : "file", name);
    for (const text_column& column : shown) {
        const std::string_view title = column.title;
        out_.fill(' ', kGap + column.width - title.size());
        out_.put(title);
    }
    out_.put('\n');
    for (const text_row& row : rows_)
        put_row(row, name, shown);
    out_.put("TOTAL blocks: ");
    out_.put(percent_text(totals.figures.blocks));
    out_.put("%\n");
    out_.flush();
}

std::unique_ptr<exchange_writer> make_text_writer(const writer_target& target) {
    return std::make_unique<text_writer>(target);
}
