// Input: the JSON of an older run. It is read, with figures that can be and a name for every file, or
// refused; and a run is never lower than itself.
#include "check/baseline.h"

#include "fuzz/harness.h"

#include <optional>

static void check_figures(const coverage_figures& figures) {
    for (const metric what : kMetrics) {
        const covered_count& count = count_of(figures, what);
        require(count.total >= 0 && count.covered >= 0, "no figure below 0");
    }
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    write_file(scratch().path() / "old.json", {reinterpret_cast<const char*>(data), size});
    std::optional<baseline> before;
    const outcome result = run_in_scratch([&] { before = read_baseline("old.json"); });
    require(before.has_value() != result.ended, "a baseline or a message");
    if (!before)
        return 0;
    check_figures(before->totals);
    coverage_figures sums;
    for (const checked_file& file : before->files) {
        require(!file.name.empty(), "a name for every file");
        check_figures(file.figures);
        for (const metric what : kMetrics) {
            // Figures whose sum cannot be are of no run.
            covered_count& sum = count_of(sums, what);
            const covered_count& count = count_of(file.figures, what);
            if (__builtin_add_overflow(sum.total, count.total, &sum.total) ||
                __builtin_add_overflow(sum.covered, count.covered, &sum.covered))
                return 0;
        }
    }
    before->totals = sums;
    for (const baseline_total& total : compare_with(*before, before->files, "old.json", {}).totals)
        require(total.held, "no lower than itself");
    return 0;
}
