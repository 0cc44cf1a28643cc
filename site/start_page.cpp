#include "site/start_page.h"

#include "common/message.h"
#include "common/remedy.h"
#include "site/html_text.h"
#include "site/list_rows.h"
#include "site/treemap.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <numeric>
#include <unistd.h>

constexpr std::size_t kMostDirectories = 200; ///< of the table; with more, only those of the top
constexpr std::size_t kWorstFunctions = 20;
constexpr std::size_t kMostCareFiles = 50; ///< that are named one by one
constexpr std::size_t kBuckets = 10;

/// How many files have 0-9 %, 10-19 %, ... 90-100 % of their blocks covered.
static std::array<std::uint64_t, kBuckets> count_buckets(const site_model& model) {
    std::array<std::uint64_t, kBuckets> buckets = {};
    for (const site_file_entry& file : model.files) {
        const covered_count& blocks = file.figures.blocks;
        if (blocks.total <= 0)
            continue;
        const double share = static_cast<double>(blocks.covered) / static_cast<double>(blocks.total);
        ++buckets[std::min(static_cast<std::size_t>(std::max(share, 0.0) * kBuckets), kBuckets - 1)];
    }
    return buckets;
}

static void put_histogram(text_buffer& out, const site_model& model) {
    const std::array<std::uint64_t, kBuckets> buckets = count_buckets(model);
    const std::uint64_t largest =
        std::max<std::uint64_t>(*std::max_element(buckets.begin(), buckets.end()), 1);
    out.put("<svg class=histogram viewBox=\"0 0 400 150\" role=img aria-label=\"Files by the share of their "
            "blocks "
            "that is covered:");
    for (std::size_t i = 0; i < kBuckets; ++i) {
        out.put(i == 0 ? " " : ", ");
        out.put_number(buckets[i]);
        out.put(" from ");
        out.put_number(i * 10);
        out.put(" %");
    }
    out.put("\">");
    for (std::size_t i = 0; i < kBuckets; ++i) {
        // A single file among thousands is still seen.
        const std::uint64_t height =
            buckets[i] == 0 ? 0 : std::max<std::uint64_t>(buckets[i] * 110 / largest, 2);
        out.put("<rect x=");
        out.put_number(i * 40 + 2);
        out.put(" y=");
        out.put_number(128 - height);
        out.put(" width=36 height=");
        out.put_number(height);
        out.put("></rect><text x=");
        out.put_number(i * 40 + 20);
        out.put(" y=");
        out.put_number(124 - height);
        out.put(">");
        if (buckets[i] != 0)
            put_grouped(out, buckets[i]);
        out.put("</text><text x=");
        out.put_number(i * 40 + 20);
        out.put(" y=143>");
        out.put_number(i * 10);
        out.put("%</text>");
    }
    out.put("</svg>");
}

static void put_directories(text_buffer& out, const site_model& model) {
    const site_directory& top = model.directories[model.top];
    if (model.directories.size() > kMostDirectories) {
        for (const std::uint32_t index : top.directories)
            put_directory_row(out, model.directories[index], top.path, "");
        return;
    }
    std::vector<const site_directory*> all;
    for (const site_directory& directory : model.directories)
        if (directory.path.size() > top.path.size() || &directory == &top)
            all.push_back(&directory);
    std::sort(all.begin(), all.end(), [](const auto* a, const auto* b) { return a->path < b->path; });
    for (const site_directory* directory : all)
        if (directory != &top)
            put_directory_row(out, *directory, top.path, "");
}

static void put_worst_functions(text_buffer& out, const site_model& model) {
    std::vector<std::uint32_t> order(model.functions.size());
    std::iota(order.begin(), order.end(), 0U);
    const std::size_t count = std::min(kWorstFunctions, order.size());
    std::partial_sort(order.begin(), order.begin() + static_cast<std::ptrdiff_t>(count), order.end(),
                      [&](std::uint32_t a, std::uint32_t b) {
                          const auto rank = [&](std::uint32_t i) { return model.functions[i].uncovered(); };
                          return rank(a) != rank(b) ? rank(a) > rank(b) : a < b;
                      });
    for (std::size_t i = 0; i < count; ++i) {
        const site_function& function = model.functions[order[i]];
        if (function.uncovered() > 0)
            put_function_row(out, function, model.files[function.file], "");
    }
}

static void put_warnings(text_buffer& out, const run_warnings& warnings) {
    for (const std::string& warning : warnings.first) {
        out.put("<li>");
        put_name(out, warning);
    }
    if (warnings.more != 0) {
        out.put("<li>");
        put_grouped(out, warnings.more);
        out.put(" more warnings stood on standard error.");
    }
}

static void put_missing(text_buffer& out, const std::vector<std::string>& missing) {
    for (std::size_t i = 0; i < std::min(missing.size(), kMostCareFiles); ++i) {
        out.put("<li>The source of ");
        put_name(out, missing[i], kLongestName, name_cut::front);
        out.put(" is not there: it is in no figure.");
    }
    if (missing.size() > kMostCareFiles) {
        out.put("<li>The sources of ");
        put_grouped(out, missing.size() - kMostCareFiles);
        out.put(" more files are not there.");
    }
}

static void put_infeasible(text_buffer& out, const site_model& model) {
    std::vector<const site_file_entry*> infeasible;
    for (const site_file_entry& file : model.files)
        if (file.infeasible_lines != 0)
            infeasible.push_back(&file);
    std::stable_sort(infeasible.begin(), infeasible.end(),
                     [](const auto* a, const auto* b) { return a->infeasible_lines > b->infeasible_lines; });
    for (std::size_t i = 0; i < std::min(infeasible.size(), kMostCareFiles); ++i) {
        out.put("<li><a href=\"");
        out.put(infeasible[i]->page);
        out.put("\">");
        put_name(out, infeasible[i]->name, 120, name_cut::front);
        out.put("</a>: ");
        put_grouped(out, infeasible[i]->infeasible_lines);
        out.put(infeasible[i]->infeasible_lines == 1 ? " line is" : " lines are");
        out.put(" marked infeasible and in no figure.");
    }
    if (infeasible.size() > kMostCareFiles) {
        out.put("<li>");
        put_grouped(out, infeasible.size() - kMostCareFiles);
        out.put(" more files have infeasible lines.");
    }
}

/// The list of what a reader of the figures should know.
static void put_care(text_buffer& out, const site_model& model) {
    put_warnings(out, model.warnings);
    put_missing(out, model.totals.missing);
    put_infeasible(out, model);
}

static bool needs_care(const site_model& model) {
    return !model.totals.missing.empty() || !model.warnings.first.empty() ||
           std::any_of(model.files.begin(), model.files.end(),
                       [](const site_file_entry& file) { return file.infeasible_lines != 0; });
}

constexpr const char* kStartPage = "index.html";
constexpr const char* kUnfinished = "index.html.tmp"; ///< its name while it is written

static void draw_start_page(const site_settings& settings, const site_model& model,
                            const older_figures* older) {
    const page_template form("start");
    site_page page(settings, kUnfinished, "Start");
    text_buffer& out = page.out();
    page_values& values = page.values();
    set_all_figure_rows(page, model.totals.files, model.totals.figures, older);
    values.set("treemap", [&] { put_treemap(out, model, model.top, ""); });
    values.set("histogram", [&] { put_histogram(out, model); });
    values.set("top_page", [&] { out.put(model.directories[model.top].page); });
    values.choice("has_directories", !model.directories[model.top].directories.empty());
    values.choice("one_directory", model.directories[model.top].directories.empty());
    values.set("directories", [&] { put_directories(out, model); });
    values.set("worst", [&] { put_worst_functions(out, model); });
    values.choice("has_care", needs_care(model));
    values.set("care", [&] { put_care(out, model); });
    page.write(form);
}

void remove_start_page(const site_settings& settings) {
    const std::string path = settings.directory + "/" + kStartPage;
    if (unlink(path.c_str()) != 0 && errno != ENOENT)
        end_with_error("cannot remove %s: %s", printable(path).c_str(), reason_of(errno).c_str());
}

namespace {

/// A start page that is not finished, which must not stay when the run ends early.
struct unfinished_page {
    std::string path;
    ~unfinished_page() {
        if (!path.empty())
            unlink(path.c_str());
    }
};

} // namespace

void write_start_page(const site_settings& settings, const site_model& model, const older_figures* older) {
    unfinished_page unfinished{settings.directory + "/" + kUnfinished};
    draw_start_page(settings, model, older);
    const std::string path = settings.directory + "/" + kStartPage;
    if (std::rename(unfinished.path.c_str(), path.c_str()) != 0)
        end_with_error("cannot write %s: %s", printable(path).c_str(), reason_of(errno).c_str());
    unfinished.path.clear();
}

void write_help_page(const site_settings& settings) {
    site_page page(settings, "help.html", "Help");
    page.write(page_template("help"));
}
