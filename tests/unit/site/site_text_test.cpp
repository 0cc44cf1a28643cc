// Names of pages, names and numbers on pages, and the division of a rectangle.
#include "site/code_writer.h"
#include "site/html_text.h"
#include "site/kept_messages.h"
#include "site/page_names.h"
#include "site/rectangle.h"
#include "site/site_page.h"
#include "site/syntax.h"
#include "tests/tools/product.h"
#include "tests/tools/scratch.h"

#include <gtest/gtest.h>
#include <memory>

static std::string short_count(std::uint64_t count) {
    const scratch_directory scratch;
    const std::string path = scratch.path() / "count";
    std::FILE* const stream = std::fopen(path.c_str(), "w");
    {
        const auto out = std::make_unique<text_buffer>(stream);
        put_short_count(*out, count);
    }
    std::fclose(stream);
    return read_file(path);
}

TEST(SiteText, PageNames) {
    EXPECT_EQ(source_page_name("src/net_io.c"), "s/src~net_io.c.html");
    EXPECT_EQ(source_page_name("src/net/io.c"), "s/src~net~io.c.html");
    EXPECT_EQ(source_page_name("Src/a~b=.c"), "s/=src~a==7eb==3d.c.html");
    EXPECT_EQ(source_page_name("/usr/a b"), "s/==2fusr~a==20b.html");
    EXPECT_EQ(source_page_name("../x"), "s/==2e.~x.html");
    EXPECT_EQ(directory_page_name(""), "d/==top.html");
    EXPECT_EQ(directory_page_name("a", 2), "d/a==p2.html");
    EXPECT_EQ(list_page_name("files", 1), "files.html");
    EXPECT_EQ(list_page_name("files", 12), "files-12.html");
}

TEST(SiteText, LongPathsHaveShortNames) {
    const std::string path(3000, 'x');
    const std::string stem = page_stem(path + "1");
    EXPECT_EQ(stem.size(), 50 + 3 + 40);
    EXPECT_EQ(stem.substr(0, 53), std::string(50, 'x') + "==x");
    EXPECT_NE(stem, page_stem(path + "2"));
    EXPECT_EQ(page_stem(std::string(100, 'x')), std::string(100, 'x'));
}

TEST(SiteText, NamesAreText) {
    EXPECT_EQ(html_name("a<b>&\"c'"), "a&lt;b&gt;&amp;&quot;c'");
    EXPECT_EQ(html_name("a\x01\x7f\xff\xe2\x80\xae"), "a\\x01\\x7f\xef\xbf\xbd\\u202e");
    EXPECT_EQ(html_name("abcdef", 3), "abc\xe2\x80\xa6");
    EXPECT_EQ(html_name("abcdef", 3, name_cut::front), "\xe2\x80\xa6"
                                                       "def");
    EXPECT_EQ(html_name("a<<<", 6), "a&lt;\xe2\x80\xa6");
    EXPECT_EQ(html_name("<<<a", 6, name_cut::front), "\xe2\x80\xa6&lt;a");
    EXPECT_EQ(html_name("\xc3\xa4\xc3\xa4", 3), "\xc3\xa4\xe2\x80\xa6");
}

TEST(SiteText, ShortCounts) {
    const std::pair<std::uint64_t, const char*> counts[] = {
        {0, "0"},        {999, "999"},      {1000, "1k"},        {1099, "1k"},
        {1999, "1.9k"},  {9999, "9.9k"},    {10999, "10k"},      {999999, "999k"},
        {1000000, "1M"}, {1250000, "1.2M"}, {999999999, "999M"}, {18446744073709551614U, "18E"}};
    for (const auto& [count, shown] : counts)
        EXPECT_EQ(short_count(count), shown) << count;
}

TEST(SiteText, PercentagesAreThoseOfTheReport) {
    EXPECT_EQ(percent_of({0, 0}), "\xe2\x80\x93");
    EXPECT_EQ(percent_of({3, 0}), "0.00");
    EXPECT_EQ(percent_of({3, 2}), "66.67");
    EXPECT_EQ(percent_of({800, 1}), "0.12"); // a tie, which printf rounds to the even digit
    EXPECT_EQ(percent_of({800, 3}), "0.38");
    EXPECT_EQ(percent_of({100000, 99999}), "99.99"); // not all
    EXPECT_EQ(percent_of({7, 7}), "100.00");
    for (std::int64_t total = 1; total < 500; ++total) {
        for (std::int64_t covered = 0; covered < total; ++covered) {
            char expected[32];
            std::snprintf(expected, sizeof expected, "%.2f",
                          static_cast<double>(covered) * 100.0 / static_cast<double>(total));
            ASSERT_EQ(percent_of({total, covered}), expected) << covered << " of " << total;
        }
    }
}

TEST(SiteText, RectanglesFillTheWhole) {
    const double weights[] = {50, 20, 10, 10, 5, 3, 1, 1};
    double area = 0;
    divide_rectangle({10, 20, 200, 100}, weights, [&](std::size_t i, const rectangle& part) {
        EXPECT_NEAR(part.area(), weights[i] * 200, 1e-6);
        EXPECT_GE(part.x, 10 - 1e-9);
        EXPECT_GE(part.y, 20 - 1e-9);
        EXPECT_LE(part.x + part.width, 210 + 1e-6);
        EXPECT_LE(part.y + part.height, 120 + 1e-6);
        EXPECT_LT(std::max(part.width / part.height, part.height / part.width), 4);
        area += part.area();
    });
    EXPECT_NEAR(area, 20000, 1e-6);
}

TEST(SiteText, PiecesOfC) {
    const std::string_view text = "int a; // for\nu8R\"(if)\" 'x' /* */ format 1'000";
    std::string shown;
    syntax_reader reader(text);
    for (syntax_token token = reader.next(); token.kind != syntax_kind::none; token = reader.next())
        shown.append(text.substr(token.begin, token.end - token.begin)).append("|");
    EXPECT_EQ(shown, "int|// for|\"(if)\"|'x'|/* */|");
    // A keyword is a whole word, beyond ASCII, too; what a page cannot hold as it stands comes as a sign.
    const std::string_view words = "if\xc3\xa9 \xc3\xa9if _if if1 do&&r->for\x01 else";
    std::string found;
    syntax_reader second(words);
    for (syntax_token token = second.next(); token.kind != syntax_kind::none; token = second.next())
        found.append(words.substr(token.begin, token.end - token.begin))
            .append(token.kind == syntax_kind::sign ? "~" : "|");
    EXPECT_EQ(found, "\xc3\xa9~\xc3\xa9if~do|&&~>~for|\x01~else|");
    EXPECT_TRUE(is_c_source("a/b.cpp"));
    EXPECT_FALSE(is_c_source("a.c/b.py"));
}

TEST(SiteText, WarningsAreKept) {
#if !defined(__GLIBC__) || defined(VEXCOV_PORTABLE)
    GTEST_SKIP() << "standard error cannot be watched here";
#endif
    run_warnings kept;
    const outcome end = run_product([&] {
        const kept_messages messages;
        std::fputs("vexcov-site: warning: there is no source file a.c (run it elsewhere)\n", stderr);
        for (int again = 0; again < 2; ++again)
            for (int i = 0; i < 25; ++i) {
                std::fputs("vexcov-site: warning: ", stderr);
                std::fprintf(stderr, "<%d>\nof two lines\n", i);
            }
        std::fprintf(stderr, "%s\n", std::string(100000, 'x').c_str());
        kept = messages.warnings();
    });
    ASSERT_EQ(kept.first.size(), 20U);
    EXPECT_EQ(kept.first[3], "<3> of two lines");
    EXPECT_EQ(kept.more, 6U);
    EXPECT_EQ(end.errors.size(), 69U + 2 * (10 * 39 + 15 * 40) + 100001);
}
