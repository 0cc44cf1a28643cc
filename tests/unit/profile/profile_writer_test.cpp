// Writing both profiles: the bytes, and what is on the disk when something goes wrong.
#include "profile/profile_pair.h"
#include "tests/tools/profile_text.h"
#include "tests/tools/scratch.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

/// Writes p.dpi and p.spi and returns the message of a failure.
static std::string write_pair(const scratch_directory& scratch, const PGOPTI_PROFILE& profile,
                              const PGOPTI_RECORD_LAYOUT& layout = PGOPTI_LAYOUT_64) {
    std::string error;
    const bool written =
        PGOPTI_Write_Profiles(profile, layout, scratch.path() / "p.dpi", scratch.path() / "p.spi", &error);
    EXPECT_EQ(written, error.empty());
    return error;
}

TEST(ProfileWriter, BothWidths) {
    const scratch_directory scratch;
    PGOPTI_PROFILE profile;
    profile.files = {"a.c"};
    profile.routines.push_back({0, "f", 3, 2, true, {{{3, 10}, 0x1000003}, {{5, 1}, 6}}});
    profile.routines.push_back({0, "g", 7, 1, false, {}});
    profile.num_runs = 2;
    profile.header_word = 99;
    profile.header_text = "one";
    // The strings of the text form lie otherwise: file name before function name is what is wanted.
    const auto expected = [](const std::string& width, const std::string& first, const std::string& places) {
        return compile_profile_text("header runs 2 word 99 text one\nrecord " + width +
                                    "\nfile a.c\nfunction f\nblocks 3:10=" + first + " 5:1=6\n" + places) +
               std::string("a.c\0f", 6);
    };
    EXPECT_EQ(write_pair(scratch, profile), "");
    EXPECT_EQ(
        read_file(scratch.path() / "p.dpi"),
        expected("64", "0x1000003", "set u64 r0+40 656\nset u64 r0+48 660\nset u64 r0+96 660\ncut r0+128\n"));
    EXPECT_EQ(write_pair(scratch, profile, PGOPTI_LAYOUT_32), "");
    EXPECT_EQ(
        read_file(scratch.path() / "p.dpi"),
        expected("32", "16777220", "set u32 r0+32 620\nset u32 r0+36 624\nset u32 r0+68 624\ncut r0+92\n"))
        << "at single precision";
    EXPECT_EQ(read_file(scratch.path() / "p.spi"), "a.c - f 3 2 I\na.c - g 7 1 I\n");
}

TEST(ProfileWriter, VersionHeadForLongNames) {
    const scratch_directory scratch;
    const auto written_for = [&scratch](const std::string& file, const std::string& function) {
        PGOPTI_PROFILE profile;
        profile.files = {file};
        profile.routines.push_back({0, "f", 3, 2, true, {{{3, 10}, 258}, {{5, 1}, 0}}});
        profile.routines.push_back({0, function, 7, 4, false, {}});
        EXPECT_EQ(write_pair(scratch, profile), "");
        return read_file(scratch.path() / "p.spi").substr(0, 30);
    };
    EXPECT_TRUE(written_for("a.c", std::string(4095, 'g')).starts_with("a.c - f "));
    EXPECT_TRUE(written_for("a.c", std::string(4096, 'g')).starts_with("V1 4096 4096 4097\na.c - f "));
    EXPECT_TRUE(
        written_for(std::string(70000, 'a'), std::string(4096, 'g')).starts_with("V1 70001 4096 4097\naaa"));
}

TEST(ProfileWriter, WaitsForTheLockOfTheOldProfile) {
    const scratch_directory scratch;
    const int held = open(scratch.put("p.dpi", "old").c_str(), O_RDWR);
    struct flock lock = {};
    lock.l_type = F_WRLCK;
    lock.l_start = 16;
    ASSERT_EQ(fcntl(held, F_SETLK, &lock), 0);
    scratch.put("x.json",
                R"({"type":"llvm.coverage.json.export","version":"2.0.1","data":[{"functions":[{"name":"f",)"
                R"("count":1,"filenames":["a.c"],"regions":[[1,1,2,2,1,0,0,0]]}]}]})");
    const auto import = [&scratch](const std::string& seconds) {
        return run_command("/usr/bin/timeout " + seconds + " vexcov-import clang -dpi p.dpi x.json",
                           scratch.path(), "")
            .status;
    };
    EXPECT_EQ(import("0.3"), 124) << "it waits";
    EXPECT_EQ(read_file(scratch.path() / "p.dpi"), "old");
    close(held);
    EXPECT_EQ(import("30"), 0);
    EXPECT_NE(read_file(scratch.path() / "p.dpi"), "old");
}
