#include "tests/tools/profile_text.h"

#include <gtest/gtest.h>
#include <stdexcept>
#include <string>

static std::string error_of(const std::string& text) {
    try {
        compile_profile_text(text);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "";
}

TEST(ProfileText, Patches) {
    const std::string text = "header runs 1\nrecord 32\nrecord 64\n";
    const std::string bytes = compile_profile_text(text);
    const std::size_t second = 528 + 60;
    EXPECT_EQ(bytes.size(), second + 80 + 4) << "two empty strings for each record";
    std::string changed = bytes;
    changed[second + 1] = 7;
    changed.replace(4, 4, std::string("\x78\x56\x34\x12"));
    EXPECT_EQ(compile_profile_text(text + "set u8 r1+1 7\nset u32 4 0x12345678\n"), changed);
    EXPECT_EQ(compile_profile_text(text + "cut r1+79\n"), bytes.substr(0, second + 79));
}

TEST(ProfileText, Errors) {
    EXPECT_EQ(error_of("# comment\n\nrecord 16\n"), "line 3: unknown width \"16\"");
    EXPECT_EQ(error_of("file a.c\n"), "line 1: unknown line \"file\"");
    EXPECT_EQ(error_of("record 64\nblocks 1:2=3 4\n"),
              "line 2: blocks with and without a position in one record");
    EXPECT_EQ(error_of("record 64\nblocks 3 1:2=3\n"),
              "line 2: blocks with and without a position in one record");
    EXPECT_EQ(error_of("record 64\nblocks x\n"), "not a number: \"x\"");
    EXPECT_EQ(error_of("record 64\nfile b\nrecord 64\nfile a\n"), "record a'' is out of order");
    EXPECT_EQ(error_of("order any\nrecord 64\nfile b\nrecord 64\nfile a\n"), "");
    EXPECT_NE(error_of("set u64 521 1\n"), "");
}
