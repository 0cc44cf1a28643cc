// The scanner's states and the meaning of markers, at the places where a listing would not show why.
#include "markers/parser.h"

#include "profile/module_list.h"
#include "tests/tools/scratch.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

static const std::vector<std::string> kOne{"ONE", "1"}, kBegin{"BEGIN"}, kEnd{"END"}, kNone;

/// The numbers of the disabled lines of a source text, as "2 3-5".
static std::string disabled(const std::string& text, const std::vector<std::string>& one = kOne,
                            const std::vector<std::string>& begin = kBegin,
                            const std::vector<std::string>& end = kEnd) {
    const scratch_directory scratch;
    const parser markers(scratch.put("source.c", text).c_str(), one, begin, end);
    std::string result;
    for (unsigned long line = 0, first = 0; line < 100; ++line) {
        if (!markers.is_disabled_line(line))
            continue;
        if (line == 0 || !markers.is_disabled_line(line - 1))
            first = line;
        if (!markers.is_disabled_line(line + 1))
            result += (result.empty() ? "" : " ") + std::to_string(first) +
                      (line > first ? "-" + std::to_string(line) : "");
    }
    return result;
}

TEST(CommentScanner, Comments) {
    EXPECT_EQ(disabled("// ONE\n/* ONE */\n/*ONE*/ x\n//ONE //\n// ONE two\n//ONE\n\n"), "1-4 6");
    EXPECT_EQ(disabled("/* x\n ONE */\n/*\n * ONE\n */\n\n"), "3")
        << "a block comment disables its first line";
    EXPECT_EQ(disabled("/* x // ONE\n*/ // x /* ONE */\n/ / ONE\n/ * ONE */\n\n"), "");
    EXPECT_EQ(disabled("//\\\nONE\n//\\ ONE\n\n"), "") << "a backslash joins no lines and is no blank";
}

TEST(CommentScanner, ShortBlockComments) {
    EXPECT_EQ(disabled("/**/ // ONE\n// 1 */ // ONE\n\n"), "2")
        << "the empty comment runs on to the next end";
    EXPECT_EQ(disabled("/*/ ONE */\n\n"), "1");
    EXPECT_EQ(disabled("/* */ // ONE\n\n"), "1");
    EXPECT_EQ(disabled("/***/ // ONE\n\n"), "1");
}

TEST(CommentScanner, Literals) {
    EXPECT_EQ(disabled("\"// ONE\" '// ONE\n' /* ' */ // ONE\n\"'\" // ONE\n'\"' // ONE\n\n"), "2-4");
    EXPECT_EQ(disabled("\"\\\" // ONE\n\n"), "1") << "an escaped quote ends the literal";
    EXPECT_EQ(disabled("\"\\\\\" // ONE\n\n"), "1");
    EXPECT_EQ(disabled("'\\'' // ONE\n' // ONE\n\n"), "2");
    EXPECT_EQ(disabled("\\\" // ONE\n\" // ONE\n\n"), "2") << "in code a backslash means nothing";
}

TEST(CommentScanner, EndOfTheFile) {
    EXPECT_EQ(disabled("x\n// ONE\n"), "") << "the last character is not examined";
    EXPECT_EQ(disabled("x\n// ONE\n\n"), "2");
    EXPECT_EQ(disabled("x\n/* ONE */"), "2") << "the star is examined, with the slash behind it";
    EXPECT_EQ(disabled(std::string("// ONE\n// ONE\0\n// ONE\n\n", 23)), "1") << "a NUL byte ends the file";
    EXPECT_EQ(disabled("// BEGIN\n\n\n"), "1-3") << "the newline at the end is not counted";
    EXPECT_EQ(disabled("// BEGIN\n\nx\ny"), "1-4");
    EXPECT_EQ(disabled(""), "");
    EXPECT_EQ(disabled("x"), "");
}

TEST(MarkerRules, Blocks) {
    EXPECT_EQ(disabled("\n// BEGIN\n\n/* BEGIN */\n\n// END\n\n// END\n\n// BEGIN\n// END\n\n"), "2-8 10-11");
    EXPECT_EQ(disabled("// BEGIN\nx /* END */ /* BEGIN */ y\n// END\nz\n\n"), "1-3");
    EXPECT_EQ(disabled("/* BEGIN */ /* BEGIN */ /* END */\nx\n// END\nz\n\n"), "1-3");
    EXPECT_EQ(disabled("/*\n\nBEGIN */\n/*\n\nEND */ x\ny\n\n"), "1-4") << "both by their first lines";
}

TEST(MarkerRules, EndWithoutBegin) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(disabled("// ONE\n// END\n// ONE\n// BEGIN\n// END\n\n"), "1");
    EXPECT_TRUE(testing::internal::GetCapturedStderr().ends_with(
        "source.c was not found.\nAll the subsequent infeasible markers will be ignored.\n"));
}

TEST(MarkerRules, RolesThatAreNeeded) {
    const std::string text = "// ONE\n// BEGIN\n// END\n\n";
    EXPECT_EQ(disabled(text, kNone, kBegin, kEnd), "2-3");
    EXPECT_EQ(disabled(text, kNone, kBegin, kNone), "");
    EXPECT_EQ(disabled(text, kNone, kNone, kEnd), "");
    EXPECT_EQ(disabled(text, kOne, kBegin, kNone), "1-4") << "one-line markers alone switch the scan on";
    EXPECT_EQ(disabled("// one\n\n"), "");
    EXPECT_FALSE(parser("no such file", kOne, kBegin, kEnd).is_disabled_line(1));
}

/// Makes a file's functions, first line by first line, those that the marker rules see.
class FunctionBlocks : public testing::Test {
  protected:
    ~FunctionBlocks() override {
        first_func_line = nullptr;
        funcs_by_line.clear();
    }

    void functions_on(const std::vector<int>& lines) {
        comps_.assign(lines.size(), COMP());
        for (std::size_t i = 0; i < lines.size(); ++i) {
            comps_[i].fileName = "source.c";
            comps_[i].line = lines[i];
            comps_[i].next = i + 1 < lines.size() ? &comps_[i + 1] : nullptr;
        }
        order_func(comps_.data());
    }

    std::vector<COMP> comps_;
};

TEST_F(FunctionBlocks, MarkerBeforeTheBraceOfAFunction) {
    EXPECT_EQ(disabled("// ONE\n{\n\n"), "1") << "there are no functions";
    functions_on({7, 2});
    EXPECT_EQ(disabled("// ONE\n{ }\n\n\n\n\nf() {\n}\n"), "1-6");
    EXPECT_EQ(disabled("\n\n\n\n\n/* ONE */ //// ***\n{ }\n\n\n"), "6") << "another comment stands between";
    EXPECT_EQ(disabled("\n\n\n\n/* ONE */ **/\t/\n\n{ }\n\n\n"), "5-9") << "the last function: to the end";
    EXPECT_EQ(disabled("// ONE\nx { }\n\n"), "1") << "code stands between";
    EXPECT_EQ(disabled("// ONE\n' ' { }\n\n"), "1");
    EXPECT_EQ(disabled("// ONE\n\n{ }\n\n"), "1") << "no function starts on the brace's line";
    EXPECT_EQ(disabled("// x ONE\n{ }\n\n"), "");
    EXPECT_EQ(disabled("// BEGIN\n// END\n{ }\n\n"), "1-2") << "only one-line markers";
}

TEST_F(FunctionBlocks, FunctionsOnOneLine) {
    functions_on({2, 2, 5});
    EXPECT_EQ(disabled("/* ONE */\n{ } { }\n\n\n\n\n"), "1-2");
    unsigned long last = 99;
    EXPECT_TRUE(is_func_bound(5, &last));
    EXPECT_EQ(last, 0U);
    EXPECT_FALSE(is_func_bound(6, &last));
    EXPECT_FALSE(is_func_bound(1, &last));
}
