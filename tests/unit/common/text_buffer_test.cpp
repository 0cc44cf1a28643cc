#include "common/text_buffer.h"

#include "tests/tools/scratch.h"

#include <cmath>
#include <gtest/gtest.h>

TEST(TextBuffer, NothingIsLostWhereTheBufferEnds) {
    constexpr std::size_t kAround = std::size_t{1} << 17; // the capacity
    const std::string large(2 * kAround - 1, 'x');
    for (std::size_t before = kAround - 30; before <= kAround + 1; ++before) {
        const std::string actual = written([&](std::FILE* stream) {
            text_buffer buffer(stream);
            buffer.fill('.', before);
            buffer.put("word");
            buffer.put('<');
            buffer.put_escaped("a<b>&\"<>");
            buffer.put_number(std::uint64_t{12345678901234567890U});
            buffer.put_percent(99.5);
            buffer.fill(' ', 100);
            buffer.put(large);
            buffer.put('!');
        });
        ASSERT_EQ(actual, std::string(before, '.') + "word<a&lt;b&gt;&\"&lt;&gt;12345678901234567890 99.50" +
                              std::string(100, ' ') + large + "!")
            << before;
    }
}

TEST(TextBuffer, PercentagesAsPrintfWritesThem) {
    // Halves of a hundredth that are exact in binary round to even; others lie on one side.
    std::vector<double> values = {0.0,    0.125, 0.375,     0.005, 0.015,  2.675,    9.995,
                                  99.995, 100.0, 12345.678, 1e300, -0.001, INFINITY, -INFINITY};
    for (int whole = 1; whole < 400; ++whole)
        for (int part = 0; part <= whole; part += 1 + whole / 20)
            values.push_back(part * 100.0 / whole);
    for (const double value : values)
        EXPECT_EQ(written([value](std::FILE* stream) { text_buffer(stream).put_percent(value); }),
                  written([value](std::FILE* stream) { std::fprintf(stream, "%6.2f", value); }));
}
