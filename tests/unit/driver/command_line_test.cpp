#include "driver/command_line.h"

#include "driver/color_table.h"
#include "driver/run_config.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <iterator>
#include <sstream>

/// Parses command lines, each from the state of a fresh process.
class CommandLine : public testing::Test {
  protected:
    ~CommandLine() override { forget(); }

    bool parse(const std::string& line) {
        forget();
        words_ = {"vexcov"};
        std::istringstream input(line);
        for (std::string word; input >> word;)
            words_.push_back(word == "EMPTY" ? "" : word);
        std::vector<char*> argv;
        for (std::string& word : words_)
            argv.push_back(word.data());
        testing::internal::CaptureStderr();
        const bool result = bParseCommandLine(static_cast<int>(argv.size()), argv.data());
        messages_ = testing::internal::GetCapturedStderr();
        return result;
    }

    /// Files and switches that are not as they are by default.
    std::string settings(const std::string& line) {
        EXPECT_TRUE(parse(line));
        std::string text = std::string(g_lpszSPIFileName) + " " + g_lpszDPIFileName;
        text += g_lpszProjName ? " prj=" + std::string(g_lpszProjName) : "";
        text += std::string(g_bXCOUNTS ? " counts" : "") + (g_bNoPartial ? " nopartial" : "");
        text += std::string(html_output ? "" : " export") + (bProgressMeter ? "" : " nopmeter");
        for (const auto* markers : {&one_line_disable, &start_disable_block, &end_disable_block})
            for (const std::string& marker : *markers)
                text += " " + marker;
        return text;
    }

    std::string owner(const std::string& line) {
        EXPECT_TRUE(parse(line));
        return std::string(g_lpszMailName) + " <" + g_lpszMailAddr + ">";
    }

    std::string color(Color which, const std::string& line) {
        EXPECT_TRUE(parse(line));
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

    std::vector<std::string> words_;
    std::string messages_;
};

TEST_F(CommandLine, Settings) {
    EXPECT_EQ(settings(""), "pgopti.spi pgopti.dpi");
    EXPECT_EQ(settings("-dpi -counts word -COUNTS -counts=1 -dpifile -spi -h -prj EMPTY"), "-h -counts prj=")
        << "values are taken whatever they look like";
    EXPECT_EQ(settings("-prj A -onelinedsbl 1 -prj B -onelinedsbl 2 -endblkdsbl 3"),
              "pgopti.spi pgopti.dpi prj=B 1 2 3");
    EXPECT_TRUE(Infeasible_markers_specified);
    EXPECT_EQ(settings("-nopartial -counts -nopmeter -txtbcvrgfull a -xmlbcvrgfull b"),
              "pgopti.spi pgopti.dpi counts nopartial nopmeter");
    EXPECT_EQ(settings("-txtfcvrg a"), "pgopti.spi pgopti.dpi export");
    EXPECT_EQ(settings("-xmlfcvrg a"), "pgopti.spi pgopti.dpi export");
    EXPECT_FALSE(parse("-dpi a -h -comp")) << "a help option ends the parsing";
    EXPECT_FALSE(parse("-maddr"));
    EXPECT_EQ(messages_, "") << "the caller prints the banner";
}

TEST_F(CommandLine, OwnerNameAndAddress) {
    EXPECT_EQ(owner(""), "Nobody <nobody>");
    EXPECT_EQ(owner("-maddr a@b"), "a@b <a@b>");
    EXPECT_EQ(owner("-mname X_Y"), "X_Y <nobody>");
    EXPECT_EQ(owner("-mname X -maddr a@b"), "X <a@b>");
    EXPECT_EQ(owner("-maddr a@b -mname X"), "X <a@b>");
    EXPECT_EQ(owner("-maddr a@b -maddr c@d"), "a@b <c@d>");
}

TEST_F(CommandLine, Colors) {
    EXPECT_EQ(color(clrNotFeasible, ""), "#ffffff");
    EXPECT_EQ(color(clrNotFeasible, "-ucolor gray"), "gray");
    EXPECT_EQ(color(clrNotFeasible, "-xcolor pink -ucolor gray"), "pink");
    EXPECT_EQ(color(clrNotFeasible, "-ucolor gray -xcolor unset"), "unset");
    EXPECT_EQ(color(clrPartial, "-nopartial -pcolor red"), "#ffffff");
    EXPECT_EQ(color(clrPartial, "-pcolor red -nopartial -ccolor green"), "green");
}

TEST_F(CommandLine, ReferenceOverrides) {
    EXPECT_EQ(settings("-ref old -counts -nopartial"), "pgopti.spi pgopti.dpi");
    EXPECT_TRUE(messages_.starts_with("WARNING: option -ref overrides option -nopartial.\n"
                                      "WARNING: option -ref overrides option -counts.\nVexal(R)"));
    EXPECT_EQ(color(clrPartial, "-counts -ref old -nopartial -pcolor red"), "red");
}
