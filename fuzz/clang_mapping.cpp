// Input: the number of counters, a byte each for them, and the mapping of a function. A decoder that has
// decoded another mapping before must make the same of it as a new one.
#include "fuzz/harness.h"
#include "import/clang/function_mapping.h"

/// Whether the mapping fits the counters; its function is in `*function`. The fault, where there is one, is
/// its name.
static bool decode(mapping_decoder* decoder, std::string_view mapping,
                   const std::vector<std::uint64_t>& counters, export_function* function) {
    try {
        mapping_files files;
        read_mapping_files(mapping, &files);
        is_unused_function(mapping, files);
        const function_counters given = {counters.empty() ? nullptr : counters.data(), counters.size()};
        return decoder->decode(mapping.substr(files.end), files.indices.size(), given, function);
    } catch (const input_error& error) {
        function->regions.clear();
        function->name = error.what();
        return false;
    }
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static mapping_decoder used;
    byte_script script(data, size);
    std::vector<std::uint64_t> counters(script.byte());
    for (std::uint64_t& counter : counters)
        counter = script.byte();
    const std::string_view mapping = script.rest();
    mapping_decoder fresh;
    export_function first = {}, second = {};
    const bool fits = decode(&fresh, mapping, counters, &first);
    require(decode(&used, mapping, counters, &second) == fits && first.name == second.name &&
                first.regions == second.regions && (!fits || first.count == second.count),
            "what was decoded before does not matter");
    if (!fits || counters.empty())
        return 0;
    for (const export_region& region : first.regions)
        require(region[kKind] == 2 ? region[kExecutionCount] == 0 : region[kExecutionCount] >= 0,
                "counts are in range");
    require(decode(&used, mapping, {}, &second) && first.regions.size() == second.regions.size(),
            "a function that was never called has the same regions");
    return 0;
}
