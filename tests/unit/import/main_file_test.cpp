#include "import/main_file.h"

#include "tests/unit/import/failure.h"

#include <gtest/gtest.h>

static export_function function_with(std::vector<std::string> files, std::vector<export_region> regions) {
    return {"f", 3, std::move(files), std::move(regions)};
}

/// The main file and its regions as "file kind line:column-line:column=count ..", or "nothing".
static std::string main_file_of(const export_function& function) {
    main_file_function result = {};
    if (!extract_main_file(function, "x.json", &result))
        return "nothing";
    std::string text = result.file;
    for (const source_region& region : result.regions) {
        text += region.kind() == region_kind::code  ? " code "
                : region.kind() == region_kind::gap ? " gap "
                                                    : " skip ";
        text += std::to_string(region.start.line) + ":" + std::to_string(region.start.column) + "-" +
                std::to_string(region.end_line) + ":" + std::to_string(region.end_column) + "=" +
                std::to_string(region.count);
    }
    return text;
}

TEST(MainFile, IsTheLowestThatNothingIsExpandedTo) {
    // File 0 is a macro that is used in file 2, file 1 is one that is used in file 0.
    const export_region in_macro = {1, 1, 1, 9, 4, 0, 0, 0};
    const export_region use_in_macro = {1, 3, 1, 5, 4, 0, 1, 1};
    const export_region body = {10, 1, 20, 2, 3, 2, 0, 0};
    const export_region use = {11, 1, 11, 6, 3, 2, 0, 1};
    EXPECT_EQ(main_file_of(function_with({"m.h", "n.h", "a.c"}, {in_macro, use_in_macro, body, use})),
              "a.c code 10:1-20:2=3");
    EXPECT_EQ(main_file_of(function_with({"a.c", "b.c"}, {{1, 1, 2, 2, 3, 0, 0, 0}})), "a.c code 1:1-2:2=3");
}

TEST(MainFile, RegionsAreOrderedJoinedAndRounded) {
    EXPECT_EQ(
        main_file_of(function_with({"a.c"}, {{5, 1, 6, 1, 2, 0, 0, 3},
                                             {2, 1, 2, 5, 1, 0, 0, 0},
                                             {2, 1, 9, 2, 3, 0, 0, 0},
                                             {2, 1, 2, 5, 9223372036854775807, 0, 0, 0},
                                             {4, 7, 4, 7, 3, 0, 0, 0},
                                             {0, 0, 0, 5, 3, 0, 0, 0},
                                             {7, 1, 8, 1, 0, 0, 0, 2},
                                             {3, 1, 3, 2, 3, 0, 0, 4}})),
        "a.c code 1:1-1:5=3 code 2:1-9:2=3 code 2:1-2:5=9223372036854775807 gap 5:1-6:1=2 skip 7:1-8:1=0")
        << "sums stay at the largest count, empty regions and other kinds go, line or column 0 is 1";
}

TEST(MainFile, MacrosAsCode) {
    const export_region body = {1, 1, 9, 2, 3, 0, 0, 0};
    const export_region gap = {2, 8, 3, 5, 1, 0, 0, 3};
    const export_region whole_statement = {3, 5, 3, 10, 1, 0, 1, 1};
    const export_region part_of_one = {4, 9, 4, 14, 3, 0, 2, 1};
    EXPECT_EQ(main_file_of(function_with({"a.c", "m", "n"}, {body, gap, whole_statement, part_of_one})),
              "a.c code 1:1-9:2=3 gap 2:8-3:5=1 code 3:5-3:10=1");
    EXPECT_EQ(main_file_of(function_with({"a.c", "m", "n"}, {part_of_one})), "a.c code 4:9-4:14=3")
        << "a function that a macro makes";
}

TEST(MainFile, WithoutCode) {
    EXPECT_EQ(main_file_of(function_with({"a.c"}, {})), "nothing");
    EXPECT_EQ(main_file_of(function_with({}, {})), "nothing");
    EXPECT_EQ(main_file_of(function_with({"a.c"}, {{1, 1, 1, 1, 5, 0, 0, 0}, {1, 2, 3, 4, 5, 0, 0, 3}})),
              "nothing");
}

TEST(MainFile, NumbersThatCannotBe) {
    struct fault {
        export_region region;
        const char* message;
    };
    const fault faults[] = {
        {{-1, 1, 2, 1, 0, 0, 0, 0}, "a region starting in line -1, which cannot be"},
        {{1, 2147483648, 2, 1, 0, 0, 0, 0}, "a region starting in column 2147483648"},
        {{1, 1, 2147483648, 1, 0, 0, 0, 0}, "a region ending in line 2147483648"},
        {{1, 1, 2, 1073741824, 0, 0, 0, 0}, "a region ending in column 1073741824"},
        {{1, 1, 2, 1, -1, 0, 0, 0}, "an execution count of -1"},
        {{1, 1, 2, 1, 0, 1, 0, 0}, "a region with file number 1"},
        {{1, 1, 2, 1, 0, -1, 0, 0}, "a region with file number -1"},
        {{1, 1, 2, 1, 0, 0, 1, 1}, "an expansion to file number 1"},
        {{2, 5, 2, 4, 0, 0, 0, 0}, "a region that ends before its start in line 2"},
        {{1, 1, 2, 1, 0, 0, 0, 1}, "function \"f\" has no main file"},
    };
    for (const fault& each : faults) {
        const std::string message =
            failure_of([&each] { main_file_of(function_with({"a.c"}, {each.region})); });
        EXPECT_NE(message.find(each.message), std::string::npos) << each.message << "\n" << message;
    }
    export_function negative = function_with({"a.c"}, {{1, 1, 2, 1, 0, 0, 0, 0}});
    negative.count = -7;
    EXPECT_EQ(failure_of([&negative] { main_file_of(negative); }),
              "ERROR: x.json: function \"f\" has an entry count of -7, which cannot be\n");
}
