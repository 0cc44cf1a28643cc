#include "coverage/files_of_interest.h"

#include "coverage/pattern_set.h"
#include "driver/run_config.h"
#include "tests/tools/scratch.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

/// Which of "main.c", "src/a.c" and "src/test/a.c" are of interest with this component-list file.
static std::string interesting(const std::string& list) {
    const scratch_directory scratch;
    const std::string name = (scratch.path() / "list").string();
    write_file(name, list);
    moduleName.clear();
    getModuleNames(name.c_str());
    std::string result;
    for (const char* file : {"main.c", "src/a.c", "src/test/a.c"})
        result += isInComponents(file, "", "") ? '1' : '0';
    moduleName.clear();
    return result;
}

TEST(FilesOfInterest, Patterns) {
    EXPECT_EQ(interesting("src/\n~src/test\n"), "010");
    EXPECT_EQ(interesting("~src/test\nsrc/"), "010");
    EXPECT_EQ(interesting("\n"), "111") << "an empty pattern occurs in every name";
    EXPECT_EQ(interesting("\n~"), "000");
    EXPECT_EQ(interesting("~nothing\n"), "000") << "nothing is included";
    EXPECT_EQ(interesting("SRC\nsrc/*\nmain.c\r\n"), "000");
    EXPECT_EQ(interesting(" main.c\n"), "000");
}

TEST(FilesOfInterest, LongLinesAreSeveralPatterns) {
    // A line buffer of 4096 bytes takes 4095 bytes of a line.
    EXPECT_EQ(interesting(std::string(4095, 'x') + "main\n"), "100");
    EXPECT_EQ(interesting(std::string(4095, 'x') + "\n"), "111") << "the newline alone is an empty pattern";
    EXPECT_EQ(interesting(std::string(4094, 'x') + "\n"), "000");
}

TEST(FilesOfInterest, QuotedText) {
    const auto quoted = [](std::string line) {
        const char* text = find_quota(line.data());
        return text ? std::string(text) : "(none)";
    };
    EXPECT_EQ(quoted("a \"b c\" \"d\"\n"), "b c");
    EXPECT_EQ(quoted("\"b"), "(none)");
    EXPECT_EQ(quoted("\"b\n\"\n"), "(none)");
    EXPECT_EQ(quoted("a\n\"b\"\n"), "(none)");
    EXPECT_EQ(quoted(""), "(none)");
}

TEST(FilesOfInterest, MarkerLines) {
    // The search for the mark starts at the keyword's length from the start of the line: here behind the
    // first.
    interesting("12345678901234567890\"x\" \"y\" ONE_LINE_NOTFEASIBLE:\n"
                "BEGIN_NOTFEASIBLE:\"b\" END_NOTFEASIBLE:\n"
                "END_NOTFEASIBLE:\"e\"");
    EXPECT_EQ(one_line_disable, std::vector<std::string>{" "});
    EXPECT_EQ(start_disable_block, std::vector<std::string>{"b"});
    EXPECT_EQ(end_disable_block, std::vector<std::string>{"e"});
    EXPECT_TRUE(Infeasible_markers_specified);
    one_line_disable.clear();
    start_disable_block.clear();
    end_disable_block.clear();
    Infeasible_markers_specified = false;
}

/// All words of up to three letters "a" and "b".
static std::vector<std::string> words() {
    std::vector<std::string> result{""};
    for (std::size_t i = 0; result[i].size() < 3; ++i)
        for (const char letter : {'a', 'b'})
            result.push_back(result[i] + letter);
    return result;
}

TEST(PatternSet, FindsWhatStrstrFinds) {
    const std::vector<std::string> patterns = words();
    for (const std::string& first : patterns)
        for (const std::string& second : patterns)
            for (const char* text : {"", "a", "ab", "ba", "abb", "bab", "aab", "aabaa", "bbbb", "abab"}) {
                pattern_set set;
                set.add(first, 1);
                set.add(second, 2);
                set.prepare();
                const int expected = (std::string(text).find(first) != std::string::npos ? 1 : 0) |
                                     (std::string(text).find(second) != std::string::npos ? 2 : 0);
                ASSERT_EQ(set.match(text, 4), expected) << first << " " << second << " " << text;
            }
}
