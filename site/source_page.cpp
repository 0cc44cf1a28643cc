#include "site/source_page.h"

#include "site/figure_rows.h"
#include "site/function_list.h"
#include "site/html_text.h"
#include "site/page_names.h"
#include "site/strip.h"

/// "3 uncovered places", "no uncovered place"
static void put_count_of(text_buffer& out, std::uint32_t count, std::string_view what) {
    if (count == 0)
        out.put("no");
    else
        put_grouped(out, count);
    out.put(' ');
    out.put(what);
    if (count > 1)
        out.put('s');
}

void source_page_writer::write(const file_coverage& file, const code_survey& survey, const site_model& model,
                               const changed_lines& changed, site_file_entry& entry) const {
    entry.lines = survey.lines();
    entry.uncovered_places = survey.places;
    entry.infeasible_lines = survey.infeasible_lines;

    const std::string_view directory = directory_of(file.name);
    site_page page(settings_, entry.page, html_name(name_within(file.name, directory)));
    text_buffer& out = page.out();
    page_values& values = page.values();
    page.set("path", html_name(file.name, kLongestName, name_cut::front));
    page.set("directory",
             html_name(directory.empty() ? "all files" : directory, kLongestName, name_cut::front));
    page.set("directory_page", "../" + directory_page_name(directory));
    set_figure_rows(page, file.figures, nullptr);
    values.set("places", [&] {
        put_count_of(out, survey.places, settings_.differential ? "new place" : "uncovered place");
    });
    values.choice("has_places", survey.places != 0);
    values.set("function_count", [&] { put_count_of(out, entry.functions, "function"); });
    values.choice("has_functions", entry.functions != 0);
    const std::span<const site_function> functions(model.functions.data() + entry.first_function,
                                                   entry.functions);
    values.set("functions", [&] { put_function_list(out, functions, survey.lines()); });
    values.set("strip", [&] { put_strip(out, survey); });
    values.choice("has_infeasible", survey.infeasible_lines != 0);
    values.set("infeasible", [&] { put_count_of(out, survey.infeasible_lines, "infeasible line"); });
    values.set("code", [&] { code_writer(out, file.analysis, survey, changed).write(); });
    page.write(form_);
}
