#include "check/baseline.h"

#include <algorithm>
#include <tuple>
#include <unordered_map>

static std::int64_t newly_lacking(const fallen_file& file) {
    return uncovered_of(file.now) - uncovered_of(file.before);
}

static bool is_worse(const fallen_file& a, const fallen_file& b) {
    const std::int64_t lacking_a = newly_lacking(a);
    const std::int64_t lacking_b = newly_lacking(b);
    return std::tie(lacking_b, a.name) < std::tie(lacking_a, b.name);
}

baseline_result compare_with(const baseline& before, const std::vector<checked_file>& now,
                             const std::string& name, const percentage& tolerance) {
    std::unordered_map<std::string_view, const coverage_figures*> known;
    for (const checked_file& file : before.files)
        known.emplace(file.name, &file.figures);
    baseline_result result = {.name = name, .tolerance = tolerance, .totals = {}};
    for (const metric what : kMetrics) {
        baseline_total total = {
            .what = what, .now = {}, .before = count_of(before.totals, what), .fallen = {}};
        for (const checked_file& file : now) {
            const covered_count& count = count_of(file.figures, what);
            total.now.total += count.total;
            total.now.covered += count.covered;
            const auto old = known.find(file.name);
            if (old != known.end() && has_fallen(count, count_of(*old->second, what), tolerance))
                total.fallen.push_back({file.name, count, count_of(*old->second, what)});
        }
        total.held = !has_fallen(total.now, total.before, tolerance);
        std::sort(total.fallen.begin(), total.fallen.end(), is_worse);
        result.totals.push_back(std::move(total));
    }
    return result;
}
