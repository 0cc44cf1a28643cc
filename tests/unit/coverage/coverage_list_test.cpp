#include "coverage/coverage_list.h"

#include "tests/tools/product.h"
#include "tests/tools/scratch.h"

#include <gtest/gtest.h>
#include <utility>

TEST(PositionTable, PositionsInOrder) {
    const scratch_directory scratch;
    const std::string name = scratch.put("source.c", "one\ntwo\nthree\n");
    run_product([&] {
        ASSERT_TRUE(g_cl->bSetName(name.c_str()));
        // Enough of them to make the table grow, in an order that is neither ascending nor descending.
        for (unsigned int i = 0; i < 3000; ++i)
            g_cl->bAddBlockCount(name.c_str(), 1 + i % 3, 1 + i * 7919 % 5000, i + 1, false, nullptr);
        const auto& positions = g_cl->sorted_positions();
        ASSERT_EQ(positions.size(), 3000U);
        for (std::size_t i = 1; i < positions.size(); ++i)
            ASSERT_LT(std::pair(positions[i - 1].line, positions[i - 1].column),
                      std::pair(positions[i].line, positions[i].column));
    });
}
