#include "import/profile_writer.h"

#include "import/source_names.h"
#include "tests/tools/scratch.h"
#include "tests/unit/import/failure.h"

#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <unistd.h>

namespace fs = std::filesystem;

/// One function that was called and one that was not, and where they are written to.
class ProfileWriter : public testing::Test {
  protected:
    ProfileWriter() {
        profile_.files = {"a.c"};
        profile_.records.push_back({0, "f", 3, 2, true, {{{3, 10}, 258}, {{5, 1}, 0}}});
        profile_.records.push_back({0, "g", 7, 4, false, {}});
    }

    void write(const std::string& spi = "p.spi") const {
        write_profiles(profile_, scratch_.path() / "p.dpi", scratch_.path() / spi, 2);
    }
    std::string dpi() const { return read_file(scratch_.path() / "p.dpi"); }
    std::string spi() const { return read_file(scratch_.path() / "p.spi"); }
    std::ptrdiff_t file_count() const { return std::distance(fs::directory_iterator(scratch_.path()), {}); }

    const scratch_directory scratch_;
    profile_data profile_;
};

static std::string hex(const std::string& bytes) {
    static const char digits[] = "0123456789abcdef";
    std::string text;
    for (const char c : bytes) {
        text += digits[static_cast<unsigned char>(c) >> 4];
        text += digits[static_cast<unsigned char>(c) & 15];
    }
    return text;
}

TEST_F(ProfileWriter, Bytes) {
    write();
    ASSERT_EQ(dpi().size(), 528U + 128U + 6U);
    EXPECT_EQ(hex(dpi().substr(0, 20)), "0bdc000002000000010000000000000000000000");
    EXPECT_EQ(dpi().find_first_not_of('\0', 16), 528U) << "no text";
    EXPECT_EQ(hex(dpi().substr(528)),
              "5003000000000000"                 // flags, version
              "80000000010000000200000000000000" // size, routines, blocks, second group
              "00000000000000000000000000000000" // third group, words
              "9002000000000000"                 // file name at 656
              "9402000000000000"                 // function name at 660
              "000000000000000000000000000000000000000000000000"
              "02010000000000000000000000000000" // counters
              "94020000000000000000000000000000" // routine name, entry counter
              "030000000a0000000500000001000000" // positions
              "612e63006600");
    EXPECT_EQ(spi(), "a.c - f 3 2 I\na.c - g 7 4 I\n");
    EXPECT_EQ(file_count(), 2) << "no temporary file is left";
}

TEST_F(ProfileWriter, VersionHeadForLongNames) {
    profile_.records[1].name.assign(4095, 'g');
    write();
    EXPECT_TRUE(spi().starts_with("a.c - f "));
    profile_.records[1].name.assign(4096, 'g');
    write();
    EXPECT_TRUE(spi().starts_with("V1 4096 4096 4097\na.c - f "));
    profile_.files[0].assign(70000, 'a');
    write();
    EXPECT_TRUE(spi().starts_with("V1 70001 4096 4097\naaa"));
}

TEST_F(ProfileWriter, FailuresLeaveTheOldPair) {
    scratch_.put("p.dpi", "old");
    scratch_.put("p.spi/x", "");
    const std::string directory = scratch_.path() / "p.spi";
    EXPECT_EQ(failure_of([&] { write(); }), "ERROR: " + directory + " is not a regular file\n");
    EXPECT_TRUE(failure_of([&] { write("no/p.spi"); }).starts_with("ERROR: cannot create "));
    EXPECT_EQ(dpi(), "old");
    EXPECT_EQ(file_count(), 2);
    fs::remove_all(directory);
    write();
    EXPECT_NE(dpi(), "old");
}

TEST_F(ProfileWriter, WaitsForTheLockOfTheOldProfile) {
    const int held = open(scratch_.put("p.dpi", "old").c_str(), O_RDWR);
    struct flock lock = {};
    lock.l_type = F_WRLCK;
    lock.l_start = 16;
    ASSERT_EQ(fcntl(held, F_SETLK, &lock), 0);
    scratch_.put("x.json",
                 R"({"type":"llvm.coverage.json.export","version":"2.0.1","data":[{"functions":[{"name":"f",)"
                 R"("count":1,"filenames":["a.c"],"regions":[[1,1,2,2,1,0,0,0]]}]}]})");
    const auto import = [this](const std::string& seconds) {
        return run_program("/usr/bin/timeout",
                           {"timeout", seconds, VEXCOV_IMPORT_PROGRAM, "clang", "-dpi", "p.dpi", "x.json"},
                           scratch_.path(), "")
            .status;
    };
    EXPECT_EQ(import("0.3"), 124) << "it waits";
    EXPECT_EQ(dpi(), "old");
    close(held);
    EXPECT_EQ(import("30"), 0);
    EXPECT_NE(dpi(), "old");
}

TEST(SourceNames, RootMayBeRelative) {
    const std::string here = fs::current_path();
    const source_names names("x/..");
    EXPECT_EQ(names.name_in_profile(here + "/src/../src/a.c"), "src/a.c");
    EXPECT_EQ(names.name_in_profile(here + "x/a.c"), here + "x/a.c");
    EXPECT_EQ(names.path_of("src/a.c"), here + "/src/a.c");
}
