#include "import/main_file.h"

#include <gtest/gtest.h>

/// The main file of a function and its regions as "file kind line:column-line:column=count ..", or "nothing".
static std::string main_file_of(std::vector<std::string> files, std::vector<export_region> regions) {
    main_file_function result = {};
    if (!extract_main_file({"f", 3, std::move(files), std::move(regions)}, "x.json", &result))
        return "nothing";
    static const char* const kinds[] = {" code ", " skip ", " gap "};
    std::string text = result.file;
    for (const source_region& region : result.regions)
        text += kinds[region.kind_bits] + std::to_string(region.start.line) + ":" +
                std::to_string(region.start.column) + "-" + std::to_string(region.end_line) + ":" +
                std::to_string(region.end_column) + "=" + std::to_string(region.count);
    return text;
}

TEST(MainFile, IsTheLowestThatNothingIsExpandedTo) {
    // File 0 is a macro that is used in file 2, file 1 is one that is used in file 0.
    EXPECT_EQ(main_file_of({"m.h", "n.h", "a.c"}, {{1, 1, 1, 9, 4, 0, 0, 0},
                                                   {1, 3, 1, 5, 4, 0, 1, 1},
                                                   {10, 1, 20, 2, 3, 2, 0, 0},
                                                   {11, 1, 11, 6, 3, 2, 0, 1}}),
              "a.c code 10:1-20:2=3");
    EXPECT_EQ(main_file_of({"a.c", "b.c"}, {{1, 1, 2, 2, 3, 0, 0, 0}}), "a.c code 1:1-2:2=3");
}

TEST(MainFile, RegionsAreOrderedJoinedAndRounded) {
    EXPECT_EQ(
        main_file_of({"a.c"}, {{5, 1, 6, 1, 2, 0, 0, 3},
                               {2, 1, 2, 5, 1, 0, 0, 0},
                               {2, 1, 9, 2, 3, 0, 0, 0},
                               {2, 1, 2, 5, 9223372036854775807, 0, 0, 0},
                               {4, 7, 4, 7, 3, 0, 0, 0},
                               {0, 0, 0, 5, 3, 0, 0, 0},
                               {7, 1, 8, 1, 0, 0, 0, 2},
                               {3, 1, 3, 2, 3, 0, 0, 4}}),
        "a.c code 1:1-1:5=3 code 2:1-9:2=3 code 2:1-2:5=9223372036854775807 gap 5:1-6:1=2 skip 7:1-8:1=0")
        << "sums stay at the largest count, empty regions and other kinds go, line or column 0 is 1";
    for (const std::vector<export_region>& none :
         {std::vector<export_region>{}, {{1, 1, 1, 1, 5, 0, 0, 0}, {1, 2, 3, 4, 5, 0, 0, 3}}})
        EXPECT_EQ(main_file_of({"a.c"}, none), "nothing");
    EXPECT_EQ(main_file_of({}, {}), "nothing");
}

TEST(MainFile, MacrosAsCode) {
    const export_region body = {1, 1, 9, 2, 3, 0, 0, 0};
    const export_region gap = {2, 8, 3, 5, 1, 0, 0, 3};
    const export_region whole_statement = {3, 5, 3, 10, 1, 0, 1, 1};
    const export_region part_of_one = {4, 9, 4, 14, 3, 0, 2, 1};
    EXPECT_EQ(main_file_of({"a.c", "m", "n"}, {body, gap, whole_statement, part_of_one}),
              "a.c code 1:1-9:2=3 gap 2:8-3:5=1 code 3:5-3:10=1");
    EXPECT_EQ(main_file_of({"a.c", "m", "n"}, {part_of_one}), "a.c code 4:9-4:14=3")
        << "a function that a macro makes";
}
