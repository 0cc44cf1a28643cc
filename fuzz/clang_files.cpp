// Input: a program, object file or archive, and profiles, each behind a line break and the word "profile".
// What is handed out must be functions that a program can have, each once; whatever else comes ends with a
// message.
#include "fuzz/harness.h"
#include "import/clang/clang_inputs.h"

#include <algorithm>
#include <set>

constexpr std::string_view kSeparator = "\nprofile";

static void check_function(const export_function& function) {
    const std::int64_t files = static_cast<std::int64_t>(function.filenames.size());
    require(!function.name.empty(), "a function has a name");
    for (const export_region& region : function.regions) {
        require(region[kKind] >= 0 && region[kKind] <= 3 && region[kExecutionCount] >= 0 &&
                    region[kFileID] >= 0 && region[kFileID] < files && region[kExpandedFileID] >= 0 &&
                    region[kExpandedFileID] < files,
                "kinds, counts and file numbers are in range");
        require(region[kLineStart] < region[kLineEnd] ||
                    (region[kLineStart] == region[kLineEnd] && region[kColumnStart] <= region[kColumnEnd]),
                "a region does not end before its start");
    }
    require(function.regions.empty() || function.count == function.regions[0][kExecutionCount],
            "a function was entered as often as its first region");
}

static void read_files(const std::vector<std::string>& files) {
    clang_inputs inputs;
    for (const std::string& file : files)
        inputs.take(file);
    if (inputs.empty())
        return;
    std::set<std::string> known;
    export_function memory = {};
    const auto check = [&](const export_function& function, const std::string& program) {
        require(std::find(files.begin(), files.end(), program) != files.end(),
                "it is of one of the programs");
        check_function(function);
        std::string key = function.name;
        for (std::size_t i = 0; i < function.filenames.size(); ++i)
            key.append("\n").append(function.filenames.at(i));
        require(known.insert(key).second, "each function comes once");
    };
    inputs.read(check, &memory);
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string_view input(reinterpret_cast<const char*>(data), size);
    clear_scratch();
    std::vector<std::string> files;
    for (std::size_t end = 0; end != std::string_view::npos && files.size() < 4;) {
        end = input.find(kSeparator);
        files.push_back("p" + std::to_string(files.size()));
        scratch().put(files.back(), input.substr(0, end));
        input.remove_prefix(end == std::string_view::npos ? 0 : end + kSeparator.size());
    }
    run_in_scratch([&] { read_files(files); });
    return 0;
}
