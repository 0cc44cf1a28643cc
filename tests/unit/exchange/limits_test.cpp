// Outputs that have a largest size: what does not fit is counted, or goes into another file.
#include "exchange/writer.h"

#include "common/output_file.h"
#include "exchange/safe_text.h"
#include "tests/tools/product.h"
#include "tests/tools/scratch.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace {

/// A file with `uncovered` lines that were not executed and one that was, each a block.
void add_file(exchange_writer& writer, const std::string& name, std::uint32_t uncovered) {
    source_analysis analysis;
    std::vector<line_coverage> lines = {{1, 1, 1, 5}};
    for (std::uint32_t i = 0; i < uncovered; ++i)
        lines.push_back({i + 3, 1, 0, 0});
    file_coverage file = {analysis, name, true, lines, {}, nullptr};
    file.figures.blocks = {uncovered + 1, 1};
    file.figures.lines = {uncovered + 1, 1};
    writer.add(file);
}

/// What a writer of standard output makes of `files` files, the i-th with i + 1 uncovered lines.
std::string write_files(std::unique_ptr<exchange_writer> (*make)(const writer_target&), std::uint32_t files) {
    const exchange_options options;
    const root_names names("");
    file_replacement none({});
    return written([&](std::FILE* stream) {
        const auto writer = make({stream, false, "", options, names, none});
        for (std::uint32_t i = 0; i < files; ++i)
            add_file(*writer, "folder/file" + std::to_string(i) + ".c", i % 1000 + 1);
        writer->finish({{files, files}, {{}, {files * 2, files}, {}, 0}, {}});
    });
}

std::size_t count_of(const std::string& text, const std::string& wanted) {
    std::size_t count = 0;
    for (std::size_t at = text.find(wanted); at != std::string::npos; at = text.find(wanted, at + 1))
        ++count;
    return count;
}

TEST(ExportLimits, SummaryTellsOfTheFilesThatDoNotFit) {
    const std::string summary = write_files(make_markdown_writer, 20000);
    EXPECT_LE(summary.size(), 900000U);
    EXPECT_GE(summary.size(), 899000U);
    const std::size_t shown = count_of(summary, "| folder/file");
    EXPECT_TRUE(
        summary.ends_with("\n\n" + std::to_string(20000 - shown) + " more files are not covered in full.\n"));
    EXPECT_LT(summary.find("| folder/file999.c |"), summary.find("| folder/file998.c |"));
    EXPECT_EQ(count_of(write_files(make_markdown_writer, 3), " more files"), 0U);
}

TEST(ExportLimits, TenAnnotationsAreTheLargest) {
    // 6 + 7 + ... + 15 lines are shown, 1 + ... + 5 are not.
    const std::string annotations = write_files(make_github_writer, 15);
    EXPECT_EQ(count_of(annotations, "::warning "), 10U);
    EXPECT_TRUE(
        annotations.starts_with("::warning file=folder/file14.c,line=3,endLine=17,title=Not covered::15 "
                                "lines of code were not executed\n"))
        << annotations;
    EXPECT_TRUE(
        annotations.ends_with("::warning file=folder/file5.c,line=3,endLine=8,title=Not covered::6 lines "
                              "of code were not executed\n"
                              "::notice title=Coverage::5 more places with 15 lines of code were not "
                              "executed\n"))
        << annotations;
    EXPECT_EQ(count_of(write_files(make_github_writer, 10), "::notice"), 0U);
}

TEST(ExportLimits, NamesGiveNoCommandsToTheLog) {
    const std::string commands[][2] = {
        {"::error::x.c", "\\x3a:error::x.c"}, {"  ::x", "  \\x3a:x"}, {"a::b", "a::b"}, {":a", ":a"},
        {"a##[error]", "a\\x23#[error]"},     {"a\n::b", "a\\x0a::b"}};
    for (const auto& [name, shown] : commands)
        EXPECT_EQ(log_text(name), shown);
}

TEST(ExportLimits, PartsAreNotLargerThanAsked) {
    const scratch_directory scratch;
    exchange_options options;
    options.split = 20000;
    const root_names names("");
    const std::string name = (scratch.path() / "part.x/cobertura.xml").string();
    fs::create_directory(scratch.path() / "part.x");
    std::size_t classes = 0;
    const outcome end = run_product([&] {
        file_replacement files({});
        const auto writer = make_cobertura_writer({nullptr, false, name, options, names, files});
        for (std::uint32_t i = 0; i < 60; ++i)
            add_file(*writer, (i % 2 == 0 ? "a/" : "b/") + std::to_string(i), i == 7 ? 1000 : 100);
        writer->finish({});
        EXPECT_TRUE(files.replace()) << files.error();
    });
    // One file alone is too large.
    EXPECT_EQ(end.errors.substr(0, 22), "WARNING: b/7 alone tak");
    for (int part = 1; fs::exists(scratch.path() / "part.x" / ("cobertura." + std::to_string(part) + ".xml"));
         ++part) {
        const std::string text =
            read_file(scratch.path() / "part.x" / ("cobertura." + std::to_string(part) + ".xml"));
        classes += count_of(text, "<class ");
        EXPECT_TRUE(text.ends_with("</coverage>\n"));
        if (count_of(text, "\"b/7\"") == 0)
            EXPECT_LE(text.size(), 20000U);
        else
            EXPECT_EQ(count_of(text, "<class "), 1U);
    }
    EXPECT_EQ(classes, 60U);
}

} // namespace
