// Which source file a changed file is: by the directory that the names of the diff are relative to.
#include "changes/changed_coverage.h"

#include "tests/tools/product.h"
#include "tests/tools/scratch.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

/// What becomes of a diff that adds line 2 to each of `changed`.
struct naming_case {
    const char* what;
    bool root_given;
    std::vector<std::string> sources; ///< below the root, or absolute
    std::vector<std::string> changed;
    std::string expected; ///< the directory, then CHANGED=SOURCE for each; or the message
};

std::string shown(const changed_coverage& result) {
    std::string text = result.directory.empty() ? "none" : result.directory;
    text += result.is_root ? " (root)" : "";
    for (const changed_file_coverage& file : result.files)
        text += " " + file.name + "=" + file.source;
    for (const std::string& name : result.without_data)
        text += " " + name + "=";
    return text;
}

std::string track(const naming_case& test, const std::string& root = "/r/top") {
    std::vector<changed_file> files;
    for (const std::string& name : test.changed)
        files.push_back({.name = name, .old_name = {}, .lines = {{2, 2}}});
    std::string result;
    const outcome ended = run_product([&] {
        change_tracker tracker(files, test.root_given);
        const root_names names(root);
        for (const std::string& source : test.sources) {
            source_analysis analysis;
            analysis.positions = position_table(4);
            const std::vector<line_coverage> lines = {{1, 1, 1, 1}, {2, 1, 0, 0}};
            tracker.take({analysis, source, source[0] != '/', lines, {}, nullptr}, names);
        }
        result = shown(tracker.finish());
    });
    return ended.ended ? ended.errors : result;
}

TEST(ChangedCoverage, NamesAreRelativeToOneDirectory) {
    const naming_case tests[] = {
        {"the root has as many", false, {"a.c", "src/a.c"}, {"a.c"}, "/r/top (root) a.c=a.c"},
        {"a longer name of the same end",
         false,
         {"xa.c", "a.c"},
         {"a.c", "b.c"},
         "/r/top (root) a.c=a.c b.c="},
        {"above the root", false, {"a.c", "b.c", "/r/c.c"}, {"top/a.c", "c.c"}, "/r top/a.c=a.c c.c=/r/c.c"},
        {"below the root, where most are",
         false,
         {"a.c", "p/a.c", "p/b.c"},
         {"a.c", "b.c"},
         "/r/top/p a.c=p/a.c b.c=p/b.c"},
        {"elsewhere", false, {"/w/p/src/a.c", "/usr/a.h"}, {"src/a.c"}, "/w/p src/a.c=/w/p/src/a.c"},
        {"blanks, which no profile has",
         false,
         {"a_file.c", "b_file.c"},
         {"a file.c", "b file.c", "b_file.c"},
         "/r/top (root) a file.c=a_file.c b_file.c=b_file.c b file.c="},
        {"the root of all", false, {"/a.c"}, {"a.c"}, "/ a.c=/a.c"},
        {"two directories",
         false,
         {"p/a.c", "q/a.c"},
         {"a.c"},
         "ERROR: the names of the diff may be relative to /r/top/p or to /r/top/q; -root says which\n"},
        {"two directories, more in one of them",
         false,
         {"p/a.c", "q/a.c", "q/b.c"},
         {"a.c", "b.c"},
         "/r/top/q a.c=q/a.c b.c=q/b.c"},
        {"a root that is given",
         true,
         {"a.c", "p/a.c", "p/b.c", "/r/c.c"},
         {"a.c", "b.c", "c.c"},
         "/r/top (root) a.c=a.c b.c= c.c="},
        {"a given root that does not fit",
         true,
         {"/r/a.c", "p/a.c"},
         {"top/p/a.c"},
         "ERROR: the profile has no file of the diff, such as top/p/a.c; -root names the directory that the "
         "names of the diff are relative to\n"},
        {"no source files",
         false,
         {"a.c"},
         {"a.md", "Makefile.am", ".c", "dir.c/b.txt"},
         "none (root) a.md= Makefile.am= .c= dir.c/b.txt="},
    };
    for (const naming_case& test : tests)
        EXPECT_EQ(track(test), test.expected) << test.what;
}

TEST(ChangedCoverage, AnotherFileOfTheNameBelowTheRootIsNotPassedOver) {
    const scratch_directory scratch;
    const std::string top = scratch.path().string();
    std::filesystem::create_directory(scratch.path() / "src");
    std::ofstream(scratch.path() / "src/a.c") << "int a;\n";
    const naming_case below = {"below", false, {"src/a.c"}, {"a.c"}, ""};
    EXPECT_EQ(track(below, top), top + "/src a.c=src/a.c");
    std::ofstream(scratch.path() / "a.c") << "int b;\n";
    EXPECT_EQ(track(below, top), "ERROR: the names of the diff may be relative to " + top + " or to " + top +
                                     "/src; -root says which\n");
    const naming_case copied = {"elsewhere", false, {"/w/a.c"}, {"a.c"}, ""};
    EXPECT_EQ(track(copied, top), "/w a.c=/w/a.c");
    std::filesystem::remove(scratch.path() / "a.c");
    std::filesystem::create_symlink("src/a.c", scratch.path() / "a.c");
    EXPECT_EQ(track(below, top), top + "/src a.c=src/a.c");
}

TEST(ChangedCoverage, CountsChangedLinesWithCode) {
    changed_file changed = {.name = "a.c", .old_name = {}, .lines = {{2, 4}, {6, 6}, {9, 30}}};
    source_analysis analysis;
    analysis.positions = position_table(32);
    for (const std::uint32_t line : {1U, 3U, 5U, 6U, 12U})
        analysis.positions.add_block(line, 5, line % 2, false, nullptr);
    analysis.positions.add_block(13, 1, NEVER_ENTERED, false, nullptr);
    analysis.positions.add_block(13, 9, 0, false, nullptr); // the last one of a function, credited to it
    analysis.positions.adjust(13, 9);
    analysis.positions.sort();
    std::vector<line_coverage> lines;
    for (const std::uint32_t line : {1U, 3U, 4U, 5U, 6U, 10U, 11U, 12U, 13U, 31U})
        lines.push_back({line, 1, line % 2, line % 2});
    change_tracker tracker({changed}, false);
    tracker.take({analysis, "a.c", true, lines, {}, nullptr}, root_names("/r"));
    const changed_coverage result = tracker.finish();
    ASSERT_EQ(result.files.size(), 1U);
    const changed_file_coverage& file = result.files[0];
    EXPECT_EQ(file.lines.total, 7);
    EXPECT_EQ(file.lines.covered, 3);
    EXPECT_EQ(file.blocks.total, 5);
    EXPECT_EQ(file.blocks.covered, 2);
    EXPECT_EQ(file.uncovered, (std::vector<line_range>{{4, 4}, {6, 6}, {10, 10}, {12, 12}}));
}

} // namespace
