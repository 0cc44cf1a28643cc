#include "common/number_format.h"

#include <gtest/gtest.h>
#include <string>

static std::string with_separators(std::uint64_t value) {
    char text[kNumberTextSize];
    u64_to_ascii(text, value);
    return text;
}

static std::string signed_text(std::int64_t value) {
    char text[kNumberTextSize];
    i64_to_ascii(text, value);
    return text;
}

static std::string plain(std::uint64_t value) {
    char text[kNumberTextSize];
    u64_to_ascii_no_sep(text, value);
    return text;
}

TEST(NumberFormat, Counts) {
    EXPECT_EQ(with_separators(0), "0");
    EXPECT_EQ(with_separators(100), "100");
    EXPECT_EQ(with_separators(1000), "1,000");
    EXPECT_EQ(with_separators(1234567), "1,234,567");
    EXPECT_EQ(with_separators(18446744073709551615U), "18,446,744,073,709,551,615");
    EXPECT_EQ(signed_text(0), "0");
    EXPECT_EQ(signed_text(-5), "-5");
    EXPECT_EQ(signed_text(-1000), "-1,000");
    EXPECT_EQ(signed_text(9223372036854775807), "9,223,372,036,854,775,807");
    EXPECT_EQ(signed_text(-9223372036854775807), "-9,223,372,036,854,775,807");
    EXPECT_EQ(plain(0), "0");
    EXPECT_EQ(plain(18446744073709551615U), "18446744073709551615");
}

TEST(NumberFormat, Percentages) {
    EXPECT_EQ(percent(5, 0), 0.0);
    EXPECT_EQ(percent64(0, 0), 0.0);
    EXPECT_EQ(percent(1, 3), 100.0 / 3.0) << "the part is multiplied first";
    EXPECT_EQ(percent(2147483647, 2147483647), 100.0);
    EXPECT_EQ(percent64(9000000000000000000, 9000000000000000000), 100.0);
}

TEST(NumberFormat, Brief) {
    EXPECT_STREQ(brief("a/b/c.cpp"), "c.cpp");
    EXPECT_STREQ(brief("c.cpp"), "c.cpp");
    EXPECT_STREQ(brief("dir/"), "");
    EXPECT_STREQ(brief("a\\b.c"), "a\\b.c");
    EXPECT_EQ(brief(nullptr), nullptr);
}
