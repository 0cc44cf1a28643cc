#include "common/text_buffer.h"

#include "tests/tools/scratch.h"

#include <cmath>
#include <cstdio>
#include <gtest/gtest.h>
#include <string>

/// What `fill` writes through a buffer.
template <typename Fill> static std::string written(Fill fill) {
    const scratch_directory scratch;
    const std::string name = (scratch.path() / "out").string();
    std::FILE* stream = std::fopen(name.c_str(), "wb");
    {
        text_buffer buffer(stream);
        fill(buffer);
    }
    std::fclose(stream);
    return read_file(name);
}

TEST(TextBuffer, NothingIsLostWhereTheBufferEnds) {
    constexpr std::size_t kAround = std::size_t{1} << 16;
    for (std::size_t before = kAround - 30; before <= kAround + 1; ++before) {
        std::string expected(before, '.');
        expected += "word<&>12345678901234567890 99.50" + std::string(100, ' ') + "!";
        const std::string actual = written([before](text_buffer& buffer) {
            buffer.fill('.', before);
            buffer.put("word");
            buffer.put('<');
            buffer.put("&>");
            buffer.put_number(std::uint64_t{12345678901234567890U});
            buffer.put_percent(99.5);
            buffer.fill(' ', 100);
            buffer.put('!');
        });
        ASSERT_EQ(actual, expected) << before;
    }
    const std::string large(3 * kAround + 7, 'x');
    EXPECT_EQ(written([&](text_buffer& buffer) {
                  buffer.put("a");
                  buffer.put(large);
                  buffer.put("b");
              }),
              "a" + large + "b");
}

TEST(TextBuffer, PercentagesAsPrintfWritesThem) {
    std::string expected;
    const std::string actual = written([&](text_buffer& buffer) {
        const auto both = [&](double value) {
            char text[400];
            std::snprintf(text, sizeof text, "%6.2f", value);
            expected += text;
            buffer.put_percent(value);
        };
        // Halves of a hundredth that are exact in binary round to even; others lie on one side.
        for (const double value :
             {0.0, 0.125, 0.375, 0.005, 0.015, 2.675, 9.995, 99.995, 100.0, 12345.678, 1e300, -0.001})
            both(value);
        for (int whole = 1; whole < 400; ++whole)
            for (int part = 0; part <= whole; part += 1 + whole / 20)
                both(part * 100.0 / whole);
        for (const double value : {INFINITY, -INFINITY})
            both(value);
    });
    EXPECT_EQ(actual, expected);
}

TEST(TextBuffer, Escapes) {
    EXPECT_EQ(written([](text_buffer& buffer) { buffer.put_escaped("a<b>c & \"d\"<>"); }),
              "a&lt;b&gt;c & \"d\"&lt;&gt;");
}
