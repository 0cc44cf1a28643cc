#include "site/figure_rows.h"

#include "common/number_format.h"

#include <cmath>
#include <cstdio>

/// "+3 (+0.12 %)": of what is covered, and of its share.
static void put_change(text_buffer& out, const covered_count& now, const covered_count& then) {
    const std::int64_t more = now.covered - then.covered;
    char number[kNumberTextSize];
    i64_to_ascii(number, more);
    out.put(more > 0 ? "<td>+" : "<td>");
    out.put(number);
    if (now.total == 0 || then.total == 0)
        return out.put("<td>");
    const auto share = [](const covered_count& count) {
        return static_cast<double>(count.covered) * 100.0 / static_cast<double>(count.total);
    };
    // Below what is shown nothing has changed, whatever its sign.
    const double hundredths = std::round((share(now) - share(then)) * 100);
    char text[32];
    std::snprintf(text, sizeof text, "%+.2f", hundredths / 100);
    out.put(hundredths < 0 ? "<td class=worse>" : hundredths > 0 ? "<td class=better>" : "<td>");
    out.put(hundredths == 0 ? "0.00" : text);
}

static void put_row(text_buffer& out, std::string_view what, const covered_count& now,
                    const covered_count* then) {
    out.put("<tr><th scope=row>");
    out.put(what);
    put_count_cells(out, now, true);
    if (then)
        put_change(out, now, *then);
}

static void put_rows(text_buffer& out, const coverage_figures& figures, const coverage_figures* older) {
    put_row(out, "Functions", figures.functions, older ? &older->functions : nullptr);
    put_row(out, "Blocks", figures.blocks, older ? &older->blocks : nullptr);
    put_row(out, "Lines", figures.lines, older ? &older->lines : nullptr);
}

void set_figure_rows(site_page& page, const coverage_figures& figures, const older_figures* older) {
    page.values().choice("with_change", older != nullptr);
    page.values().set("figures", [&page, figures, older] {
        put_rows(page.out(), figures, older ? &older->figures : nullptr);
    });
}

void set_all_figure_rows(site_page& page, const covered_count& files, const coverage_figures& figures,
                         const older_figures* older) {
    page.values().choice("with_change", older != nullptr);
    page.values().set("figures", [&page, files, figures, older] {
        const bool known = older && older->files.total != 0;
        put_row(page.out(), "Files", files, known ? &older->files : nullptr);
        if (older && !known)
            page.out().put("<td><td>");
        put_rows(page.out(), figures, older ? &older->figures : nullptr);
    });
}
