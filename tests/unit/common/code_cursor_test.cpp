#include "common/code_cursor.h"

#include "tests/tools/scratch.h"

#include <gtest/gtest.h>

/// Where code goes on behind a macro's name, which ends in front of `column` of line 1, as LINE:COLUMN.
static std::string code_behind(const std::string& text, std::uint32_t column) {
    const scratch_directory scratch;
    const source_text source(scratch.put("s.cpp", text));
    const std::vector<source_extent> nothing_skipped;
    const auto found = code_cursor(source, nothing_skipped, {9, 1}).next_code({1, column});
    return found ? std::to_string(found->line) + ":" + std::to_string(found->column) : "none";
}

TEST(CodeCursor, PassesTheArgumentsOfAMacro) {
    EXPECT_EQ(code_behind("M(')', \"\\\")\", 1'000, (x)); y", 2), "1:28");
    EXPECT_EQ(code_behind("M(R\"x({\"k\": \")\"; })x\"); else", 2), "1:25");
    EXPECT_EQ(code_behind("M(R\"x(\n one ) two\n)x\") + g()", 2), "3:6");
    EXPECT_EQ(code_behind("M(u8'(' /* ) */); // y\n#define Z /*\n z */\n }\nx", 2), "5:1");
    EXPECT_EQ(code_behind("M(x", 2), "none");
}
