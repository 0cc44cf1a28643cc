#include "import/profile_writer.h"

#include "tests/tools/scratch.h"
#include "tests/unit/import/failure.h"
#include "tests/unit/import/profile_dump.h"

#include <gtest/gtest.h>

namespace fs = std::filesystem;

/// One function that was called and one that was not.
static profile_data two_functions() {
    profile_data profile;
    profile.files = {"a.c"};
    profile.records.push_back({0, "f", 3, 2, true, {{{3, 10}, 258}, {{5, 1}, 0}}});
    profile.records.push_back({0, "g", 7, 4, false, {}});
    return profile;
}

static void write(const profile_data& profile, const fs::path& directory, std::uint32_t runs = 1) {
    write_profiles(profile, (directory / "p.dpi").string(), (directory / "p.spi").string(), runs);
}

static std::size_t file_count(const fs::path& directory) {
    return static_cast<std::size_t>(
        std::distance(fs::directory_iterator(directory), fs::directory_iterator()));
}

static std::string hex(const std::string& bytes) {
    static const char digits[] = "0123456789abcdef";
    std::string text;
    for (const char c : bytes) {
        text += digits[static_cast<unsigned char>(c) >> 4];
        text += digits[static_cast<unsigned char>(c) & 15];
    }
    return text;
}

TEST(ProfileWriter, Bytes) {
    const scratch_directory scratch;
    write(two_functions(), scratch.path(), 2);
    const std::string dpi = read_file(scratch.path() / "p.dpi");
    ASSERT_EQ(dpi.size(), 528U + 128U + 6U);
    EXPECT_EQ(hex(dpi.substr(0, 20)), "0bdc000002000000010000000000000000000000");
    EXPECT_EQ(dpi.find_first_not_of('\0', 16), 528U) << "no text";
    EXPECT_EQ(hex(dpi.substr(528, 80)),
              "5003000000000000"                 // flags, version
              "80000000010000000200000000000000" // size, routines, blocks, second group
              "00000000000000000000000000000000" // third group, words
              "9002000000000000"                 // file name at 656
              "9402000000000000"                 // function name at 660
              "000000000000000000000000000000000000000000000000");
    EXPECT_EQ(hex(dpi.substr(608, 48)), "02010000000000000000000000000000"   // counters
                                        "94020000000000000000000000000000"   // routine name, entry counter
                                        "030000000a0000000500000001000000"); // positions
    EXPECT_EQ(hex(dpi.substr(656)), "612e63006600");
    EXPECT_EQ(read_file(scratch.path() / "p.spi"), "a.c - f 3 2 I\na.c - g 7 4 I\n");
    EXPECT_EQ(file_count(scratch.path()), 2U) << "no temporary file is left";
}

TEST(ProfileWriter, VersionHeadForLongNames) {
    const scratch_directory scratch;
    profile_data profile = two_functions();
    profile.records[1].name.assign(4095, 'g');
    write(profile, scratch.path());
    EXPECT_TRUE(read_file(scratch.path() / "p.spi").starts_with("a.c - f "));
    profile.records[1].name.assign(4096, 'g');
    write(profile, scratch.path());
    EXPECT_TRUE(read_file(scratch.path() / "p.spi").starts_with("V1 4096 4096 4097\na.c - f "));
    profile.files[0].assign(70000, 'a');
    write(profile, scratch.path());
    EXPECT_TRUE(read_file(scratch.path() / "p.spi").starts_with("V1 70001 4096 4097\naaa"));
    EXPECT_TRUE(dump_profile(read_file(scratch.path() / "p.dpi")).starts_with("runs 1\naaa"));
}

TEST(ProfileWriter, FailuresLeaveTheOldPair) {
    const scratch_directory scratch;
    const profile_data profile = two_functions();
    write_file(scratch.path() / "p.dpi", "old");
    fs::create_directory(scratch.path() / "p.spi");
    EXPECT_EQ(failure_of([&] { write(profile, scratch.path()); }),
              "ERROR: " + (scratch.path() / "p.spi").string() + " is not a regular file\n");
    fs::remove(scratch.path() / "p.spi");
    EXPECT_NE(failure_of([&] {
                  write_profiles(profile, (scratch.path() / "p.dpi").string(),
                                 (scratch.path() / "no" / "p.spi").string(), 1);
              }).find("ERROR: cannot create "),
              std::string::npos);
    EXPECT_EQ(read_file(scratch.path() / "p.dpi"), "old");
    EXPECT_EQ(file_count(scratch.path()), 1U);
    write(profile, scratch.path());
    EXPECT_TRUE(dump_profile(read_file(scratch.path() / "p.dpi")).starts_with("runs 1\n"));
}

TEST(ProfileWriter, DevicesAreNotReplaced) {
    const scratch_directory scratch;
    fs::create_symlink("/dev/null", scratch.path() / "p.dpi");
    EXPECT_EQ(failure_of([&] { write(two_functions(), scratch.path()); }),
              "ERROR: " + (scratch.path() / "p.dpi").string() + " is not a regular file\n");
    EXPECT_TRUE(fs::is_symlink(scratch.path() / "p.dpi"));
}
