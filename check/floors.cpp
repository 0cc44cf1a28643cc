#include "check/floors.h"

#include <algorithm>
#include <fnmatch.h>
#include <tuple>

static const char* const names[] = {"blocks", "lines", "functions"}; ///< by metric

const char* name_of(metric what) {
    return names[static_cast<int>(what)];
}

std::optional<metric> metric_of(std::string_view name) {
    for (const metric what : kMetrics)
        if (name == name_of(what))
            return what;
    return std::nullopt;
}

covered_count& count_of(coverage_figures& figures, metric what) {
    return what == metric::blocks  ? figures.blocks
           : what == metric::lines ? figures.lines
                                   : figures.functions;
}

const covered_count& count_of(const coverage_figures& figures, metric what) {
    return count_of(const_cast<coverage_figures&>(figures), what);
}

std::string coverage_floor::subject() const {
    std::string text = name_of(what);
    if (each_file)
        text += " of each file";
    if (!pattern.empty())
        text += " of " + pattern;
    return text;
}

std::optional<coverage_floor> read_floor(std::string_view text) {
    const std::size_t equals = text.rfind('=');
    if (equals == std::string_view::npos)
        return std::nullopt;
    const std::string_view left = text.substr(0, equals);
    const std::size_t colon = left.rfind(':');
    const std::string_view name = colon == std::string_view::npos ? left : left.substr(colon + 1);
    const std::optional<metric> what = metric_of(name);
    const std::optional<percentage> least = read_percentage(text.substr(equals + 1));
    if (!what || !least || colon == 0)
        return std::nullopt;
    coverage_floor floor;
    floor.what = *what;
    floor.least = *least;
    if (colon != std::string_view::npos)
        floor.pattern = left.substr(0, colon);
    return floor;
}

bool is_about(const coverage_floor& floor, const std::string& name) {
    return floor.pattern.empty() || fnmatch(floor.pattern.c_str(), name.c_str(), 0) == 0;
}

/// Puts the worst files first.
static void sort_files(bool by_part, std::vector<file_count>* files) {
    std::sort(files->begin(), files->end(), [by_part](const file_count& a, const file_count& b) {
        if (by_part && is_lower(a.count, b.count) != is_lower(b.count, a.count))
            return is_lower(a.count, b.count);
        const std::int64_t lacking_a = uncovered_of(a.count);
        const std::int64_t lacking_b = uncovered_of(b.count);
        return std::tie(lacking_b, a.name) < std::tie(lacking_a, b.name);
    });
}

floor_result check_floor(const coverage_floor& floor, const std::vector<checked_file>& files) {
    floor_result result;
    result.floor = &floor;
    for (const checked_file& file : files) {
        if (!is_about(floor, file.name))
            continue;
        const covered_count& count = count_of(file.figures, floor.what);
        if (!reaches(count, floor.least))
            result.below.push_back({file.name, count});
        if (!floor.each_file) {
            result.count.total += count.total;
            result.count.covered += count.covered;
        } else if (is_lower(count, result.count)) {
            result.count = count;
            result.lowest = file.name;
        }
    }
    result.held = floor.each_file ? result.below.empty() : reaches(result.count, floor.least);
    if (result.held)
        result.below.clear();
    sort_files(floor.each_file, &result.below);
    return result;
}
