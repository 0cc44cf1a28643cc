#include "export/block_coverage.h"

#include "tests/tools/scratch.h"

#include <gtest/gtest.h>

/// The text export of a function's blocks, given in block order.
static std::string exported(const block_buffer& in_block_order) {
    block_buffer buffer;
    for (auto block = in_block_order.rbegin(); block != in_block_order.rend(); ++block)
        add_block_cov(block->line, block->column, buffer, block->count);
    sort_blocks(buffer);
    return written([&](std::FILE* stream) { EXPECT_TRUE(printTXT_bcov_full(stream, buffer)); });
}

TEST(BlockCoverage, OrderAndCounts) {
    EXPECT_EQ(exported({{3, 4, 1.0}, {3, 4, 2.0}, {1, 1, 0.9}, {3, 4, 3.0}, {3, 3, 8.9}, {-1, 5, 2.0}}),
              "1\t-1\t5\t2\n1\t1\t1\t0\n1\t3\t3\t8\n2\t3\t4\t1\n3\t3\t4\t2\n4\t3\t4\t3\n")
        << "blocks at one position stay in block order";
    EXPECT_EQ(exported({{1, 1, 2147483647.0}, {1, 2, 2147483648.0}, {1, 3, 4294967296.0 + 5}, {1, 4, -5.9}}),
              "1\t1\t1\t2147483647\n2\t1\t2\t-2147483648\n3\t1\t3\t5\n4\t1\t4\t-5\n")
        << "the low 32 bits";
    EXPECT_EQ(exported({}), "");
}
