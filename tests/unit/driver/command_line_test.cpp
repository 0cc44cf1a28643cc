#include "driver/command_line.h"

#include "driver/color_table.h"
#include "driver/run_config.h"
#include "tests/tools/product.h"

#include <gtest/gtest.h>
#include <sstream>

/// What `describe` says of the settings that a command line makes; "usage" when the usage text is asked for.
static std::string parsed(const std::string& line, std::string (*describe)()) {
    std::vector<std::string> words = {"vexcov"};
    std::istringstream input(line);
    for (std::string word; input >> word;)
        words.push_back(word == "EMPTY" ? "" : word);
    std::string result = "usage";
    run_product([&] {
        const auto parse = [&](int argc, char** argv) {
            if (bParseCommandLine(argc, argv))
                result = describe();
            return 0;
        };
        call_main(parse, words);
    });
    return result;
}

/// Files and switches that are not as they are by default.
static std::string settings() {
    std::string text = std::string(g_lpszSPIFileName) + " " + g_lpszDPIFileName;
    text += g_lpszProjName ? " prj=" + std::string(g_lpszProjName) : "";
    text += std::string(g_bXCOUNTS ? " counts" : "") + (g_bNoPartial ? " nopartial" : "");
    text += std::string(html_output ? "" : " export") + (bProgressMeter ? "" : " nopmeter");
    for (const auto* markers : {&one_line_disable, &start_disable_block, &end_disable_block})
        for (const std::string& marker : *markers)
            text += " " + marker;
    return text + (Infeasible_markers_specified ? " markers" : "");
}

static std::string owner() {
    return std::string(g_lpszMailName) + " <" + g_lpszMailAddr + ">";
}

static std::string colors() {
    return std::string(BGColor[clrPartial]) + " " + BGColor[clrNotFeasible];
}

TEST(CommandLine, Settings) {
    const struct {
        std::string (*describe)();
        const char *line, *expected;
    } cases[] = {
        {settings, "", "pgopti.spi pgopti.dpi"},
        // Values are taken whatever they look like.
        {settings, "-dpi -counts word -COUNTS -counts=1 -dpifile -spi -h -prj EMPTY", "-h -counts prj="},
        {settings, "-spi s -dpi d -prj A -onelinedsbl 1 -prj B -onelinedsbl 2 -endblkdsbl 3",
         "s d prj=B 1 2 3 markers"},
        {settings, "-nopartial -counts -nopmeter -txtbcvrgfull a -xmlbcvrgfull b",
         "pgopti.spi pgopti.dpi counts nopartial nopmeter"},
        {settings, "-txtfcvrg a", "pgopti.spi pgopti.dpi export"},
        {settings, "-xmlfcvrg a", "pgopti.spi pgopti.dpi export"},
        {settings, "-ref old -counts -nopartial", "pgopti.spi pgopti.dpi"},
        {settings, "-dpi a -h -comp", "usage"}, // a help option ends the parsing
        {settings, "-maddr", "usage"},
        {owner, "", "Nobody <nobody>"},
        {owner, "-maddr a@b", "a@b <a@b>"},
        {owner, "-mname X_Y", "X_Y <nobody>"},
        {owner, "-mname X -maddr a@b", "X <a@b>"},
        {owner, "-maddr a@b -mname X", "X <a@b>"},
        {owner, "-maddr a@b -maddr c@d", "a@b <c@d>"},
        {colors, "", "#fafad2 #ffffff"},
        {colors, "-ucolor gray", "#fafad2 gray"},
        {colors, "-xcolor pink -ucolor gray", "#fafad2 pink"},
        {colors, "-ucolor gray -xcolor unset", "#fafad2 unset"},
        {colors, "-nopartial -pcolor red", "#ffffff #ffffff"},
        {colors, "-pcolor red -nopartial -ccolor green", "green #ffffff"},
        {colors, "-counts -ref old -nopartial -pcolor red", "red #ffffff"},
    };
    for (const auto& [describe, line, expected] : cases)
        EXPECT_EQ(parsed(line, describe), expected) << line;
}
