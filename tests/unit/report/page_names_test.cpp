// File names and links of the report.
#include "report/page_names.h"

#include <gtest/gtest.h>
#include <malloc.h>

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
