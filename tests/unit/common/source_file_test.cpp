// Source files that are there and cannot be opened.

#include "common/fatal.h"
#include "common/source_file.h"
#include "tests/tools/scratch.h"

#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <sys/resource.h>

namespace {

/// Looks for `path` when no descriptor is left, and ends the run as if all had gone well.
[[noreturn]] void look_without_descriptors(const char* path) {
    rlimit usual = {};
    getrlimit(RLIMIT_NOFILE, &usual);
    const rlimit none = {3, usual.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
    std::string_view text;
    const bool found = load_source(path, &text);
    setrlimit(RLIMIT_NOFILE, &usual); // sanitizers need some at the end
    pgt_Exit(found ? 2 : 0);
}

TEST(SourceFileDeathTest, OnlyAMissingFileIsPassedOver) {
    const scratch_directory scratch;
    const std::string there = scratch.put("there.c", "int a;\n");
    EXPECT_EXIT(look_without_descriptors("missing.c"), ::testing::ExitedWithCode(0), "^$");
    EXPECT_EXIT(look_without_descriptors(there.c_str()), ::testing::ExitedWithCode(1),
                "^ERROR: cannot read .*there.c\n$");
}

} // namespace
