// File names and links of the report.
#include "report/page_names.h"

#include <gtest/gtest.h>
#include <malloc.h>
#include <string>

TEST(PageNames, Rewriting) {
    EXPECT_STREQ(getHTMLname("Code_Coverage", "html"), "CODE_COVERAGE.HTML");
    EXPECT_STREQ(getHTMLname("src/foo.c", "html"), "SRC_FOO_C.HTML");
    EXPECT_STREQ(getHTMLname("a.b/c", "htm"), "A_B_C.HTM") << "the last dot may be a directory's";
    EXPECT_STREQ(getHTMLname("ends.", "html"), "ENDS_.HTML");
    EXPECT_STREQ(getHTMLname("", "html"), ".HTML");
    EXPECT_STREQ(getHTMLname("\xc3\xa4.c", "html"), "\xc3\xa4_C.HTML") << "only ASCII has an upper case";
    EXPECT_STREQ(getSrcHTMLname("C:\\src\\x.cpp", "html"), "C__SRC_X_CPP_SRC.HTML");
    EXPECT_STREQ(getSrcHTMLname("/home/u/a.b.c", "html"), "_HOME_U_A.B_C_SRC.HTML");
    EXPECT_STREQ(getVerHTMLname("x.y", -3, "html"), "X_Y_-3.HTML");
}

TEST(PageNames, DirectoryKeepsItsCase) {
    EXPECT_STREQ(getDirHTMLname("__Code_Coverage", "html"), "CodeCoverage/__CODE_COVERAGE.HTML");
    EXPECT_STREQ(getDirSlashHTMLname("a.c", "html"), "CodeCoverage/A_C.HTML");
    EXPECT_STREQ(getDirSrcHTMLname("src/foo.c", "html"), "CodeCoverage/SRC_FOO_C_SRC.HTML");
    EXPECT_STREQ(getDirVerHTMLname("a.c", -2147483647, "html"), "CodeCoverage/A_C_-2147483647.HTML");
    EXPECT_STREQ(getDirSlashVerHTMLname("a.c", 6, "html"), "CodeCoverage/A_C_4.HTML") << "always page 4";
}

TEST(PageNames, NullNames) {
    EXPECT_EQ(getHTMLname(nullptr, "html"), nullptr);
    EXPECT_EQ(getVerHTMLname(nullptr, 1, "html"), nullptr);
    EXPECT_EQ(getSrcHTMLname(nullptr, "html"), nullptr);
    EXPECT_EQ(getDirHTMLname(nullptr, "html"), nullptr);
    EXPECT_EQ(getDirSrcHTMLname(nullptr, "html"), nullptr);
    EXPECT_EQ(getDirVerHTMLname(nullptr, 1, "html"), nullptr);
    EXPECT_EQ(getDirSlashVerHTMLname(nullptr, 4, "html"), nullptr);
}

TEST(PageNames, AnyLength) {
    for (const std::size_t length : {4079u, 4080u, 4095u, 4096u, 100000u}) {
        const std::string name(length, 'n'), upper(length, 'N');
        EXPECT_EQ(getHTMLname(name.c_str(), "html"), upper + ".HTML");
        EXPECT_EQ(getSrcHTMLname(name.c_str(), "html"), upper + "_SRC.HTML");
        EXPECT_EQ(getDirSrcHTMLname(name.c_str(), "html"), "CodeCoverage/" + upper + "_SRC.HTML");
        EXPECT_EQ(getDirVerHTMLname(name.c_str(), -1000000000, "html"),
                  "CodeCoverage/" + upper + "_-1000000000.HTML");
    }
}

TEST(PageNames, BufferGrowsToPowersOfTwo) {
    EXPECT_EQ(getBuf(0), nullptr);
    EXPECT_EQ(getBuf(-1), nullptr);
    char* small = getBuf(1);
    EXPECT_EQ(getBuf(4096), small);
    char* large = getBuf(1 << 20); // a power of two itself: the next one is taken
    const std::size_t size = malloc_usable_size(large);
    EXPECT_TRUE(size >= 2u << 20 && size < 3u << 20) << size;
    EXPECT_EQ(getBuf(2 << 20), large);
    EXPECT_EQ(getHTMLname("x", "html"), large) << "one buffer for all";
}

TEST(PageNames, StringFunctions) {
    char path[] = "C:\\a/b.c-d";
    hyphenize(path);
    EXPECT_STREQ(path, "C__a_b.c-d");
    char letters[] = "az@[`{\xe4";
    capitalize(letters);
    EXPECT_STREQ(letters, "AZ@[`{\xe4");
    char dots[] = "a.b.c", empty[] = "";
    EXPECT_EQ(revPos(dots, '.'), dots + 3);
    EXPECT_EQ(revPos(dots, 'x'), nullptr);
    EXPECT_EQ(revPos(empty, '.'), nullptr);
    EXPECT_EQ(revPos(nullptr, '.'), nullptr);
    hyphenize(nullptr);
    hyphenize(empty);
    EXPECT_STREQ(empty, "");
}
