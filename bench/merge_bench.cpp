// Adding up profiles.
#include "bench/scratch.h"
#include "profile_tool/profile_merge.h"

#include <benchmark/benchmark.h>
#include <cstdio>
#include <sys/stat.h>

/// Bytes are those of the profiles; so many of them hold the same records.
static void merge_profiles(benchmark::State& state) {
    const scratch_run run({.files = 20, .functions = 100, .lines = 6});
    const std::vector<std::string> profiles(static_cast<std::size_t>(state.range(0)), "pgopti.dpi");
    struct stat status = {};
    stat("pgopti.dpi", &status);
    for ([[maybe_unused]] auto _ : state) {
        profile_merge merge(".", nullptr, false);
        std::string error;
        std::FILE* const out = std::fopen("sum.dpi", "wb");
        if (!out || !merge.collect(profiles, &error) || !merge.write(out, &error) || std::fclose(out) != 0)
            state.SkipWithError(error.c_str());
    }
    state.SetBytesProcessed(state.iterations() * state.range(0) * status.st_size);
}
BENCHMARK(merge_profiles)->Arg(2)->Arg(16)->Arg(256)->Unit(benchmark::kMillisecond);
