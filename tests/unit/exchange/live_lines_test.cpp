// The lines of an example program, counted by clang's own exporter and by ours.
#include "tests/tools/scratch.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <sstream>

namespace fs = std::filesystem;

namespace {

using line_counts = std::map<std::string, std::map<unsigned, unsigned long>>; ///< by file

/// The lines of a trace; names lose `root`.
line_counts lines_of(const std::string& trace, const std::string& root) {
    line_counts counts;
    std::string file;
    std::istringstream records(trace);
    for (std::string record; std::getline(records, record);) {
        unsigned line = 0;
        unsigned long count = 0;
        if (record.starts_with("SF:"))
            file = record.substr(record.starts_with("SF:" + root) ? 3 + root.size() : 3);
        else if (std::sscanf(record.c_str(), "DA:%u,%lu", &line, &count) == 2)
            counts[file][line] = count;
    }
    return counts;
}

std::string run(const scratch_directory& scratch, const std::string& command) {
    const program_result result = run_command(command, scratch.path(), "/usr/bin:/bin");
    EXPECT_EQ(result.status, 0) << command << "\n" << result.standard_error;
    return result.standard_output;
}

TEST(ExportLines, AreThoseOfClang) {
    const scratch_directory scratch;
    for (const char* tool : {"clang --version", "llvm-profdata --help", "llvm-cov --version"})
        if (run_command(tool, scratch.path(), "/usr/bin:/bin").status != 0)
            GTEST_SKIP() << "no " << tool;
    const fs::path example = fs::path(VEXCOV_TEST_DATA) / "../examples/wordcount";
    for (const auto& entry : fs::directory_iterator(example))
        if (entry.is_regular_file())
            scratch.put(entry.path().filename().string(), read_file(entry.path()));
    run(scratch, "sh -c 'clang -g -fprofile-instr-generate -fcoverage-mapping -o app *.c'");
    const std::string root = scratch.path().string() + "/";
    run(scratch, "env LLVM_PROFILE_FILE=1.profraw ./app -l wordcount.c");
    run(scratch, "sh -c 'LLVM_PROFILE_FILE=2.profraw ./app <wordcount.c'");
    run(scratch, "vexcov-import clang -root . app 1.profraw 2.profraw");
    run(scratch, "llvm-profdata merge -o app.profdata 1.profraw 2.profraw");
    const line_counts theirs =
        lines_of(run(scratch, "llvm-cov export -format=lcov -instr-profile=app.profdata app"), root);
    line_counts ours = lines_of(run(scratch, "vexcov-export lcov"), root);
    std::size_t compared = 0;
    for (const auto& [file, lines] : theirs) {
        for (const auto& [line, count] : lines) {
            ASSERT_TRUE(ours[file].contains(line)) << file << ":" << line;
            EXPECT_EQ(ours[file][line] != 0, count != 0) << file << ":" << line;
            ++compared;
        }
    }
    EXPECT_GT(compared, 50U);
}

} // namespace
