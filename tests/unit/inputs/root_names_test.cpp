// Names of source files relative to a root.
#include "inputs/root_names.h"

#include "tests/tools/scratch.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace {

std::string resolved(const root_names& names, const std::string& path) {
    std::string name;
    const bool below = names.resolve(path, &name);
    return (below ? "below " : "outside ") + name;
}

TEST(RootNames, AreRelativeBelowTheRoot) {
    const scratch_directory scratch;
    const fs::path home = fs::current_path();
    fs::create_directories(scratch.path() / "real/src");
    fs::create_directory_symlink("real", scratch.path() / "link");
    fs::current_path(scratch.path() / "real");
    const std::string top = scratch.path().string();
    const root_names here("");
    EXPECT_EQ(here.root(), top + "/real");
    EXPECT_EQ(resolved(here, "src/a.c"), "below src/a.c");
    EXPECT_EQ(resolved(here, "./src//../b.c"), "below b.c");
    EXPECT_EQ(resolved(here, top + "/real/src/a.c"), "below src/a.c");
    EXPECT_EQ(resolved(here, top + "/link/src/a.c"), "below src/a.c");
    EXPECT_EQ(resolved(here, "../a.c"), "outside " + top + "/a.c");
    EXPECT_EQ(resolved(here, top + "/realistic.c"), "outside " + top + "/realistic.c");
    const root_names through_link("../link/");
    EXPECT_EQ(through_link.root(), top + "/link");
    EXPECT_EQ(resolved(through_link, "src/a.c"), "below src/a.c");
    EXPECT_EQ(resolved(root_names("/"), "/a.c"), "below a.c");
    fs::current_path(home);
}

} // namespace
