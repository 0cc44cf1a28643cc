#include "common/number_format.h"

#include <gtest/gtest.h>
#include <string>

template <typename Value> static std::string text_of(void (*write)(char*, Value), Value value) {
    char text[kNumberTextSize];
    write(text, value);
    return text;
}

TEST(NumberFormat, CountsAndPercentages) {
    EXPECT_EQ(text_of<std::uint64_t>(u64_to_ascii, 0), "0");
    EXPECT_EQ(text_of<std::uint64_t>(u64_to_ascii, 18446744073709551615U), "18,446,744,073,709,551,615");
    EXPECT_EQ(text_of<std::int64_t>(i64_to_ascii, -1000), "-1,000");
    EXPECT_EQ(text_of<std::uint64_t>(u64_to_ascii_no_sep, 18446744073709551615U), "18446744073709551615");
    EXPECT_EQ(percent(5, 0), 0.0);
    EXPECT_EQ(percent(1, 3), 100.0 / 3.0) << "the part is multiplied first";
    EXPECT_EQ(percent(2147483647, 2147483647), 100.0);
    EXPECT_EQ(percent64(9000000000000000000, 9000000000000000000), 100.0);
    EXPECT_EQ(brief(nullptr), nullptr);
}
