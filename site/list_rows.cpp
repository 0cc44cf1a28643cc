#include "site/list_rows.h"

#include "site/function_list.h"
#include "site/html_text.h"
#include "site/site_page.h"

#include <algorithm>

constexpr std::size_t kNamesOfRow = 140; ///< bytes of HTML that the link of a row and its names take together
constexpr std::size_t kLongestPath = 90;
constexpr std::size_t kLongestFunctionName = 80;
constexpr std::size_t kLongestFileName = 30;
constexpr std::size_t kShortestName = 28; ///< so much of it is always shown

/// What a name may take beside `others` bytes of the row, and at most `longest`.
static std::size_t room_for_name(std::size_t others, std::size_t longest) {
    return std::clamp(kNamesOfRow - std::min(others, kNamesOfRow), kShortestName, longest);
}

static void put_link(text_buffer& out, std::string_view up, std::string_view page, std::string_view path) {
    out.put("<a href=\"");
    out.put(up);
    out.put(page);
    out.put("\">");
    put_name(out, path, room_for_name(page.size(), kLongestPath), name_cut::front);
}

static void begin_row(text_buffer& out, std::string_view kind) {
    if (kind.empty())
        return out.put("<tr><td>");
    out.put("<tr class=");
    out.put(kind);
    out.put("><td>");
}

/// What did not run, and the figures of functions and of blocks.
static void put_figures(text_buffer& out, const coverage_figures& figures) {
    out.put("<td>");
    put_grouped(out, static_cast<std::uint64_t>(figures.blocks.total - figures.blocks.covered));
    put_count_cells(out, figures.blocks, true);
    put_count_cells(out, figures.functions, false);
    out.put('\n');
}

void put_file_row(text_buffer& out, const site_file_entry& file, std::string_view within,
                  std::string_view up) {
    begin_row(out, file.figures.functions.covered == 0 && file.figures.functions.total != 0 ? "f"
                   : file.complete()                                                        ? ""
                                                                                            : "u");
    put_link(out, up, file.page, name_within(file.name, within));
    out.put("</a>");
    put_figures(out, file.figures);
}

void put_directory_row(text_buffer& out, const site_directory& directory, std::string_view within,
                       std::string_view up) {
    begin_row(out, directory.complete() ? "" : "u");
    put_link(out, up, directory.page, name_within(directory.path, within));
    out.put("/</a>");
    put_figures(out, directory.figures);
}

void put_function_row(text_buffer& out, const site_function& function, const site_file_entry& file,
                      std::string_view up) {
    begin_row(out, function_class(function));
    out.put("<a href=\"");
    out.put(up);
    out.put(file.page);
    put_fragment(out, function, file.lines);
    out.put("\">");
    const std::size_t others = file.page.size() + std::min(file.name.size(), kLongestFileName);
    put_name(out, function.name, room_for_name(others, kLongestFunctionName));
    out.put("</a>");
    out.put("<td>");
    put_name(out, file.name, kLongestFileName, name_cut::front);
    out.put("<td>");
    put_grouped(out, static_cast<std::uint64_t>(function.uncovered()));
    put_count_cells(out, function.blocks, true);
    out.put("<td>");
    put_grouped(out, function.calls);
    out.put('\n');
}

bool is_linked_page(std::size_t page, std::size_t other, std::size_t pages) {
    const std::size_t distance = page > other ? page - other : other - page;
    const bool is_step = (distance & (distance - 1)) == 0;
    return other == 1 || other == pages || distance <= 3 || is_step;
}
