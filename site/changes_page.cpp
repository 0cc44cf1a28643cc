#include "site/changes_page.h"

#include "changes/diff_input.h"
#include "site/figure_rows.h"
#include "site/html_text.h"

#include <memory>

site_changes::site_changes(const site_options& options, coverage_walk& walk) {
    if (options.diff.empty())
        return;
    const std::vector<changed_file> files = read_diff(options.diff, kDetectPrefix);
    change_tracker tracker(files, !options.root.empty());
    walk.run_any([&](const file_coverage& file) { tracker.take(file, walk.names()); });
    changed_ = tracker.finish();
    std::unordered_map<std::string_view, const changed_file*> in_diff;
    for (const changed_file& file : files)
        if (file.change != file_change::deleted)
            in_diff[file.name] = &file;
    for (const changed_file_coverage& file : changed_.files) {
        by_source_.emplace(file.source, &file);
        if (const auto found = in_diff.find(file.name); found != in_diff.end())
            lines_[file.source] = found->second->lines;
    }
}

const changed_lines& site_changes::lines_of(const std::string& name) const {
    static const changed_lines none;
    const auto found = lines_.find(name);
    return found == lines_.end() ? none : found->second;
}

/// What `write` writes, as text.
template <typename Write> static std::string written(Write write) {
    std::string text;
    const auto out = std::make_unique<text_buffer>(&text);
    write(*out);
    out->flush();
    return text;
}

void site_changes::add_excerpts(const file_coverage& file, const code_survey& survey,
                                const std::string& page) {
    const auto found = by_source_.find(file.name);
    if (found == by_source_.end())
        return;
    sections_.push_back(
        {found->second, page, written([&](text_buffer& out) {
             code_writer(out, file.analysis, survey, lines_of(file.name)).write_excerpts(page);
         })});
}

static void put_heading(text_buffer& out, const std::string& page, const std::string& name) {
    out.put("<a href=\"");
    out.put(page);
    out.put("\">");
    put_name(out, name, kLongestName, name_cut::front);
    out.put("</a>");
}

void site_changes::put_files(text_buffer& out) const {
    for (const section& each : sections_) {
        out.put("<tr><th scope=row>");
        put_heading(out, each.page, each.file->source);
        put_count_cells(out, each.file->lines, true);
        put_count_cells(out, each.file->blocks, false);
        out.put('\n');
    }
}

void site_changes::put_without_data(text_buffer& out) const {
    for (const std::string& name : changed_.without_data) {
        out.put("<li>");
        put_name(out, name, kLongestName, name_cut::front);
    }
}

void site_changes::write(const site_settings& settings) {
    coverage_figures sum;
    for (const section& each : sections_) {
        sum.lines.total += each.file->lines.total;
        sum.lines.covered += each.file->lines.covered;
        sum.blocks.total += each.file->blocks.total;
        sum.blocks.covered += each.file->blocks.covered;
    }
    const page_template form("changes");
    site_page page(settings, "changes.html", "Changed lines");
    text_buffer& out = page.out();
    page_values& values = page.values();
    values.set("lines", [&] { put_count_cells(out, sum.lines, true); });
    values.set("blocks", [&] { put_count_cells(out, sum.blocks, true); });
    values.choice("has_files", !sections_.empty());
    values.choice("is_empty", sections_.empty());
    values.set("files", [&] { put_files(out); });
    values.choice("has_others", !changed_.without_data.empty());
    values.set("others", [&] { put_without_data(out); });
    std::size_t shown = 0;
    values.section("sections", [&] { return shown++ < sections_.size(); });
    values.set("section_title",
               [&] { put_heading(out, sections_[shown - 1].page, sections_[shown - 1].file->source); });
    values.set("section_code", [&] { out.put(sections_[shown - 1].code); });
    page.write(form);
}
