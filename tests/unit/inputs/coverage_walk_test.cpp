// The companions' walk over the files: its totals are those of the report for the same options, and names are
// relative to the root.
#include "inputs/coverage_walk.h"

#include "coverage/run_totals.h"
#include "driver/banner.h"
#include "driver/run.h"
#include "inputs/coverage_options.h"
#include "tests/tools/product.h"
#include "tests/tools/profile_text.h"
#include "tests/tools/scratch.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <sstream>

namespace fs = std::filesystem;

namespace {

/// The input of a golden case, and the options that are given for it.
struct same_run {
    const char* golden_case;
    std::vector<std::string> options;
};

const same_run kRuns[] = {
    {"first-report", {}},
    {"differential", {"-ref", "old.dpi", "-dpi", "new.dpi", "-nopartial"}},
    {"no-partial", {"-nopartial"}},
    {"no-partial", {}},
    {"component-list", {"-comp", "list.txt", "-onelinedsbl", "SKIP"}},
    {"no-line-information", {}},
    {"twins", {"-spi", "p.spi", "-dpi", "new.dpi", "-ref", "old.dpi"}},
    {"sources", {}},
};

/// Makes the scratch directory of a golden case the working directory.
class placed_case {
  public:
    explicit placed_case(const std::string& name) {
        fs::copy(fs::path(VEXCOV_TEST_DATA) / "golden/cases" / name / "input", scratch_.path(),
                 fs::copy_options::recursive | fs::copy_options::copy_symlinks);
        for (const auto& entry : fs::directory_iterator(scratch_.path()))
            if (entry.path().extension() == ".dpitext")
                write_file(fs::path(entry.path()).replace_extension(".dpi"),
                           compile_profile_text(read_file(entry.path())));
        fs::current_path(scratch_.path());
    }
    ~placed_case() { fs::current_path(home_); }

  private:
    fs::path home_ = fs::current_path();
    scratch_directory scratch_;
};

std::string shown(const covered_count& count) {
    return std::to_string(count.covered) + "/" + std::to_string(count.total) + " ";
}

std::string report_totals(std::vector<std::string> arguments, outcome* result) {
    std::string totals;
    arguments.insert(arguments.begin(), {"vexcov", "-nopmeter"});
    *result = run_product([&] {
        call_main(run_report, arguments);
        totals = shown({totalNumberOfFiles, totalNumberOfFilesCovered}) +
                 shown({totalNumberOfProcs, totalNumberOfProcsCovered}) +
                 shown({totalNumberOfBlocks, totalNumberOfBlocksCovered});
    });
    return totals;
}

const option_row<coverage_options*> kOwnRows[] = {
    {"-own", [](coverage_options* options, const char* value) { options->project = value; }, true, "a word"},
};

/// The totals of the walk; `*functions` receives what the functions of all files add up to.
std::string walk_totals(std::vector<std::string> arguments, outcome* result, std::string* functions) {
    std::string totals;
    arguments.insert(arguments.begin(), "companion");
    *result = run_product([&] {
        coverage_options options;
        call_main(
            [&](int argc, char** argv) {
                read_coverage_arguments({"companion", [] {}, [] {}}, kOwnRows, argc, argv, &options,
                                        [](const char* name) { ADD_FAILURE() << name; });
            },
            arguments);
        covered_count blocks;
        std::int64_t count = 0;
        const coverage_totals all = coverage_walk(options).run([&](const file_coverage& file) {
            for (const source_function& function : file.analysis.functions) {
                ++count;
                blocks.total += function.blocks;
                blocks.covered += function.covered;
            }
        });
        totals = shown(all.files) + shown(all.figures.functions) + shown(all.figures.blocks);
        *functions = std::to_string(count) + " " + shown(blocks);
        EXPECT_EQ(*functions, std::to_string(all.figures.functions.total) + " " + shown(all.figures.blocks));
    });
    return totals;
}

/// The report's messages but the banner; those of missing files stand on standard output there, in vexcov's
/// words.
std::string expected_messages(const outcome& report) {
    std::string messages = report.errors;
    const std::string banner = run_product([] { PrintVersion(); }).errors;
    messages.erase(messages.find(banner), banner.size());
    std::istringstream lines(report.output);
    for (std::string line; std::getline(lines, line);)
        if (line.starts_with("Warning - File "))
            messages += "WARNING: there is no source file " +
                        line.substr(15, line.rfind(" not found!") - 15) +
                        " (run it where relative names lead to it)\n";
    return messages;
}

TEST(CoverageWalk, HasTheTotalsAndMessagesOfTheReport) {
    for (const same_run& run : kRuns) {
        const placed_case place(run.golden_case);
        outcome report, walk;
        std::string functions;
        const std::string expected = report_totals(run.options, &report);
        EXPECT_EQ(walk_totals(run.options, &walk, &functions), expected) << run.golden_case;
        EXPECT_FALSE(expected.empty()) << report.errors;
        EXPECT_EQ(walk.status, report.status);
        EXPECT_EQ(walk.output, "");
        EXPECT_EQ(walk.errors, expected_messages(report)) << run.golden_case;
    }
}

} // namespace
