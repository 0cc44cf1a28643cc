// Runs a fuzz target over files and the files of directories, for builds without a fuzzing engine; the status
// is 1 where there are none. Options of an engine (arguments that begin with "-") are passed over.
#include "fuzz/harness.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <vector>

namespace fs = std::filesystem;

int main(int argc, char** argv) {
    std::vector<fs::path> inputs;
    for (int i = 1; i < argc; ++i) {
        if (argv[i][0] == '-')
            continue;
        if (!fs::is_directory(argv[i])) {
            inputs.emplace_back(argv[i]);
            continue;
        }
        for (const fs::directory_entry& entry : fs::directory_iterator(argv[i]))
            if (entry.is_regular_file())
                inputs.push_back(entry.path());
    }
    std::sort(inputs.begin(), inputs.end());
    LLVMFuzzerTestOneInput(nullptr, 0);
    for (const fs::path& input : inputs) {
        const std::string bytes = read_file(input);
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    }
    std::printf("%zu inputs replayed\n", inputs.size());
    return inputs.empty() ? 1 : 0;
}
