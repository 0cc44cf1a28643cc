#include "site/site_run.h"

#include "check/baseline.h"
#include "common/message.h"
#include "common/remedy.h"
#include "common/source_file.h"
#include "site/changes_page.h"
#include "site/code_survey.h"
#include "site/directory_page.h"
#include "site/html_text.h"
#include "site/kept_messages.h"
#include "site/list_pages.h"
#include "site/site_files.h"
#include "site/site_options.h"
#include "site/source_page.h"
#include "site/start_page.h"

#include <cerrno>
#include <memory>
#include <sys/stat.h>
#include <utility>

/// Makes a directory unless it is there.
static void make_directory(const std::string& path) {
    struct stat status;
    if (mkdir(path.c_str(), 0777) != 0 &&
        (errno != EEXIST || stat(path.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)))
        end_with_error("cannot make the directory %s: %s", printable(path).c_str(), reason_of(errno).c_str());
}

/// Makes a directory and those that it is in.
static void make_directories(const std::string& path) {
    for (std::size_t slash = path.find('/', 1); slash != std::string::npos; slash = path.find('/', slash + 1))
        make_directory(path.substr(0, slash));
    make_directory(path);
}

static site_settings settings_of(const site_options& options) {
    site_settings settings;
    settings.directory = options.directory;
    settings.title = html_name(options.title);
    settings.differential = options.with_reference;
    settings.no_partial = options.no_partial;
    settings.has_own_style = !options.style_sheet.empty();
    settings.has_changes = !options.diff.empty();
    return settings;
}

/// The figures to compare with; null when there are none.
static std::unique_ptr<older_figures> read_older(const site_options& options) {
    if (options.baseline.empty())
        return nullptr;
    const baseline before = read_baseline(options.baseline);
    if (before.differential != options.with_reference)
        end_with_error("%s was made %s -ref, unlike these figures; make it like them",
                       printable(options.baseline).c_str(), before.differential ? "with" : "without");
    return std::make_unique<older_figures>(older_figures{before.files_counted, before.totals});
}

/// The user's own style sheet; empty without one.
static std::string read_own_style(const site_options& options) {
    if (options.style_sheet.empty())
        return {};
    std::string_view text;
    if (!load_source(options.style_sheet.c_str(), &text))
        end_with_error("cannot read the style sheet %s; -css names another",
                       printable(options.style_sheet).c_str());
    std::string style(text);
    release_source();
    return style;
}

/// The files of the site that are the same for every program.
static void write_fixed_files(const site_settings& settings, const std::string& own_style) {
    make_directories(settings.directory);
    remove_start_page(settings);
    make_directory(settings.directory + "/s");
    make_directory(settings.directory + "/d");
    for (const char* name : {"icon.svg", "site.css", "site.js"})
        write_site_file(settings, name, site_file(name));
    if (settings.has_own_style)
        write_site_file(settings, "own.css", own_style);
}

void run_site(int argc, char** argv) {
    site_options options;
    parse_site_options(argc, argv, &options);
    const kept_messages messages;
    const std::unique_ptr<older_figures> older = read_older(options);
    coverage_walk walk(options);
    site_changes changes(options, walk);
    const site_settings settings = settings_of(options);
    const std::string own_style = read_own_style(options);

    site_model model;
    const source_page_writer source_pages(settings);
    code_surveyor surveyor(options.no_partial);
    bool begun = false; // an older site stays where there is nothing to show
    const auto write_source = [&](const file_coverage& file) {
        if (!std::exchange(begun, true))
            write_fixed_files(settings, own_style);
        const code_survey survey = surveyor.finish();
        site_file_entry& entry = model.add_file(file);
        source_pages.write(file, survey, model, changes.lines_of(file.name), entry);
        changes.add_excerpts(file, survey, entry.page);
    };
    model.totals = walk.run_any(write_source, [&](const line_walk& line) { surveyor.add(line); });
    model.warnings = messages.warnings();
    model.find_directories();
    write_directory_pages(settings, model);
    write_list_pages(settings, model);
    write_help_page(settings);
    if (settings.has_changes)
        changes.write(settings);
    write_start_page(settings, model, older.get());
}
