#include "import/source_names.h"

#include <filesystem>
#include <gtest/gtest.h>

TEST(SourceNames, RootMayBeRelative) {
    const std::string here = std::filesystem::current_path();
    const source_names names("x/..");
    EXPECT_EQ(names.name_in_profile(here + "/src/../src/a.c"), "src/a.c");
    EXPECT_EQ(names.name_in_profile(here + "x/a.c"), here + "x/a.c");
    EXPECT_EQ(names.path_of("src/a.c"), here + "/src/a.c");
}
