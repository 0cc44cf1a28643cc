// Pages of the report, where whole runs do not reach.
#include "coverage/coverage_list.h"
#include "report/file_index.h"
#include "report/function_lists.h"
#include "report/images.h"
#include "report/listing.h"
#include "tests/tools/product.h"
#include "tests/tools/scratch.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace fs = std::filesystem;

/// Runs each test in a fresh working directory that holds an empty report directory.
class Pages : public testing::Test {
  protected:
    Pages() : home_(fs::current_path()) {
        fs::current_path(scratch_.path());
        fs::create_directory("CodeCoverage");
    }
    ~Pages() override { fs::current_path(home_); }

    const scratch_directory scratch_;
    const fs::path home_;
};

TEST_F(Pages, OrdersThatDoNotExist) {
    for (const int order : {4, -4}) {
        const std::string message = "Invalid sorting option " + std::to_string(order) + "\n";
        EXPECT_EQ(
            run_product([&] { bOutputFunctionCoverageFor(true, order, "a.c", "html", nullptr, 0); }).errors,
            message);
        EXPECT_EQ(run_product([&] { bCreateCov(true, order, "i", "html", nullptr, 0, nullptr); }).errors,
                  message);
    }
}

TEST_F(Pages, LinesBeyondSixDigits) {
    scratch_.put("a.c", std::string(1000001, '\n'));
    run_product([] {
        ASSERT_TRUE(g_cl->bSetName("a.c"));
        ASSERT_TRUE(bOutputLineCoverage("html"));
    });
    const std::string page = read_file("CodeCoverage/A_C_SRC.HTML");
    for (const char* line :
         {"\n999998) <a name=\"l999998\"", "\n999999) <a name=\"l999999\"", "\n999999) <a name=\"l1000001\""})
        EXPECT_NE(page.find(line, page.size() - 2000), std::string::npos) << line;
}

TEST_F(Pages, ImagesThatCannotBeWritten) {
    const unsigned char bytes[] = {0x41, 0xff};
    const outcome end = run_product([&] {
        std::FILE* read_only = std::fopen("/dev/null", "r");
        putBytes(read_only, bytes, 2);
        putBytes(read_only, nullptr, 2);
    });
    EXPECT_EQ(end.output, "ERR at 0 65\nERR at 1 -1\n");
    EXPECT_FALSE(createIcon("none/x.gif", bytes, 2, 0, nullptr, 0));
}
