// The join of a source file with its counters, and the writer of its listing.
#include "bench/scratch.h"
#include "common/source_file.h"
#include "coverage/block_marking.h"
#include "coverage/coverage_list.h"
#include "driver/run_config.h"
#include "driver/run_state.h"
#include "markers/parser.h"
#include "profile/line_order.h"
#include "profile/module_list.h"
#include "report/listing.h"

#include <benchmark/benchmark.h>

static const tree_sizes LONG_FILE = {.files = 1, .functions = 500, .blocks = 24, .lines = 40};

static void mark_file() {
    pars = new parser(componentList->fileName, one_line_disable, start_disable_block, end_disable_block, {},
                      run_sources());
    markBlocks(componentList);
}

static void forget_file() {
    delete pars;
    pars = nullptr;
    g_cl->vPrepareForNewSrcFile();
}

/// Items are blocks.
static void marking(benchmark::State& state) {
    const scratch_run run(LONG_FILE);
    order_func(componentList);
    for ([[maybe_unused]] auto _ : state) {
        mark_file();
        forget_file();
    }
    state.SetItemsProcessed(state.iterations() *
                            static_cast<std::int64_t>(LONG_FILE.functions * LONG_FILE.blocks));
}
BENCHMARK(marking)->Unit(benchmark::kMillisecond);

/// Items are lines. The argument switches the count lines on.
static void listing(benchmark::State& state) {
    const scratch_run run(LONG_FILE);
    order_func(componentList);
    g_bXCOUNTS = state.range(0) != 0;
    for ([[maybe_unused]] auto _ : state) {
        state.PauseTiming();
        mark_file();
        state.ResumeTiming();
        bOutputLineCoverage("html");
        state.PauseTiming();
        forget_file();
        state.ResumeTiming();
    }
    g_bXCOUNTS = false;
    state.SetItemsProcessed(state.iterations() *
                            static_cast<std::int64_t>(LONG_FILE.functions * LONG_FILE.lines));
}
BENCHMARK(listing)->ArgName("counts")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
