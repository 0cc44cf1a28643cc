#include "coverage/coverage_list.h"

#include "common/source_file.h"
#include "tests/tools/scratch.h"

#include <gtest/gtest.h>
#include <utility>

/// A position table over a source file, of three lines unless a test says otherwise.
class PositionTable : public testing::Test {
  protected:
    PositionTable() { over("one\ntwo\nthree\n"); }

    void over(const std::string& text) {
        list_.vPrepareForNewSrcFile();
        release_source();
        name_ = scratch_.put("source.c", text);
        EXPECT_TRUE(list_.bSetName(name_.c_str()));
    }

    /// How many blocks that were not executed the position has, -1 when the table does not say so.
    int add(unsigned int line, unsigned int column, std::uint64_t count, bool not_in_ref = false) {
        unsigned int* unexecuted = nullptr;
        EXPECT_TRUE(list_.bAddBlockCount(name_.c_str(), line, column, count, not_in_ref, &unexecuted));
        return unexecuted ? static_cast<int>(*unexecuted) : -1;
    }

    /// What lies at a position: "count, executed/blocks" and its marks; "none" without one, "-" on a line
    /// without any.
    std::string at(unsigned int line, unsigned int column) {
        std::uint64_t count = 99;
        bool not_in_ref = true, adjusted = true;
        unsigned int blocks = 99, executed = 99;
        if (!list_.bFetchHitCount(line, column, &count, &not_in_ref, &blocks, &executed, &adjusted))
            return count != 0 ? "wrong" : blocks == 99 ? "-" : blocks + executed == 0 ? "none" : "wrong";
        return (count == NEVER_ENTERED ? "never" : std::to_string(count)) + ", " + std::to_string(executed) +
               "/" + std::to_string(blocks) + (adjusted ? " adjusted" : "") + (not_in_ref ? " new" : "");
    }

    const scratch_directory scratch_;
    std::string name_;
    coverage_list list_;
};

TEST_F(PositionTable, CountsOfOnePositionAreMerged) {
    EXPECT_EQ(add(2, 5, 0), -1) << "no block here was executed";
    EXPECT_EQ(add(2, 5, 7), 1);
    EXPECT_EQ(add(2, 5, 8), 1);
    EXPECT_EQ(at(2, 5), "15, 2/3");
    // A function never entered shows only where nothing was counted, and gives way to any count.
    add(2, 5, NEVER_ENTERED);
    EXPECT_EQ(at(2, 5), "15, 3/4");
    add(2, 6, 0);
    add(2, 6, NEVER_ENTERED);
    EXPECT_EQ(at(2, 6), "never, 1/2");
    add(2, 6, 0);
    EXPECT_EQ(at(2, 6), "0, 1/3");
    // Sums wrap.
    add(3, 1, NEVER_ENTERED - 1);
    add(3, 1, 3);
    EXPECT_EQ(at(3, 1), "1, 2/2");
    // The closing adjustment of a function.
    add(3, 2, 0, true);
    EXPECT_EQ(add(3, 2, 4), 1);
    EXPECT_TRUE(list_.bAdjustLastBlock(name_.c_str(), 3, 2));
    EXPECT_EQ(at(3, 2), "5, 2/3 adjusted new");
    EXPECT_EQ(add(3, 2, 1), 0) << "one block not executed is made good";
}

TEST_F(PositionTable, LinesAtAndBehindTheEnd) {
    const auto ends = [this](const std::string& text) {
        over(text);
        add(3, 1, 1);
        add(4, 1, 2);
        add(5, 9, 3);
        return at(1, 1) + " | " + at(1, 2) + " | " + at(2, 1) + " | " + at(3, 1) + " | " + at(4, 1);
    };
    // The line behind the last is kept and never found; beyond that it is line 1, column 1.
    EXPECT_EQ(ends("one\ntwo\nthree\n"), "3, 1/1 | none | none | 1, 1/1 | -");
    EXPECT_EQ(ends("one\ntwo"), "5, 2/2 | none | none | - | -");
    EXPECT_EQ(ends(""), "- | - | - | - | -");
}

TEST_F(PositionTable, PositionsInOrder) {
    // Enough of them to make the table grow, in an order that is neither ascending nor descending.
    for (unsigned int i = 0; i < 3000; ++i)
        add(1 + i % 3, 1 + i * 7919 % 5000, i + 1);
    const auto& positions = list_.sorted_positions();
    ASSERT_EQ(positions.size(), 3000U);
    for (std::size_t i = 1; i < positions.size(); ++i)
        ASSERT_LT(std::pair(positions[i - 1].line, positions[i - 1].column),
                  std::pair(positions[i].line, positions[i].column));
}

TEST_F(PositionTable, OneTableUntilTheNextSourceFile) {
    EXPECT_TRUE(list_.bSetName("another name"));
    EXPECT_STREQ(list_.lpszGetSrcFilename(), name_.c_str());
    add(1, 1, 5);
    list_.vPrepareForNewSrcFile();
    EXPECT_EQ(at(1, 1), "-");
    EXPECT_EQ(list_.lpszGetSrcFilename(), nullptr);
    testing::internal::CaptureStdout();
    EXPECT_FALSE(list_.bSetName("no such file"));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "\nWarning - File no such file not found!\n");
}
