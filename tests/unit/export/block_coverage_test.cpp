#include "export/block_coverage.h"

#include "tests/tools/scratch.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <string>

/// What an export writes for a function's blocks, given in block order.
static std::string written(bool (*print)(std::FILE*, const block_buffer&),
                           const block_buffer& in_block_order) {
    block_buffer buffer;
    for (auto block = in_block_order.rbegin(); block != in_block_order.rend(); ++block)
        add_block_cov(block->line, block->column, buffer, block->count);
    sort_blocks(buffer);
    const scratch_directory scratch;
    const std::string name = (scratch.path() / "out").string();
    std::FILE* stream = std::fopen(name.c_str(), "wb");
    EXPECT_TRUE(print(stream, buffer));
    std::fclose(stream);
    return read_file(name);
}

TEST(BlockCoverage, GroupsByLine) {
    const block_buffer three{{10, 5, 7.0}, {10, 2, 8.9}, {12, 1, 0.9}};
    EXPECT_EQ(written(printTXT_bcov_full, three), "1\t10\t2\t8\n"
                                                  "2\t10\t5\t7\n"
                                                  "1\t12\t1\t0\n");
    EXPECT_EQ(written(printXML_bcov_full, three), R"(<BLOCK line="10" col="2">
<INSTANCE id="1" freq="8">
</INSTANCE>
<INSTANCE id="2" freq="7">
</INSTANCE>
</BLOCK>
<BLOCK line="12" col="1">
<INSTANCE id="1" freq="0">
</INSTANCE>
</BLOCK>
)");
    EXPECT_EQ(written(printTXT_bcov_full, {}), "");
    EXPECT_EQ(written(printXML_bcov_full, {}), "");
}

TEST(BlockCoverage, BlocksAtOnePositionStayInBlockOrder) {
    EXPECT_EQ(written(printTXT_bcov_full, {{3, 4, 1.0}, {3, 4, 2.0}, {1, 1, 9.0}, {3, 4, 3.0}, {3, 3, 4.0}}),
              "1\t1\t1\t9\n1\t3\t3\t4\n2\t3\t4\t1\n3\t3\t4\t2\n4\t3\t4\t3\n");
}

TEST(BlockCoverage, TheLow32BitsOfACount) {
    EXPECT_EQ(
        written(printTXT_bcov_full, {{1, 1, 2147483647.0}, {1, 2, 2147483648.0}, {1, 3, 4294967296.0 + 5}}),
        "1\t1\t1\t2147483647\n2\t1\t2\t-2147483648\n3\t1\t3\t5\n");
}

TEST(BlockCoverage, PositionsAreSigned) {
    EXPECT_EQ(written(printTXT_bcov_full, {{1, 1, 1.0}, {-1, 5, 2.0}}), "1\t-1\t5\t2\n1\t1\t1\t1\n");
}
