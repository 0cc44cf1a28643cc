#include "coverage/coverage_list.h"

#include "tests/tools/scratch.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <string>

/// A position table over a source file of three lines.
class PositionTable : public testing::Test {
  protected:
    PositionTable() : PositionTable("one\ntwo\nthree\n") {}
    explicit PositionTable(const std::string& text) {
        write_file(name_, text);
        list_.bSetName(name_.c_str());
    }

    void add(unsigned int line, unsigned int column, std::uint64_t count) {
        EXPECT_TRUE(list_.bAddBlockCount(name_.c_str(), line, column, count, false, nullptr));
    }

    bool fetch(unsigned int line, unsigned int column) {
        return list_.bFetchHitCount(line, column, &count_, &not_in_ref_, &blocks_, &executed_, &adjusted_);
    }

    const scratch_directory scratch_;
    const std::string name_ = (scratch_.path() / "source.c").string();
    coverage_list list_;
    std::uint64_t count_ = 99;
    bool not_in_ref_ = true, adjusted_ = true;
    unsigned int blocks_ = 99, executed_ = 99;
};

TEST_F(PositionTable, CountsOfOnePositionAreMerged) {
    add(2, 5, 0);
    add(2, 5, 7);
    add(2, 5, 8);
    ASSERT_TRUE(fetch(2, 5));
    EXPECT_EQ(count_, 15U);
    EXPECT_EQ(blocks_, 3U);
    EXPECT_EQ(executed_, 2U);
    EXPECT_FALSE(adjusted_);
    EXPECT_FALSE(not_in_ref_);

    // A function never entered shows only where nothing was counted, and gives way to any count.
    add(2, 5, NEVER_ENTERED);
    ASSERT_TRUE(fetch(2, 5));
    EXPECT_EQ(count_, 15U);
    EXPECT_EQ(executed_, 3U);
    add(2, 6, 0);
    add(2, 6, NEVER_ENTERED);
    ASSERT_TRUE(fetch(2, 6));
    EXPECT_EQ(count_, NEVER_ENTERED);
    add(2, 6, 0);
    ASSERT_TRUE(fetch(2, 6));
    EXPECT_EQ(count_, 0U);

    // Sums wrap.
    add(3, 1, NEVER_ENTERED - 1);
    add(3, 1, 3);
    ASSERT_TRUE(fetch(3, 1));
    EXPECT_EQ(count_, 1U);
}

TEST_F(PositionTable, LinesAtAndBehindTheEnd) {
    add(3, 1, 1);
    add(4, 1, 2); // the line behind the last: kept, never found
    add(5, 9, 3); // beyond: line 1, column 1
    EXPECT_TRUE(fetch(3, 1));
    EXPECT_FALSE(fetch(4, 1));
    ASSERT_TRUE(fetch(1, 1));
    EXPECT_EQ(count_, 3U);

    EXPECT_FALSE(fetch(1, 2));
    EXPECT_EQ(count_, 0U);
    EXPECT_EQ(blocks_, 0U);
    EXPECT_EQ(executed_, 0U);
}

TEST_F(PositionTable, ClosingAdjustment) {
    EXPECT_TRUE(list_.bAddBlockCount(name_.c_str(), 3, 2, 0, true, nullptr));
    unsigned int* unexecuted = nullptr;
    EXPECT_TRUE(list_.bAddBlockCount(name_.c_str(), 3, 2, 0, false, &unexecuted));
    EXPECT_EQ(unexecuted, nullptr) << "no block here was executed";
    EXPECT_TRUE(list_.bAddBlockCount(name_.c_str(), 3, 2, 4, false, &unexecuted));
    ASSERT_NE(unexecuted, nullptr);
    EXPECT_EQ(*unexecuted, 2U);
    EXPECT_TRUE(list_.bAdjustLastBlock(name_.c_str(), 3, 2));
    ASSERT_TRUE(fetch(3, 2));
    EXPECT_EQ(count_, 5U);
    EXPECT_EQ(blocks_, 4U);
    EXPECT_EQ(executed_, 2U);
    EXPECT_TRUE(adjusted_);
    EXPECT_TRUE(not_in_ref_);
    EXPECT_TRUE(list_.bAddBlockCount(name_.c_str(), 3, 2, 1, false, &unexecuted));
    ASSERT_NE(unexecuted, nullptr);
    EXPECT_EQ(*unexecuted, 0U);
}

TEST_F(PositionTable, PositionsInOrder) {
    // Enough of them to make the table grow, in an order that is neither ascending nor descending.
    for (unsigned int i = 0; i < 3000; ++i)
        add(1 + i % 3, 1 + i * 7919 % 5000, i + 1);
    const auto& positions = list_.sorted_positions();
    ASSERT_EQ(positions.size(), 3000U);
    for (std::size_t i = 1; i < positions.size(); ++i)
        ASSERT_TRUE(
            positions[i - 1].line < positions[i].line ||
            (positions[i - 1].line == positions[i].line && positions[i - 1].column < positions[i].column));
}

TEST_F(PositionTable, OneTableUntilTheNextSourceFile) {
    EXPECT_TRUE(list_.bSetName("another name"));
    EXPECT_STREQ(list_.lpszGetSrcFilename(), name_.c_str());
    add(1, 1, 5);
    list_.vPrepareForNewSrcFile();
    EXPECT_FALSE(fetch(1, 1));
    EXPECT_EQ(count_, 0U);
    EXPECT_EQ(list_.lpszGetSrcFilename(), nullptr);
    testing::internal::CaptureStdout();
    EXPECT_FALSE(list_.bSetName("no such file"));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "\nWarning - File no such file not found!\n");
}

class UnclosedLine : public PositionTable {
  protected:
    UnclosedLine() : PositionTable("one\ntwo") {}
};

TEST_F(UnclosedLine, Counts) {
    add(2, 1, 1);
    add(3, 1, 2);
    add(4, 1, 4);
    EXPECT_TRUE(fetch(2, 1));
    EXPECT_FALSE(fetch(3, 1));
    ASSERT_TRUE(fetch(1, 1));
    EXPECT_EQ(count_, 4U);
}

class EmptySource : public PositionTable {
  protected:
    EmptySource() : PositionTable("") {}
};

TEST_F(EmptySource, HasNoPositionThatIsFound) {
    add(1, 1, 1);
    add(2, 1, 1);
    EXPECT_FALSE(fetch(1, 1));
}

TEST(FileList, CoveredAndUncoveredFiles) {
    // The list lives as long as the process, as in a run.
    static coverage_list list;
    int covered = -1, uncovered = -1;
    filename_list_node **covered_files = nullptr, **uncovered_files = nullptr;
    for (const char* name : {"a.c", "b.c", "c.c", "d.c"}) {
        EXPECT_TRUE(list.bAddFilename(name));
        EXPECT_EQ(list.file_list_tail()->flags, 0U) << "no such source file";
        list.file_list_tail()->flags |= name[0] == 'a' ? FILE_UNCOVERED : name[0] == 'b' ? 0U : FILE_COVERED;
    }
    EXPECT_TRUE(list.bAddFilename("a.c"));
    EXPECT_STREQ(list.file_list_tail()->name, "d.c") << "a known name leaves the last entry where it was";
    EXPECT_EQ(list.uiGetFilenames(&covered, &covered_files, &uncovered, &uncovered_files), 1);
    ASSERT_EQ(covered, 2);
    EXPECT_STREQ(covered_files[0]->name, "c.c");
    EXPECT_STREQ(covered_files[1]->name, "d.c");
    ASSERT_EQ(uncovered, 1);
    EXPECT_STREQ(uncovered_files[0]->name, "a.c");
    std::free(covered_files);
    std::free(uncovered_files);

    EXPECT_EQ(uiGetFilenamesForFlag(nullptr, FILE_COVERED, &covered, &covered_files), 0);
    EXPECT_EQ(covered, 0);
    EXPECT_EQ(covered_files, nullptr);
}
