// The importer's reader of the compiler's JSON export.
#include "import/clang_export.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>

static const int FUNCTIONS = 2000;
static const int REGIONS = 40;

/// An export as the compiler's tools write it, on one line.
static std::string made_up_export() {
    std::string text = R"({"data":[{"files":[],"functions":[)";
    for (int i = 0; i < FUNCTIONS; i++) {
        text += i == 0 ? "" : ",";
        text +=
            R"({"branches":[],"count":1234,"filenames":["/home/user/src/module.cpp"],"name":"_ZN6module7handlerEi)";
        text += std::to_string(i) + R"(","regions":[)";
        for (int region = 0; region < REGIONS; region++) {
            const std::string line = std::to_string(i * REGIONS + region + 1);
            text += region == 0 ? "" : ",";
            text += "[" + line + ",5," + line + ",33," + std::to_string(i * region) + ",0,0,0]";
        }
        text += "]}";
    }
    return text + R"(],"totals":{}}],"type":"llvm.coverage.json.export","version":"2.0.1"})";
}

/// Bytes are those of the export.
static void read_export(benchmark::State& state) {
    const std::string text = made_up_export();
    std::FILE* stream = std::tmpfile();
    std::fwrite(text.data(), 1, text.size(), stream);
    std::size_t regions = 0;
    export_function memory = {};
    for ([[maybe_unused]] auto _ : state) {
        std::rewind(stream);
        const auto count = [&](const export_function& function) { regions += function.regions.size(); };
        read_clang_export(stream, "made up", count, &memory);
    }
    benchmark::DoNotOptimize(regions);
    std::fclose(stream);
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}
BENCHMARK(read_export)->Unit(benchmark::kMillisecond);
