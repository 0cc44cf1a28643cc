#include "driver/banner.h"

#include "tests/tools/scratch.h"

#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>

TEST(Banner, DirectoryAndPackageOfTheCompiler) {
    const std::string path = std::getenv("PATH");
    const scratch_directory scratch;
    scratch.put("plain/zrq", ""); // cannot be executed
    std::filesystem::permissions(scratch.put("bin/zrq", ""), std::filesystem::perms::owner_all);
    const std::string top = scratch.path().string(), bin = top + "/bin";
    setenv("PATH", (top + "/plain::" + top + "/none:" + bin).c_str(), 1);
    EXPECT_EQ(banner_Exec_Dir("zrq"), bin) << "the first directory where it can be executed";
    EXPECT_EQ(banner_Exec_Dir("zcq"), "");
    EXPECT_EQ(banner_Exec_Dir("/some/where/zrq"), "/some/where");
    EXPECT_EQ(banner_Version_Package_Id(banner_cpp), "") << "there is no such driver";
    EXPECT_EQ(banner_Concat(nullptr, "b") + banner_Concat("a", nullptr), "ba");

    const std::pair<std::string, std::string> packages[] = {
        {"x\nPackage ID:one\n Package ID: two\nPackage ID: \t three \n", "three "},
        {"Package ID: one", "on"}, // the last character is taken for the newline
        {"Package ID:\n", ""},
        {"package ID: one\n", ""},
        {"", ""},
        // 1023 bytes of a line are read at once
        {"Package ID:" + std::string(2000, 'x') + "\n", std::string(1011, 'x')},
    };
    for (const auto& [support, package] : packages) {
        scratch.put("doc/fsupport", support);
        EXPECT_EQ(banner_Version_Package_Id(banner_fortran), package) << support;
    }
    setenv("PATH", path.c_str(), 1);
}
