// File names and links of the report.
#include "report/page_names.h"

#include <gtest/gtest.h>
#include <malloc.h>
#include <string>

TEST(PageNames, Rewriting) {
    EXPECT_STREQ(getHTMLname("src/foo.c", "html"), "SRC_FOO_C.HTML");
    EXPECT_STREQ(getHTMLname("a.b/c", "htm"), "A_B_C.HTM") << "the last dot may be a directory's";
    EXPECT_STREQ(getHTMLname("ends.", "html"), "ENDS_.HTML");
    EXPECT_STREQ(getHTMLname("", "html"), ".HTML");
    EXPECT_STREQ(getHTMLname("\xc3\xa4z@[`{.c", "html"), "\xc3\xa4Z@[`{_C.HTML") << "only ASCII";
    EXPECT_STREQ(getSrcHTMLname("C:\\src\\a.b.cpp", "html"), "C__SRC_A.B_CPP_SRC.HTML");
    EXPECT_STREQ(getVerHTMLname("x.y", -3, "html"), "X_Y_-3.HTML");
    EXPECT_STREQ(getDirHTMLname("__Code_Coverage", "html"), "CodeCoverage/__CODE_COVERAGE.HTML");
    EXPECT_STREQ(getDirSlashHTMLname("a.c", "html"), "CodeCoverage/A_C.HTML");
    EXPECT_STREQ(getDirSlashVerHTMLname("a.c", 6, "html"), "CodeCoverage/A_C_4.HTML") << "always page 4";
}

TEST(PageNames, NoNames) {
    for (const char* name :
         {getHTMLname(nullptr, "html"), getVerHTMLname(nullptr, 1, "html"), getSrcHTMLname(nullptr, "html"),
          getDirHTMLname(nullptr, "html"), getDirSrcHTMLname(nullptr, "html"),
          getDirVerHTMLname(nullptr, 1, "html"), getDirSlashVerHTMLname(nullptr, 4, "html")})
        EXPECT_EQ(name, nullptr);
    char empty[] = "";
    EXPECT_EQ(revPos(empty, '.'), nullptr);
    EXPECT_EQ(revPos(nullptr, '.'), nullptr);
    hyphenize(nullptr);
    capitalize(nullptr);
}

TEST(PageNames, AnyLength) {
    for (const std::size_t length : {4079u, 4080u, 4095u, 4096u, 100000u}) {
        const std::string name(length, 'n'), upper(length, 'N');
        EXPECT_EQ(getHTMLname(name.c_str(), "html"), upper + ".HTML");
        EXPECT_EQ(getDirSrcHTMLname(name.c_str(), "html"), "CodeCoverage/" + upper + "_SRC.HTML");
        EXPECT_EQ(getDirVerHTMLname(name.c_str(), -2147483647, "html"),
                  "CodeCoverage/" + upper + "_-2147483647.HTML");
    }
}

TEST(PageNames, BufferGrowsToPowersOfTwo) {
    EXPECT_EQ(getBuf(0), nullptr);
    EXPECT_EQ(getBuf(-1), nullptr);
    EXPECT_EQ(getBuf(4096), getBuf(1));
    char* large = getBuf(1 << 20); // a power of two itself: the next one is taken
    const std::size_t size = malloc_usable_size(large);
    EXPECT_TRUE(size >= 2u << 20 && size < 3u << 20) << size;
    EXPECT_EQ(getBuf(2 << 20), large);
    EXPECT_EQ(getHTMLname("x", "html"), large) << "one buffer for all";
}
