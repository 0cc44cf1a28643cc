// Input: names, a source, its functions and the positions of its blocks, all as hostile as it gets. Every
// page of the site about them is read by a plain reader of HTML: tags and attributes are the site's own, all
// that is opened is closed, and the code is the source.
#include "fuzz/harness.h"
#include "fuzz/site_check.h"
#include "inputs/coverage_walk.h"
#include "site/directory_page.h"
#include "site/html_text.h"
#include "site/list_pages.h"
#include "site/source_page.h"
#include "site/start_page.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <list>
#include <memory>
#include <set>

namespace fs = std::filesystem;

namespace {

/// What the input describes.
struct scenario {
    source_analysis analysis;
    std::vector<line_coverage> lines;
    std::list<std::string> names; ///< of functions
    changed_lines changed;
    std::size_t blocks = 0;
};

} // namespace

/// A name of some bytes of the input; none is empty or holds a NUL.
static std::string name_of(byte_script& script) {
    std::string name(script.take(script.below(40)));
    std::replace(name.begin(), name.end(), '\0', '/');
    return name.empty() ? "n" : name;
}

static void add_function(byte_script& script, scenario* all) {
    all->names.push_back(name_of(script));
    source_function function = {};
    function.name = function.shown_name = all->names.back().c_str();
    function.line = static_cast<std::int32_t>(script.below(40));
    function.called = script.flag();
    function.blocks = script.below(5);
    function.covered = script.below(5);
    function.entry_count = script.number();
    all->analysis.functions.push_back(function);
}

/// Positions of blocks, now and then very many on one line.
static void add_positions(byte_script& script, scenario* all) {
    static const std::uint64_t counts[] = {0,      1,       999,           1000,
                                           123456, 5000000, NEVER_ENTERED, NEVER_ENTERED - 1};
    const std::uint32_t line = std::max(script.below(40), 1U);
    const std::uint32_t column = std::max(script.below(60), 1U);
    const std::uint64_t count = counts[script.below(8)];
    const std::uint32_t repeated = script.below(64) == 0 ? 700 : 1;
    for (std::uint32_t i = 0; i < repeated; ++i)
        all->analysis.positions.add_block(line, column + i, count, false, nullptr);
    if (script.below(8) == 0)
        all->analysis.positions.adjust(line, column);
    all->blocks += repeated;
}

static void read_scenario(byte_script& script, std::string_view source, scenario* all) {
    source_analysis& analysis = all->analysis;
    analysis.path = name_of(script) + std::string(script.below(3) != 0 ? 0 : 2000, 'y');
    if (script.flag())
        analysis.path += ".c";
    analysis.text = source;
    analysis.no_partial = script.below(8) == 0;
    analysis.positions = position_table(count_lines(source) + 1);
    for (unsigned int i = script.below(8); i > 0; --i)
        add_function(script, all);
    for (unsigned int i = script.below(40); i > 0; --i)
        add_positions(script, all);
    analysis.positions.sort();
    if (script.flag()) {
        const unsigned int first = script.below(30);
        analysis.disabled.add(first, first + script.below(4));
        all->changed.push_back({first + 1, first + 2});
    }
    analysis.disabled.finish();
    analysis.figures.blocks = script.below(200);
    analysis.figures.blocks_covered = script.below(200);
}

/// Writes what the page of changed lines shows of a source, by itself.
static void write_excerpts(const scenario& all, const code_survey& survey, const std::string& page) {
    std::FILE* const stream = std::fopen("site/excerpts.html", "w");
    require(stream != nullptr, "a page is opened");
    {
        const auto out = std::make_unique<text_buffer>(stream);
        out->put("<!DOCTYPE html>\n");
        code_writer(*out, all.analysis, survey, all.changed).write_excerpts(page);
    }
    std::fclose(stream);
}

/// Writes all pages of a site that has the source twice, as two names may come to one.
static void write_site(const scenario& all, const std::string& other_name) {
    site_settings settings;
    settings.directory = "site";
    settings.title = html_name(all.analysis.path);
    settings.no_partial = all.analysis.no_partial;
    site_model model;
    const source_page_writer writer(settings);
    code_surveyor surveyor(settings.no_partial);
    code_survey survey;
    for (const std::string& name : {all.analysis.path, other_name}) {
        const file_coverage file = {
            all.analysis,
            name,
            true,
            all.lines,
            {{3, 1}, {all.analysis.figures.blocks, all.analysis.figures.blocks_covered}, {5, 5}, 0},
            nullptr};
        site_file_entry& entry = model.add_file(file);
        for (line_walk walk(all.analysis); walk.next();)
            surveyor.add(walk);
        survey = surveyor.finish();
        writer.write(file, survey, model, all.changed, entry);
        model.totals.missing.push_back(name);
    }
    require(model.files[0].page != model.files[1].page || model.files[0].name.empty(),
            "pages have names of their own");
    model.warnings = {{all.analysis.path, other_name}, model.files.size()};
    model.find_directories();
    write_directory_pages(settings, model);
    write_list_pages(settings, model);
    write_help_page(settings);
    write_excerpts(all, survey, model.files[1].page);
    write_start_page(settings, model, nullptr);
    for (const char* fixed : {"site.css", "site.js", "icon.svg"})
        write_site_file(settings, fixed, "");
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    byte_script input(data, size);
    byte_script script(input.take(std::size_t{input.byte()} * 4));
    const std::string_view source = input.rest();
    clear_scratch();
    for (const char* folder : {"site", "site/s", "site/d"})
        fs::create_directories(scratch().path() / folder);
    scenario all;
    read_scenario(script, source, &all);
    const std::string other_name = script.flag() ? all.analysis.path : name_of(script);
    const outcome end = run_in_scratch([&] { write_site(all, other_name); });
    require(!end.ended, "a site is written");
    std::set<std::string> names;
    for (const auto& entry : fs::recursive_directory_iterator(scratch().path() / "site")) {
        const std::string name = entry.path().lexically_relative(scratch().path()).string();
        std::string lower = name;
        std::transform(lower.begin(), lower.end(), lower.begin(),
                       [](unsigned char c) { return std::tolower(c); });
        require(names.insert(lower).second, "names differ in more than case");
        if (entry.path().extension() != ".html")
            continue;
        const std::string page = read_scratch(name);
        const std::string code = check_site_page(page, name);
        if (name.starts_with("site/s/")) {
            check_code(code, source);
            require(page.size() < 20000 + 8 * source.size() + 100 * count_lines(source) + 200 * all.blocks,
                    "the size of a page is bounded");
        }
    }
    return 0;
}
