#include "site/list_pages.h"

#include "site/html_text.h"
#include "site/list_rows.h"
#include "site/page_names.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <numeric>

namespace {

/// One of the four lists.
struct list {
    std::string_view stem;  ///< of its pages' names
    std::string_view other; ///< stem of the same list in the other order
    const char* title;
    const page_template& form;
    bool by_name;
    std::size_t size;
    std::function<void(text_buffer&, std::size_t)> put_row; ///< row i of the list
};

} // namespace

static void write_list_page(const site_settings& settings, const list& which, std::size_t number) {
    const std::size_t pages = std::max<std::size_t>((which.size + kRowsOfPage - 1) / kRowsOfPage, 1);
    const std::size_t first = (number - 1) * kRowsOfPage;
    site_page page(settings, list_page_name(which.stem, number), which.title);
    page.set("other", list_page_name(which.other, 1));
    page.set("path", which.title);
    page.values().choice("by_name", which.by_name);
    page.values().choice("by_uncovered", !which.by_name);
    page.values().set("count", [&] { put_grouped(page.out(), which.size); });
    page.values().set("pager", [&] {
        put_pager(page.out(), number, pages, page.up(),
                  [&](std::size_t other) { return list_page_name(which.stem, other); });
    });
    page.values().set("rows", [&] {
        for (std::size_t i = first; i < std::min(first + kRowsOfPage, which.size); ++i)
            which.put_row(page.out(), i);
    });
    page.write(which.form);
}

static void write_list(const site_settings& settings, const list& which) {
    for (std::size_t number = 1; number == 1 || (number - 1) * kRowsOfPage < which.size; ++number)
        write_list_page(settings, which, number);
}

static void write_file_lists(const site_settings& settings, const site_model& model) {
    const page_template form("files");
    std::vector<std::uint32_t> order(model.files.size());
    std::iota(order.begin(), order.end(), 0U);
    const auto put_row = [&](text_buffer& out, std::size_t i) {
        put_file_row(out, model.files[order[i]], "", "");
    };
    std::stable_sort(order.begin(), order.end(), [&](std::uint32_t a, std::uint32_t b) {
        return model.files[a].name < model.files[b].name;
    });
    write_list(settings, {"files-by-name", "files", "All files", form, true, order.size(), put_row});
    std::stable_sort(order.begin(), order.end(), [&](std::uint32_t a, std::uint32_t b) {
        return model.files[a].uncovered() > model.files[b].uncovered();
    });
    write_list(settings, {"files", "files-by-name", "All files", form, false, order.size(), put_row});
}

static void write_function_lists(const site_settings& settings, const site_model& model) {
    const page_template form("functions");
    std::vector<std::uint32_t> order(model.functions.size());
    std::iota(order.begin(), order.end(), 0U);
    const auto put_row = [&](text_buffer& out, std::size_t i) {
        const site_function& function = model.functions[order[i]];
        put_function_row(out, function, model.files[function.file], "");
    };
    std::stable_sort(order.begin(), order.end(), [&](std::uint32_t a, std::uint32_t b) {
        return std::strcmp(model.functions[a].name, model.functions[b].name) < 0;
    });
    write_list(settings,
               {"functions-by-name", "functions", "All functions", form, true, order.size(), put_row});
    std::stable_sort(order.begin(), order.end(), [&](std::uint32_t a, std::uint32_t b) {
        return model.functions[a].uncovered() > model.functions[b].uncovered();
    });
    write_list(settings,
               {"functions", "functions-by-name", "All functions", form, false, order.size(), put_row});
}

void write_list_pages(const site_settings& settings, const site_model& model) {
    write_file_lists(settings, model);
    write_function_lists(settings, model);
}
