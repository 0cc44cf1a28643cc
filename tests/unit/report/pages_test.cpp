// Pages of the report, where whole runs do not reach.
#include "common/output_file.h"
#include "common/text_buffer.h"
#include "coverage/coverage_list.h"
#include "coverage/function_table.h"
#include "driver/run_state.h"
#include "markers/parser.h"
#include "report/file_index.h"
#include "report/function_lists.h"
#include "report/images.h"
#include "report/listing.h"
#include "report/tool_bar.h"
#include "tests/tools/scratch.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>

namespace fs = std::filesystem;

/// Runs each test in a fresh working directory that holds an empty report directory.
class Pages : public testing::Test {
  protected:
    Pages() : home_(fs::current_path()) {
        fs::current_path(scratch_.path());
        fs::create_directory("CodeCoverage");
    }
    ~Pages() override { fs::current_path(home_); }

    /// The digits of the pages that the column titles of a page lead to, in the order of the columns.
    static std::string links(const std::string& page, const std::string& title) {
        std::string digits;
        for (std::size_t at = page.find(title); at != std::string::npos; at = page.find(title, at + 1))
            digits += page[page.find(".HTML\">", at) - 1];
        return digits;
    }

    const scratch_directory scratch_;
    const fs::path home_;
};

TEST_F(Pages, TitlesLeadToTheOtherOrders) {
    // By order: of a list of covered functions, of one of uncovered functions, of an index of files.
    const char* const expected[7][3] = {{"14", "64", "416"}, {"54", "04", "450"}, {"54", "64", "456"},
                                        {"", "", ""},        {"52", "62", "256"}, {"14", "64", "416"},
                                        {"54", "04", "450"}};
    func function = {"f", 1, 1, 1, 100.0};
    func* functions[] = {&function};
    char name[] = "a.c";
    filename_list_node file = {};
    file.name = name;
    filename_list_node* files[] = {&file};
    for (const int order : {-3, -2, -1, 1, 2, 3}) {
        const std::string number = "_" + std::to_string(order + 3) + ".HTML";
        EXPECT_TRUE(bOutputFunctionCoverageFor(true, order, "a.c", "html", functions, 1));
        EXPECT_TRUE(bOutputFunctionCoverageFor(false, order, "a.c", "html", functions, 1));
        EXPECT_TRUE(bCreateCov(true, order, "i", "html", nullptr, 1, files));
        const char* const* links_of = expected[order + 3];
        EXPECT_EQ(links(read_file("CodeCoverage/A_C_CVRDFNCS" + number), "title=\"sort"), links_of[0]);
        EXPECT_EQ(links(read_file("CodeCoverage/A_C_UNCVRDFNCS" + number), "title=\"sort"), links_of[1]);
        EXPECT_EQ(links(read_file("CodeCoverage/I" + number), "title=\"sort"), links_of[2]);
    }
    EXPECT_EXIT(bOutputFunctionCoverageFor(true, 4, "a.c", "html", functions, 1), testing::ExitedWithCode(1),
                "Invalid sorting option 4\n");
    EXPECT_EXIT(bCreateCov(true, -4, "i", "html", nullptr, 1, files), testing::ExitedWithCode(1),
                "Invalid sorting option -4\n");
}

TEST_F(Pages, FunctionNamesAsHtml) {
    const std::pair<const char*, const char*> names[] = {
        {"operator<", "operator&lt;"},
        {"a&b", "a&b"},
        {"f@8", "f"},
        {"f@", "f"},
        {"a@8b", "a8b"},
        {"a@8@@12", "a8"}, // only the last digits run to the end
        {"@1>", "1&gt;"},
        {"", ""},
    };
    for (const auto& [name, shown] : names)
        EXPECT_EQ(written([name = name](std::FILE* stream) {
                      text_buffer page(stream);
                      printHTML(page, name);
                  }),
                  shown);
}

TEST_F(Pages, LinesBeyondSixDigits) {
    scratch_.put("a.c", std::string(1000001, '\n'));
    parser no_markers("a.c", {}, {}, {});
    pars = &no_markers;
    ASSERT_TRUE(g_cl->bSetName("a.c"));
    ASSERT_TRUE(bOutputLineCoverage("html"));
    g_cl->vPrepareForNewSrcFile();
    pars = nullptr;
    std::ifstream page("CodeCoverage/A_C_SRC.HTML");
    page.seekg(-2000, std::ios::end);
    const std::string last{std::istreambuf_iterator<char>(page), {}};
    EXPECT_NE(last.find("\n999998) <a name=\"l999998\""), std::string::npos);
    EXPECT_NE(last.find("\n999999) <a name=\"l999999\""), std::string::npos);
    EXPECT_NE(last.find("\n999999) <a name=\"l1000001\""), std::string::npos);
}

TEST_F(Pages, ImagesThatCannotBeWritten) {
    const unsigned char bytes[] = {0x41, 0xff};
    std::FILE* read_only = std::fopen("/dev/null", "r");
    testing::internal::CaptureStdout();
    putBytes(read_only, bytes, 2);
    putBytes(read_only, nullptr, 2);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "ERR at 0 65\nERR at 1 -1\n");
    std::fclose(read_only);
    EXPECT_FALSE(createIcon("none/x.gif", bytes, 2, 0, nullptr, 0));
}

TEST_F(Pages, HelpPageThatCannotBeWrittenIsToldAtTheEnd) {
    fs::create_symlink("/dev/full", "CodeCoverage/__HELP.HTML");
    EXPECT_TRUE(createToolBar("html"));
    testing::internal::CaptureStderr();
    EXPECT_FALSE(close_open_outputs());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "ERROR: cannot write CodeCoverage/__HELP.HTML\n");
}
