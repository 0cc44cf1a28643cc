#include "import/region_blocks.h"

#include "common/source_file.h"
#include "tests/tools/scratch.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

static source_region region(source_position start, source_position end, std::uint64_t count,
                            region_kind kind = region_kind::code) {
    source_region result = {};
    result.start = start;
    result.end_line = end.line;
    result.end_column = end.column & kLargestColumn;
    result.kind_bits = static_cast<std::uint32_t>(kind) & 3U;
    result.count = count;
    return result;
}

static std::string as_text(const std::vector<profile_block>& blocks) {
    std::string text;
    for (const profile_block& block : blocks)
        text += std::to_string(block.position.line) + ":" + std::to_string(block.position.column) + "=" +
                std::to_string(block.count) + " ";
    return text;
}

static source_position mark_of(const source_extent& function, const source_text& source) {
    const std::vector<source_extent> nothing_skipped;
    code_cursor cursor(source, nothing_skipped);
    return first_code_inside(function, &cursor);
}

/// A source file for one test.
class RegionBlocks : public testing::Test {
  protected:
    const source_text& with_source(const std::string& text) {
        release_source();
        const std::string path = (scratch_.path() / "a.c").string();
        write_file(path, text);
        source_ = std::make_unique<source_text>(path);
        return *source_;
    }

    std::string blocks(const std::vector<source_region>& regions, const source_text& source) {
        return as_text(build_blocks(regions, {}, std::nullopt, source));
    }

    scratch_directory scratch_;
    std::unique_ptr<source_text> source_;
};

TEST_F(RegionBlocks, JoinIsAtTheNextCode) {
    const source_text& source = with_source("{ if (c)\n"            // 1
                                            "    { one(); } ;) }\n" // 2
                                            "  /* a } b */ // c\n"  // 3
                                            "#if 1 \\\n"            // 4
                                            "  || more\n"           // 5
                                            "\t two();\n"           // 6
                                            "}\n");                 // 7
    EXPECT_EQ(blocks({region({1, 1}, {7, 2}, 8), region({1, 7}, {1, 8}, 8),
                      region({1, 9}, {2, 5}, 2, region_kind::gap), region({2, 5}, {2, 15}, 2)},
                     source),
              "1:1=8 1:7=8 2:5=2 6:3=8 7:1=0 ");
}

TEST_F(RegionBlocks, NoJoinInAGapOrWhereOnlyPunctuationRemains) {
    const source_text& source = with_source("{ if (c) one();\n" // 1
                                            "  else two();\n"   // 2
                                            "  { if (d) e(); } ; // end\n"
                                            "}\n");
    EXPECT_EQ(blocks({region({1, 1}, {4, 2}, 8), region({1, 7}, {1, 8}, 8),
                      region({1, 9}, {1, 10}, 3, region_kind::gap), region({1, 10}, {1, 15}, 3),
                      region({1, 16}, {2, 8}, 5, region_kind::gap), region({2, 8}, {2, 13}, 5),
                      region({3, 9}, {3, 10}, 8), region({3, 11}, {3, 12}, 1, region_kind::gap),
                      region({3, 12}, {3, 15}, 1)},
                     source),
              "1:1=8 1:7=8 1:10=3 2:8=5 3:3=8 3:9=8 3:12=1 4:1=0 ");
}

TEST_F(RegionBlocks, GapThatLeadsBackToTheEnclosingCode) {
    // As behind a do-while loop with a break inside: no region begins where the gap ends.
    const source_text& source = with_source("{ do x(); while (a || b);\n"
                                            "  rest(); }\n");
    EXPECT_EQ(blocks({region({1, 1}, {2, 12}, 2), region({1, 18}, {1, 19}, 7), region({1, 23}, {1, 24}, 0),
                      region({1, 26}, {2, 3}, 0, region_kind::gap)},
                     source),
              "1:1=2 1:18=7 1:20=2 1:23=0 2:3=2 2:11=0 ");
}

TEST_F(RegionBlocks, OneBlockForRegionsWithOneStart) {
    const source_text& source = with_source("{ a ? b : c; d ? e && f : g; }\n");
    EXPECT_EQ(blocks({region({1, 1}, {1, 31}, 9), region({1, 14}, {1, 30}, 5), region({1, 14}, {1, 19}, 4)},
                     source),
              "1:1=9 1:14=4 1:20=5 1:30=0 ")
        << "the innermost counts";
}

TEST_F(RegionBlocks, MacroArgumentsBelongToTheMacro) {
    const source_text& source = with_source("{ if (c)\n"                               // 1
                                            "    LOG (\"a)\\\"\", ')', /* ) */ (x),\n" // 2
                                            "         y);\n"                           // 3
                                            "  next(); }\n");
    EXPECT_EQ(blocks({region({1, 1}, {4, 12}, 8), region({1, 9}, {2, 5}, 0, region_kind::gap),
                      region({2, 5}, {2, 8}, 0)},
                     source),
              "1:1=8 2:5=0 4:3=8 4:11=0 ");
}

TEST_F(RegionBlocks, SkippedTextIsNoCode) {
    const source_text& source = with_source("{ if (c) { x(); }\n" // 1
                                            "#if OLD\n"           // 2
                                            "  old();\n"          // 3
                                            "#endif\n"            // 4
                                            "  now(); }\n");      // 5
    EXPECT_EQ(blocks({region({1, 1}, {5, 11}, 8), region({1, 10}, {1, 18}, 0),
                      region({2, 1}, {4, 1}, 0, region_kind::skipped)},
                     source),
              "1:1=8 1:10=0 5:3=8 5:10=0 ");
}

TEST_F(RegionBlocks, WithoutSource) {
    const source_text missing((scratch_.path() / "missing.c").string());
    EXPECT_EQ(blocks({region({1, 1}, {9, 2}, 8), region({2, 7}, {2, 8}, 8),
                      region({2, 9}, {2, 10}, 3, region_kind::gap), region({2, 10}, {4, 4}, 3),
                      region({6, 9}, {6, 12}, 0), region({8, 1}, {9, 1}, 2)},
                     missing),
              "1:1=8 2:7=8 2:10=3 4:4=8 6:9=0 6:12=8 8:1=2 9:1=0 ");
}

TEST_F(RegionBlocks, ExtremeRegions) {
    const source_text& source = with_source("{ }");
    EXPECT_EQ(blocks({region({1, 1}, {1, 2}, 5)}, source), "1:1=5 1:1=0 ") << "entry and end at one place";
    EXPECT_EQ(blocks({region({7, 3}, {9, 1}, 5)}, source), "7:3=5 9:1=0 ") << "behind the end of the file";
    EXPECT_EQ(blocks({region({1, 1}, {1, 3}, 5), region({1, 2}, {kLargestLine, kLargestColumn}, 1)}, source),
              "1:1=5 1:2=1 2147483647:1073741822=0 ")
        << "regions that overlap";
}

TEST_F(RegionBlocks, CodeGoesOnBehindNestedFunctions) {
    const source_text& source = with_source("{ run([](int x) {\n"            // 1
                                            "      // comment\n"             // 2
                                            "      return x;\n"              // 3
                                            "  }, 0); f();\n"                // 4
                                            "  int y =\n"                    // 5
                                            "    run([]() { return 1; });\n" // 6
                                            "}\n");
    const source_extent first = {{1, 17}, {4, 4}};
    const source_extent second = {{6, 14}, {6, 27}};
    EXPECT_EQ(mark_of(first, source), (source_position{3, 7}));
    const std::vector<nested_function> nested = {{first, 3}, {second, 6}};
    EXPECT_EQ(as_text(build_blocks({region({1, 1}, {7, 2}, 4)}, nested, std::nullopt, source)),
              "1:1=4 4:4=4 6:5=4 7:1=0 ");
    EXPECT_EQ(as_text(build_blocks({region(first.start, first.end, 2)}, {}, mark_of(first, source), source)),
              "1:17=2 3:7=2 4:3=0 ");
    EXPECT_EQ(
        as_text(build_blocks({region(second.start, second.end, 2)}, {}, mark_of(second, source), source)),
        "6:14=2 6:26=0 ");
}

TEST_F(RegionBlocks, LastBlockCountsWhenEverythingRan) {
    std::vector<profile_block> blocks = {{{1, 1}, 7}, {{2, 1}, 1}, {{3, 1}, 0}};
    count_last_block(&blocks, 7);
    EXPECT_EQ(as_text(blocks), "1:1=7 2:1=1 3:1=7 ");
    blocks[1].count = 0;
    count_last_block(&blocks, 7);
    EXPECT_EQ(as_text(blocks), "1:1=7 2:1=0 3:1=0 ");
}
