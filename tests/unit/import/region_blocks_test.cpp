#include "import/region_blocks.h"

#include "common/source_file.h"
#include "tests/tools/scratch.h"

#include <gtest/gtest.h>
#include <memory>
#include <sstream>

/// Regions written as "1:1-7:2=8 1:9-2:5=2gap ..".
static std::vector<source_region> regions_of(const std::string& text) {
    std::vector<source_region> regions;
    std::istringstream words(text);
    for (std::string word; words >> word;) {
        source_region region = {};
        unsigned int column = 0;
        unsigned long long count = 0;
        std::sscanf(word.c_str(), "%u:%u-%u:%u=%llu", &region.start.line, &region.start.column,
                    &region.end_line, &column, &count);
        region.end_column = column & kLargestColumn;
        region.count = count;
        region.kind_bits = static_cast<std::uint32_t>(word.ends_with("gap")    ? region_kind::gap
                                                      : word.ends_with("skip") ? region_kind::skipped
                                                                               : region_kind::code) &
                           3U;
        regions.push_back(region);
    }
    return regions;
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

struct region_case {
    const char* what;
    const char* source; ///< null for a source that is missing
    const char* regions;
    const char* blocks;
};

static const region_case kCases[] = {
    {"a join is at the next code",
     "{ if (c)\n"            // 1
     "    { one(); } ;) }\n" // 2
     "  /* a } b */ // c\n"  // 3
     "#if 1 \\\n"            // 4
     "  || more\n"           // 5
     "\t two();\n"           // 6
     "}\n",
     "1:1-7:2=8 1:7-1:8=8 1:9-2:5=2gap 2:5-2:15=2", "1:1=8 1:7=8 2:5=2 6:3=8 7:1=0 "},
    {"no join in a gap or where only punctuation remains",
     "{ if (c) one();\n"
     "  else two();\n"
     "  { if (d) e(); } ; // end\n"
     "}\n",
     "1:1-4:2=8 1:7-1:8=8 1:9-1:10=3gap 1:10-1:15=3 1:16-2:8=5gap 2:8-2:13=5 3:9-3:10=8 3:11-3:12=1gap "
     "3:12-3:15=1",
     "1:1=8 1:7=8 1:10=3 2:8=5 3:3=8 3:9=8 3:12=1 4:1=0 "},
    {"a gap that leads back to the enclosing code, as behind a do-while loop with a break inside",
     "{ do x(); while (a || b);\n  rest(); }\n", "1:1-2:12=2 1:18-1:19=7 1:23-1:24=0 1:26-2:3=0gap",
     "1:1=2 1:18=7 1:20=2 1:23=0 2:3=2 2:11=0 "},
    {"one block for regions with one start: the innermost counts", "{ a ? b : c; d ? e && f : g; }\n",
     "1:1-1:31=9 1:14-1:30=5 1:14-1:19=4", "1:1=9 1:14=4 1:20=5 1:30=0 "},
    {"macro arguments belong to the macro",
     "{ if (c)\n"
     "    LOG (\"a)\\\"\", ')', /* ) */ (x),\n"
     "         y);\n"
     "  next(); }\n",
     "1:1-4:12=8 1:9-2:5=0gap 2:5-2:8=0", "1:1=8 2:5=0 4:3=8 4:11=0 "},
    {"skipped text is no code", "{ if (c) { x(); }\n#if OLD\n  old();\n#endif\n  now(); }\n",
     "1:1-5:11=8 1:10-1:18=0 2:1-4:1=0skip", "1:1=8 1:10=0 5:3=8 5:10=0 "},
    {"without source", nullptr, "1:1-9:2=8 2:7-2:8=8 2:9-2:10=3gap 2:10-4:4=3 6:9-6:12=0 8:1-9:1=2",
     "1:1=8 2:7=8 2:10=3 4:4=8 6:9=0 6:12=8 8:1=2 9:1=0 "},
    {"entry and end at one place", "{ }", "1:1-1:2=5", "1:1=5 1:1=0 "},
    {"behind the end of the file", "{ }", "7:3-9:1=5", "7:3=5 9:1=0 "},
    {"regions that overlap", "{ }", "1:1-1:3=5 1:2-2147483647:1073741823=1",
     "1:1=5 1:2=1 2147483647:1073741822=0 "},
};

TEST(RegionBlocks, Places) {
    for (const region_case& each : kCases) {
        const scratch_directory scratch;
        release_source();
        const source_text source(each.source ? scratch.put("a.c", each.source) : "missing.c");
        EXPECT_EQ(as_text(build_blocks(regions_of(each.regions), {}, std::nullopt, source)), each.blocks)
            << each.what;
    }
}

TEST(RegionBlocks, CodeGoesOnBehindNestedFunctions) {
    const scratch_directory scratch;
    release_source();
    const source_text source(scratch.put("a.c", "{ run([](int x) {\n"            // 1
                                                "      // comment\n"             // 2
                                                "      return x;\n"              // 3
                                                "  }, 0); f();\n"                // 4
                                                "  int y =\n"                    // 5
                                                "    run([]() { return 1; });\n" // 6
                                                "}\n"));
    const source_extent first = {{1, 17}, {4, 4}};
    const source_extent second = {{6, 14}, {6, 27}};
    EXPECT_EQ(mark_of(first, source), (source_position{3, 7}));
    const std::vector<nested_function> nested = {{first, 3}, {second, 6}};
    EXPECT_EQ(as_text(build_blocks(regions_of("1:1-7:2=4"), nested, std::nullopt, source)),
              "1:1=4 4:4=4 6:5=4 7:1=0 ");
    EXPECT_EQ(as_text(build_blocks(regions_of("1:17-4:4=2"), {}, mark_of(first, source), source)),
              "1:17=2 3:7=2 4:3=0 ");
    EXPECT_EQ(as_text(build_blocks(regions_of("6:14-6:27=2"), {}, mark_of(second, source), source)),
              "6:14=2 6:26=0 ");
}

TEST(RegionBlocks, LastBlockCountsWhenEverythingRan) {
    std::vector<profile_block> blocks = {{{1, 1}, 7}, {{2, 1}, 1}, {{3, 1}, 0}};
    count_last_block(&blocks, 7);
    EXPECT_EQ(as_text(blocks), "1:1=7 2:1=1 3:1=7 ");
    blocks[1].count = 0;
    count_last_block(&blocks, 7);
    EXPECT_EQ(as_text(blocks), "1:1=7 2:1=0 3:1=0 ");
}
