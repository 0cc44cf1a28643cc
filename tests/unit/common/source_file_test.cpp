// Source files that are there and cannot be opened.

#include "common/fatal.h"
#include "common/source_file.h"
#include "tests/tools/scratch.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <sys/resource.h>

namespace {

/// Looks for the file that the argument names when no descriptor is left, as a run that goes well otherwise.
void look_without_descriptors(int, char** path) {
    rlimit usual = {};
    getrlimit(RLIMIT_NOFILE, &usual);
    const rlimit none = {3, usual.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
    std::string_view text;
    const bool found = load_source(*path, &text);
    setrlimit(RLIMIT_NOFILE, &usual); // sanitizers need some at the end
    pgt_Exit(found ? 2 : 0);
}

/// The exit status of the run.
int status_of(const char* path) {
    char* name = const_cast<char*>(path);
    return run_program(look_without_descriptors, 1, &name);
}

TEST(SourceFileDeathTest, OnlyAMissingFileIsPassedOver) {
    const scratch_directory scratch;
    const std::string there = scratch.put("there.c", "int a;\n");
    EXPECT_EXIT(std::exit(status_of("missing.c")), ::testing::ExitedWithCode(0), "^$");
    EXPECT_EXIT(std::exit(status_of(there.c_str())), ::testing::ExitedWithCode(1),
                "^ERROR: cannot read .*there.c\n$");
}

} // namespace
