#include "coverage/function_table.h"

#include "driver/run_config.h"
#include "profile/module_list.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

/// A table with room for as many functions as its file has routines.
class FunctionTable : public testing::Test {
  protected:
    explicit FunctionTable(int routines = 6) : comps_(static_cast<std::size_t>(routines)) {
        for (std::size_t i = 0; i < comps_.size(); ++i) {
            comps_[i].fileName = "a.c";
            comps_[i].next = i + 1 < comps_.size() ? &comps_[i + 1] : nullptr;
        }
        allocFuncsTable(comps_.data());
    }
    ~FunctionTable() override {
        free_function_table();
        compWithRef = false;
    }

    static std::string described(func* const* half, int count) {
        std::string text;
        for (int i = 0; i < count; ++i)
            text += std::string(half[i]->name) + std::to_string(half[i]->line) + " ";
        return text;
    }
    static std::string covered() { return described(fileFuncsCovered, numFileFuncsCovered); }
    static std::string uncovered() { return described(fileFuncsUncovered, numFileFuncsUncovered); }

    std::vector<COMP> comps_;
};

TEST_F(FunctionTable, FillsFromBothEnds) {
    addFunc("a", false, 1, 4, 1, false);
    addFunc("b", false, 2, 0, 0, false);
    addFunc("c", false, 3, 2, 0, false);
    addFunc("a", false, 1, 4, 4, false);
    EXPECT_EQ(covered(), "a1 a1 ");
    EXPECT_EQ(uncovered(), "c3 b2 ");
    EXPECT_EQ(numFileFuncs, 4);
    EXPECT_EQ(fileFuncsCovered[0]->percent, 25.0);
    EXPECT_EQ(fileFuncsUncovered[1]->percent, 0.0);
}

TEST_F(FunctionTable, DuplicatesAreAbsorbed) {
    addFunc("x", true, 1, 1, 0, false);
    addFunc("y", true, 1, 1, 0, false);
    addFunc("z", true, 1, 1, 0, false);
    addFunc("y", true, 1, 1, 0, false); // uncovered twice
    addFunc("y", true, 2, 1, 0, false); // another line
    EXPECT_EQ(uncovered(), "y2 z1 y1 x1 ");
    addFunc("x", true, 1, 1, 1, false); // now covered: the first uncovered one takes its slot
    EXPECT_EQ(covered(), "x1 ");
    EXPECT_EQ(uncovered(), "z1 y1 y2 ");
    addFunc("x", true, 1, 1, 1, false); // covered twice
    addFunc("x", true, 1, 1, 0, false); // uncovered after covered
    EXPECT_EQ(covered(), "x1 ");
    EXPECT_EQ(uncovered(), "z1 y1 y2 ");
    addFunc("z", true, 1, 1, 1, false); // the first uncovered one itself
    EXPECT_EQ(covered(), "x1 z1 ");
    EXPECT_EQ(uncovered(), "y1 y2 ");
    EXPECT_EQ(numFileFuncs, 6);
}

TEST_F(FunctionTable, DifferentialMode) {
    compWithRef = true;
    addFunc("new", false, 1, 2, 2, true);
    addFunc("better", false, 2, 2, 1, false);
    addFunc("same", false, 3, 2, 0, false);
    EXPECT_EQ(covered(), "better2 ");
    EXPECT_EQ(uncovered(), "new1 ");
    EXPECT_EQ(numFileFuncs, 3);
    addFunc("new", true, 1, 2, 2, true);
    addFunc("better", true, 2, 2, 2, true);
    EXPECT_EQ(covered(), "better2 ");
    EXPECT_EQ(uncovered(), "new1 ");
}

TEST(ExcludedFunctions, Prefixes) {
    EXPECT_TRUE(excludeFunc("___sti__a_c", 5));
    EXPECT_TRUE(excludeFunc("__$U", 5));
    EXPECT_TRUE(excludeFunc("main", 0));
    EXPECT_TRUE(excludeFunc(nullptr, 5));
    EXPECT_FALSE(excludeFunc("__sti__a_c", 5));
    EXPECT_FALSE(excludeFunc("main", -1));
    EXPECT_TRUE(isSubstring("", "text"));
    EXPECT_FALSE(isSubstring("text", "tex"));
    EXPECT_FALSE(isSubstring("", nullptr));
}
