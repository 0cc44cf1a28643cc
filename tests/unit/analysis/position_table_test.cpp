#include "analysis/position_table.h"

#include <gtest/gtest.h>
#include <utility>

TEST(PositionTable, PositionsInOrder) {
    position_table table(4);
    // Enough of them to make the table grow, in an order that is neither ascending nor descending.
    for (unsigned int i = 0; i < 3000; ++i)
        table.add_block(1 + i % 3, 1 + i * 7919 % 5000, i + 1, false, nullptr);
    table.sort();
    const auto& positions = table.positions();
    ASSERT_EQ(positions.size(), 3000U);
    for (std::size_t i = 1; i < positions.size(); ++i)
        ASSERT_LT(std::pair(positions[i - 1].line, positions[i - 1].column),
                  std::pair(positions[i].line, positions[i].column));
}
