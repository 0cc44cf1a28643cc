#include "driver/command_line.h"

#include "driver/color_table.h"
#include "driver/run_config.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <vector>

/// Parses command lines, each from the state of a fresh process.
class CommandLine : public testing::Test {
  protected:
    ~CommandLine() override { forget(); }

    bool parse(std::vector<std::string> arguments) {
        forget();
        arguments_ = std::move(arguments);
        arguments_.insert(arguments_.begin(), "vexcov");
        std::vector<char*> argv;
        for (std::string& argument : arguments_)
            argv.push_back(argument.data());
        testing::internal::CaptureStderr();
        const bool result = bParseCommandLine(static_cast<int>(argv.size()), argv.data());
        messages_ = testing::internal::GetCapturedStderr();
        return result;
    }

    std::string owner(std::vector<std::string> arguments) {
        EXPECT_TRUE(parse(std::move(arguments)));
        return std::string(g_lpszMailName) + " <" + g_lpszMailAddr + ">";
    }

    std::string color(Color which, std::vector<std::string> arguments) {
        EXPECT_TRUE(parse(std::move(arguments)));
        return BGColor[which];
    }

    static void forget() {
        for (char** setting : {&g_lpszSPIFileName, &g_lpszDPIFileName, &g_lpszRefDPIFileName, &g_lpszProjName,
                               &g_lpszMailName, &g_lpszMailAddr, &g_lpszOutFileExt})
            release_setting(*setting);
        moduleListName = g_lpszTextOut = g_lpszXMLOut = g_lpszbfullTextOut = g_lpszbfullXMLOut = nullptr;
        compWithRef = g_bXCOUNTS = g_bNoPartial = Infeasible_markers_specified = false;
        html_output = bProgressMeter = true;
        for (auto* markers : {&one_line_disable, &start_disable_block, &end_disable_block})
            markers->clear();
        const char* const colors[] = {nullptr,   "unset",   "#ffffff", "#ffffff",
                                      "#fafad2", "#ffff99", "#ffcccc"};
        std::copy(std::begin(colors), std::end(colors), BGColor);
    }

    std::vector<std::string> arguments_;
    std::string messages_;
};

TEST_F(CommandLine, Defaults) {
    EXPECT_TRUE(parse({}));
    EXPECT_STREQ(g_lpszSPIFileName, "pgopti.spi");
    EXPECT_STREQ(g_lpszDPIFileName, "pgopti.dpi");
    EXPECT_STREQ(g_lpszOutFileExt, "html");
    EXPECT_EQ(g_lpszProjName, nullptr);
    EXPECT_STREQ(BGColor[clrNotFeasible], "#ffffff");
    EXPECT_TRUE(html_output);
    EXPECT_TRUE(bProgressMeter);
    EXPECT_EQ(owner({}), "Nobody <nobody>");
}

TEST_F(CommandLine, ValuesAreTakenWhateverTheyLookLike) {
    EXPECT_TRUE(
        parse({"-dpi", "-counts", "word", "-COUNTS", "-counts=1", "-dpifile", "-spi", "-h", "-prj", ""}));
    EXPECT_STREQ(g_lpszDPIFileName, "-counts");
    EXPECT_STREQ(g_lpszSPIFileName, "-h");
    EXPECT_STREQ(g_lpszProjName, "");
    EXPECT_FALSE(g_bXCOUNTS);
    EXPECT_FALSE(parse({"-dpi", "a", "-h", "-comp"})) << "a help option ends the parsing";
    EXPECT_FALSE(parse({"-maddr"}));
    EXPECT_EQ(messages_, "") << "the caller prints the banner";
}

TEST_F(CommandLine, RepeatedOptions) {
    EXPECT_TRUE(
        parse({"-prj", "A", "-onelinedsbl", "1", "-prj", "B", "-onelinedsbl", "2", "-endblkdsbl", "3"}));
    EXPECT_STREQ(g_lpszProjName, "B");
    EXPECT_EQ(one_line_disable, (std::vector<std::string>{"1", "2"}));
    EXPECT_EQ(end_disable_block, std::vector<std::string>{"3"});
    EXPECT_TRUE(Infeasible_markers_specified);
}

TEST_F(CommandLine, OwnerNameAndAddress) {
    EXPECT_EQ(owner({"-maddr", "a@b"}), "a@b <a@b>");
    EXPECT_EQ(owner({"-mname", "X_Y"}), "X_Y <nobody>");
    EXPECT_EQ(owner({"-mname", "X", "-maddr", "a@b"}), "X <a@b>");
    EXPECT_EQ(owner({"-maddr", "a@b", "-mname", "X"}), "X <a@b>");
    EXPECT_EQ(owner({"-maddr", "a@b", "-maddr", "c@d"}), "a@b <c@d>");
}

TEST_F(CommandLine, Colors) {
    EXPECT_EQ(color(clrNotFeasible, {"-ucolor", "gray"}), "gray");
    EXPECT_EQ(color(clrNotFeasible, {"-xcolor", "pink", "-ucolor", "gray"}), "pink");
    EXPECT_EQ(color(clrNotFeasible, {"-ucolor", "gray", "-xcolor", "unset"}), "unset");
    EXPECT_EQ(color(clrPartial, {"-nopartial", "-pcolor", "red"}), "#ffffff");
    EXPECT_EQ(color(clrPartial, {"-pcolor", "red", "-nopartial", "-ccolor", "green"}), "green");
    EXPECT_EQ(color(clrUncoveredBlock, {"-bcolor", "not a color"}), "not a color");
    EXPECT_EQ(color(clrUncoveredFunc, {"-fcolor", "1"}), "1");
}

TEST_F(CommandLine, ReferenceOverrides) {
    EXPECT_EQ(color(clrPartial, {"-ref", "old", "-counts", "-nopartial", "-pcolor", "red"}), "red");
    EXPECT_FALSE(g_bXCOUNTS);
    EXPECT_FALSE(g_bNoPartial);
    EXPECT_EQ(messages_.find("WARNING: option -ref overrides option -nopartial.\n"
                             "WARNING: option -ref overrides option -counts.\n"
                             "Vexal(R)"),
              0U);
    EXPECT_TRUE(parse({"-counts", "-ref", "old"}));
    EXPECT_EQ(messages_.find("WARNING: option -ref overrides option -counts.\nVexal(R)"), 0U);
}

TEST_F(CommandLine, Exports) {
    EXPECT_TRUE(parse({"-txtbcvrgfull", "a", "-xmlbcvrgfull", "b"}));
    EXPECT_TRUE(html_output);
    EXPECT_TRUE(parse({"-txtfcvrg", "a"}));
    EXPECT_FALSE(html_output);
    EXPECT_TRUE(parse({"-xmlfcvrg", "a"}));
    EXPECT_FALSE(html_output);
}
