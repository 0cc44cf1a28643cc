// The scanner of comments with the interpretation of the markers.
#include "bench/scratch.h"
#include "common/source_file.h"
#include "driver/run_state.h"
#include "markers/parser.h"
#include "profile/line_order.h"
#include "profile/module_list.h"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <string>
#include <vector>

/// Scans one file again and again; the argument says how many pairs of markers it holds, `shape` how they
/// lie.
static void scan(benchmark::State& state, std::uint64_t tree_sizes::*shape) {
    tree_sizes sizes = {.files = 1, .functions = 500, .blocks = 1, .lines = 40};
    sizes.*shape = static_cast<std::uint64_t>(state.range(0));
    const scratch_run run(sizes);
    const std::vector<std::string> none;
    const std::vector<std::string> begin = {"begin-dead"};
    const std::vector<std::string> end = {"end-dead"};
    for ([[maybe_unused]] auto _ : state) {
        const parser marks(componentList->fileName, none, begin, end, {}, run_sources());
        benchmark::DoNotOptimize(marks.is_disabled_line(1));
    }
    const auto size = static_cast<std::int64_t>(std::filesystem::file_size(componentList->fileName));
    state.SetBytesProcessed(state.iterations() * size);
}

static void scan_markers_in_a_row(benchmark::State& state) {
    scan(state, &tree_sizes::flat);
}
static void scan_nested_markers(benchmark::State& state) {
    scan(state, &tree_sizes::nested);
}
BENCHMARK(scan_markers_in_a_row)->Arg(0)->Arg(100)->Arg(8000)->Unit(benchmark::kMicrosecond);
BENCHMARK(scan_nested_markers)->Arg(100)->Arg(8000)->Unit(benchmark::kMicrosecond);
