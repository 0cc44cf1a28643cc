#include "coverage/files_of_interest.h"

#include "coverage/pattern_set.h"
#include "driver/run_config.h"
#include "tests/tools/scratch.h"

#include <gtest/gtest.h>

/// Which of "main.c", "src/a.c" and "src/test/a.c" are of interest with this component-list file.
static std::string interesting(const std::string& list) {
    const scratch_directory scratch;
    moduleName.clear();
    getModuleNames(scratch.put("list", list).c_str());
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
    EXPECT_EQ(interesting("SRC\nsrc/*\nmain.c\r\n main.c\n"), "000");
    // A line buffer of 4096 bytes takes 4095 bytes of a line; the rest of a longer one is another pattern.
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
    for (const char* line : {"\"b", "\"b\n\"\n", "a\n\"b\"\n", ""})
        EXPECT_EQ(quoted(line), "(none)") << line;
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
    for (auto* markers : {&one_line_disable, &start_disable_block, &end_disable_block})
        markers->clear();
    Infeasible_markers_specified = false;
}

TEST(PatternSet, FindsWhatStrstrFinds) {
    std::vector<std::string> patterns{""}; // all words of up to three letters "a" and "b"
    for (std::size_t i = 0; patterns[i].size() < 3; ++i)
        for (const char letter : {'a', 'b'})
            patterns.push_back(patterns[i] + letter);
    for (const std::string& first : patterns)
        for (const std::string& second : patterns)
            for (const std::string text :
                 {"", "a", "ab", "ba", "abb", "bab", "aab", "aabaa", "bbbb", "abab"}) {
                pattern_set set;
                set.add(first, 1);
                set.add(second, 2);
                set.prepare();
                ASSERT_EQ(set.match(text, 4),
                          (text.find(first) != text.npos) + 2 * (text.find(second) != text.npos))
                    << first << " " << second << " " << text;
            }
}
