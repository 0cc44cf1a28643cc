#include "coverage/pattern_set.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

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
