// The two profile readers.
#include "bench/scratch.h"
#include "driver/run_state.h"
#include "profile/dpi_lookup.h"
#include "profile/module_list.h"

#include <benchmark/benchmark.h>

static tree_sizes wide_tree(const benchmark::State& state) {
    return {.files = static_cast<std::uint64_t>(state.range(0)), .functions = 100, .lines = 6};
}

/// Items are records.
static void open_profile(benchmark::State& state) {
    const scratch_run run(wide_tree(state));
    for ([[maybe_unused]] auto _ : state)
        PGOPTI_Close_Dpi_File(PGOPTI_Open_Dpi_File("pgopti.dpi"));
    state.SetItemsProcessed(state.iterations() * state.range(0) * 100);
}
BENCHMARK(open_profile)->Arg(10)->Arg(100)->Unit(benchmark::kMillisecond);

/// Items are records, each looked up by its names and read, in the order of a run.
static void look_up_records(benchmark::State& state) {
    const scratch_run run(wide_tree(state));
    for ([[maybe_unused]] auto _ : state) {
        for (const COMP* comp = componentList; comp != nullptr; comp = comp->next) {
            DPI_SEGMENT* segment =
                PGOPTI_Get_Segment(pgofDPIFile, "pgopti.dpi", comp->fileName, comp->procName);
            benchmark::DoNotOptimize(segment);
            PGOPTI_Free_Segment(segment);
        }
    }
    state.SetItemsProcessed(state.iterations() * numComponents);
}
BENCHMARK(look_up_records)->Arg(10)->Arg(100)->Unit(benchmark::kMillisecond);

/// Items are routines of the static profile, read, sorted and released.
static void read_module_list(benchmark::State& state) {
    const scratch_run run(wide_tree(state));
    int count = 0;
    for ([[maybe_unused]] auto _ : state) {
        module_list list;
        benchmark::DoNotOptimize(GetComponentList("pgopti.spi", &count, nullptr, list));
    }
    state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(read_module_list)->Arg(10)->Arg(100)->Unit(benchmark::kMillisecond);
