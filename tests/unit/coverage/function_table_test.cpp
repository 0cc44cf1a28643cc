#include "coverage/function_table.h"

#include "driver/run_config.h"
#include "profile/module_list.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

/// A table with room for as many functions as its file has routines.
class FunctionTable : public testing::Test {
  protected:
    FunctionTable() : comps_(6) {
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

    /// Names and lines of the covered functions, "|", and of the uncovered ones.
    static std::string table() {
        std::string text;
        for (int i = 0; i < numFileFuncsCovered; ++i)
            text += fileFuncsCovered[i]->name + std::to_string(fileFuncsCovered[i]->line) + " ";
        text += "|";
        for (int i = 0; i < numFileFuncsUncovered; ++i)
            text +=
                std::string(" ") + fileFuncsUncovered[i]->name + std::to_string(fileFuncsUncovered[i]->line);
        return text;
    }

    std::vector<COMP> comps_;
};

TEST_F(FunctionTable, FillsFromBothEnds) {
    addFunc("a", false, 1, 4, 1, false);
    addFunc("b", false, 2, 0, 0, false);
    addFunc("c", false, 3, 2, 0, false);
    addFunc("a", false, 1, 4, 4, false);
    EXPECT_EQ(table(), "a1 a1 | c3 b2");
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
    EXPECT_EQ(table(), "| y2 z1 y1 x1");
    addFunc("x", true, 1, 1, 1, false); // now covered: the first uncovered one takes its slot
    EXPECT_EQ(table(), "x1 | z1 y1 y2");
    addFunc("x", true, 1, 1, 1, false); // covered twice
    addFunc("x", true, 1, 1, 0, false); // uncovered after covered
    EXPECT_EQ(table(), "x1 | z1 y1 y2");
    addFunc("z", true, 1, 1, 1, false); // the first uncovered one itself
    EXPECT_EQ(table(), "x1 z1 | y1 y2");
    EXPECT_EQ(numFileFuncs, 6);
}

TEST_F(FunctionTable, DifferentialMode) {
    compWithRef = true;
    addFunc("new", false, 1, 2, 2, true);
    addFunc("better", false, 2, 2, 1, false);
    addFunc("same", false, 3, 2, 0, false);
    EXPECT_EQ(table(), "better2 | new1");
    EXPECT_EQ(numFileFuncs, 3);
    addFunc("new", true, 1, 2, 2, true);
    addFunc("better", true, 2, 2, 2, true);
    EXPECT_EQ(table(), "better2 | new1");
}

TEST(ExcludedFunctions, Prefixes) {
    for (const char* name : {"___sti__a_c", "__$U", static_cast<const char*>(nullptr)})
        EXPECT_TRUE(excludeFunc(name, 5));
    EXPECT_TRUE(excludeFunc("main", 0));
    EXPECT_FALSE(excludeFunc("__sti__a_c", 5));
    EXPECT_FALSE(excludeFunc("main", -1));
    EXPECT_TRUE(isSubstring("", "text"));
    EXPECT_FALSE(isSubstring("text", "tex"));
    EXPECT_FALSE(isSubstring("", nullptr));
}
