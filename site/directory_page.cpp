#include "site/directory_page.h"

#include "site/figure_rows.h"
#include "site/html_text.h"
#include "site/list_rows.h"
#include "site/page_names.h"
#include "site/treemap.h"

#include <algorithm>

constexpr std::size_t kMostAncestors = 8; ///< that a page names

namespace {

/// What a directory's table shows: directories by path, files by what did not run, then complete files.
struct children {
    std::vector<std::uint32_t> files;
    std::size_t directories;
    std::size_t incomplete; ///< of the files

    std::size_t size() const { return directories + files.size(); }
};

} // namespace

static children children_of(const site_model& model, const site_directory& directory) {
    children all = {directory.own_files, directory.directories.size(), 0};
    std::stable_sort(all.files.begin(), all.files.end(), [&](std::uint32_t a, std::uint32_t b) {
        const site_file_entry& x = model.files[a];
        const site_file_entry& y = model.files[b];
        return x.complete() != y.complete() ? y.complete() : x.uncovered() > y.uncovered();
    });
    while (all.incomplete < all.files.size() && !model.files[all.files[all.incomplete]].complete())
        ++all.incomplete;
    return all;
}

/// Links to the directories that this one is in.
static void put_ancestors(text_buffer& out, const site_model& model, std::uint32_t index) {
    std::vector<std::uint32_t> path;
    for (std::uint32_t at = index; at != model.top && path.size() < kMostAncestors;
         at = model.directories[at].parent)
        path.push_back(model.directories[at].parent);
    for (std::size_t i = path.size(); i-- > 0;) {
        const site_directory& ancestor = model.directories[path[i]];
        const std::string& above = model.directories[ancestor.parent].path;
        out.put("<a href=\"../");
        out.put(ancestor.page);
        out.put("\">");
        if (path[i] == model.top)
            put_name(out, ancestor.path.empty() ? "all files" : ancestor.path, 60, name_cut::front);
        else
            put_name(out, name_within(ancestor.path, above), 60, name_cut::front);
        out.put("</a> / ");
    }
}

static void put_children(text_buffer& out, const site_model& model, std::uint32_t index, const children& all,
                         std::size_t first, std::size_t last) {
    const site_directory& directory = model.directories[index];
    for (std::size_t i = first; i < last; ++i) {
        if (i < all.directories)
            put_directory_row(out, model.directories[directory.directories[i]], directory.path, "../");
        else
            put_file_row(out, model.files[all.files[i - all.directories]], directory.path, "../");
    }
}

static void write_directory_page(const site_settings& settings, const site_model& model, std::uint32_t index,
                                 const children& all, std::size_t number, const page_template& form) {
    const site_directory& directory = model.directories[index];
    const std::size_t pages = std::max<std::size_t>((all.size() + kRowsOfPage - 1) / kRowsOfPage, 1);
    const std::size_t first = (number - 1) * kRowsOfPage;
    const std::size_t last = std::min(first + kRowsOfPage, all.size());
    const std::size_t complete = std::clamp(all.directories + all.incomplete, first, last);
    const std::string shown =
        html_name(directory.path.empty() ? "all files" : directory.path, kLongestName, name_cut::front);
    site_page page(settings, directory_page_name(directory.path, number), shown);
    text_buffer& out = page.out();
    page.set("path", shown);
    page.values().set("ancestors", [&] { put_ancestors(out, model, index); });
    set_all_figure_rows(page, directory.files, directory.figures, nullptr);
    page.values().set("treemap", [&] {
        if (number == 1)
            put_treemap(out, model, index, "../");
    });
    page.values().set("pager", [&] {
        put_pager(out, number, pages, "../",
                  [&](std::size_t other) { return directory_page_name(directory.path, other); });
    });
    page.values().choice("has_rows", complete > first);
    page.values().set("rows", [&] { put_children(out, model, index, all, first, complete); });
    page.values().choice("has_complete", last > complete);
    page.values().set("complete_count", [&] { put_grouped(out, last - complete); });
    page.values().set("complete_rows", [&] { put_children(out, model, index, all, complete, last); });
    page.write(form);
}

void write_directory_pages(const site_settings& settings, const site_model& model) {
    const page_template form("directory");
    for (std::uint32_t i = 0; i < model.directories.size(); ++i) {
        // What lies above the top holds nothing but it.
        if (model.directories[i].path.size() < model.directories[model.top].path.size())
            continue;
        const children all = children_of(model, model.directories[i]);
        for (std::size_t number = 1; number == 1 || (number - 1) * kRowsOfPage < all.size(); ++number)
            write_directory_page(settings, model, i, all, number, form);
    }
}
