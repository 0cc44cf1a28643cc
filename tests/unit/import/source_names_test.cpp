#include "import/source_names.h"

#include "tests/tools/scratch.h"

#include <filesystem>
#include <gtest/gtest.h>

TEST(SourceNames, RootMayBeRelative) {
    const std::string here = std::filesystem::current_path();
    const source_names names("x/..");
    EXPECT_EQ(names.name_in_profile(here + "/src/../src/a.c"), "src/a.c");
    EXPECT_EQ(names.name_in_profile(here + "x/a.c"), here + "x/a.c");
    EXPECT_EQ(names.path_of("src/a.c"), here + "/src/a.c");
}

TEST(SourceNames, LinksLeadBelowTheRoot) {
    const scratch_directory scratch;
    const std::filesystem::path here = std::filesystem::canonical(scratch.path());
    scratch.put("real/src/a.c", "");
    scratch.put("elsewhere/b.c", "");
    std::filesystem::create_directory_symlink("real", here / "link");
    std::filesystem::create_directory_symlink("../elsewhere", here / "real/out");
    const source_names names((here / "real").string());
    EXPECT_EQ(names.name_in_profile(here / "link/src/a.c"), "src/a.c");
    EXPECT_EQ(names.name_in_profile(here / "link/src/gone.c"), "src/gone.c");
    EXPECT_EQ(names.name_in_profile(here / "link/c.c"), "c.c");
    EXPECT_EQ(names.name_in_profile(here / "link/out/b.c"), here / "link/out/b.c");
    EXPECT_EQ(names.name_in_profile(here / "real/out/b.c"), "out/b.c") << "as it is named";
    EXPECT_EQ(names.name_in_profile("/gone/d.c"), "/gone/d.c");
    EXPECT_EQ(source_names((here / "link").string()).name_in_profile(here / "link/src/a.c"), "src/a.c");
}
