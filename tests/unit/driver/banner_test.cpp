#include "driver/banner.h"

#include "tests/tools/scratch.h"

#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>

/// A compiler driver in bin/ of a scratch directory, which is the only place of PATH unless a test says
/// otherwise.
class Banner : public testing::Test {
  protected:
    Banner() : path_(std::getenv("PATH")) {
        write_file(bin_ / "zrq", "");
        std::filesystem::permissions(bin_ / "zrq", std::filesystem::perms::owner_all);
        search(bin_.string());
    }
    ~Banner() override { search(path_); }

    static void search(const std::string& path) { setenv("PATH", path.c_str(), 1); }

    std::string package(const std::string& support) {
        write_file(scratch_.path() / "doc" / "fsupport", support);
        return banner_Version_Package_Id(banner_fortran);
    }

    const scratch_directory scratch_;
    const std::filesystem::path bin_ = scratch_.path() / "bin";
    const std::string path_;
};

TEST_F(Banner, PackageIdentifier) {
    EXPECT_EQ(package("Package ID: one\n"), "one");
    EXPECT_EQ(package("x\nPackage ID:one\n Package ID: two\nPackage ID: \t three \n"), "three ");
    EXPECT_EQ(package("Package ID: one"), "on") << "the last character is taken for the newline";
    EXPECT_EQ(package("Package ID:\n"), "");
    EXPECT_EQ(package("package ID: one\n"), "");
    EXPECT_EQ(package(""), "");
    EXPECT_EQ(package("Package ID:" + std::string(2000, 'x') + "\n"), std::string(1011, 'x'))
        << "1023 bytes of a line are read at once";
    EXPECT_EQ(banner_Version_Package_Id(banner_cpp), "") << "there is no such driver";
}

TEST_F(Banner, DirectoryOfTheDriver) {
    write_file(scratch_.path() / "plain" / "zrq", "");
    std::filesystem::permissions(scratch_.path() / "plain" / "zrq", std::filesystem::perms::owner_read);
    search((scratch_.path() / "plain").string() + ":" + (scratch_.path() / "none").string() + ":" +
           bin_.string());
    EXPECT_EQ(banner_Exec_Dir("zrq"), bin_.string()) << "the first directory where it can be executed";
    EXPECT_EQ(banner_Exec_Dir("zcq"), "");
    EXPECT_EQ(banner_Exec_Dir("/some/where/zrq"), "/some/where");
    EXPECT_EQ(banner_Concat(nullptr, "b"), "b");
    EXPECT_EQ(banner_Concat("a", nullptr), "a");
}
