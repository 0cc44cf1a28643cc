// The fixed resources of a report: tool bar, help page and images.
#include "report/tool_bar.h"

#include "common/output_file.h"
#include "report/images.h"
#include "tests/unit/report/report_fixture.h"

#include <algorithm>
#include <stdexcept>
#include <vector>

class ToolBar : public ReportTest {
  protected:
    void TearDown() override {
        close_open_outputs();
        ReportTest::TearDown();
    }

    static std::string help_page() {
        EXPECT_TRUE(createToolBar("html"));
        close_open_outputs();
        return read_file("CodeCoverage/__HELP.HTML");
    }
};

/// Reads a GIF file as a viewer does.
class gif_reader {
  public:
    explicit gif_reader(const std::string& bytes) : bytes_(bytes) {
        if (bytes_.compare(0, 6, "GIF89a") != 0)
            throw std::runtime_error("no GIF89a head");
        width = byte(6);
        height = byte(8);
        at_ = 13 + (std::size_t{6} << (byte(10) & 7));
        while (byte(at_) == 0x21) {
            transparent = transparent || (byte(at_ + 1) == 0xf9 && (byte(at_ + 3) & 1));
            at_ += 2;
            sub_blocks();
        }
        if (byte(at_) != 0x2c || byte(at_ + 5) != width || byte(at_ + 7) != height)
            throw std::runtime_error("no frame of the picture's size");
        at_ += 10;
        const unsigned int codeSize = byte(at_++);
        decode(sub_blocks(), codeSize);
        if (byte(at_) != 0x3b || at_ + 1 != bytes_.size())
            throw std::runtime_error("no end");
    }

    unsigned int width = 0, height = 0;
    bool transparent = false;
    std::size_t pixels = 0, colors = 0; ///< pixels of the frame, and the different colours among them

  private:
    unsigned int byte(std::size_t at) const { return static_cast<unsigned char>(bytes_.at(at)); }

    std::string sub_blocks() {
        std::string data;
        while (const unsigned int length = byte(at_++)) {
            data += bytes_.substr(at_, length);
            at_ += length;
        }
        return data;
    }

    void decode(const std::string& data, unsigned int codeSize) {
        const unsigned int clear = 1u << codeSize;
        std::vector<std::string> table;
        std::string previous, shown;
        std::size_t bit = 0;
        unsigned int bits = codeSize + 1;
        for (;;) {
            unsigned int code = 0;
            for (unsigned int i = 0; i < bits; ++i, ++bit)
                code |= (static_cast<unsigned int>(data.at(bit / 8)) >> (bit % 8) & 1) << i;
            if (code == clear + 1)
                break;
            if (code == clear) {
                table.assign(clear + 2, "");
                for (unsigned int i = 0; i < clear; ++i)
                    table[i] = static_cast<char>(i);
                previous.clear();
                bits = codeSize + 1;
                continue;
            }
            if (code > table.size())
                throw std::runtime_error("a code before its entry");
            const std::string text = code < table.size() ? table[code] : previous + previous.at(0);
            if (!previous.empty())
                table.push_back(previous + text.at(0));
            if (table.size() == std::size_t{1} << bits && bits < 12)
                ++bits;
            shown += text;
            previous = text;
        }
        pixels = shown.size();
        std::vector<bool> used(256);
        for (const char color : shown)
            used[static_cast<unsigned char>(color)] = true;
        colors = static_cast<std::size_t>(std::count(used.begin(), used.end(), true));
    }

    std::string bytes_;
    std::size_t at_ = 0;
};

TEST_F(ToolBar, Images) {
    ASSERT_TRUE(createToolBar("html"));
    const std::string home = read_file("CodeCoverage/__Home.gif"),
                      help = read_file("CodeCoverage/__Help.gif"),
                      logo = read_file("CodeCoverage/__VexalR.gif"),
                      spacer = read_file("CodeCoverage/__Spacer.gif");
    EXPECT_EQ(home.size(), 977u);
    EXPECT_EQ(home.substr(76, 705), std::string(705, '\0'));
    EXPECT_EQ(help.size(), 187u);
    EXPECT_EQ(logo.size(), 1295u);
    EXPECT_EQ(logo.substr(655, 126), std::string(126, '\0'));
    EXPECT_EQ(spacer.size(), 43u);
    struct expected {
        const std::string& file;
        unsigned int width, height;
        std::size_t colors; // at least
    };
    for (const expected& want :
         {expected{home, 19, 20, 8}, {help, 19, 20, 4}, {logo, 50, 34, 16}, {spacer, 1, 1, 1}}) {
        const gif_reader gif(want.file);
        EXPECT_EQ(gif.width, want.width);
        EXPECT_EQ(gif.height, want.height);
        EXPECT_EQ(gif.pixels, std::size_t{want.width} * want.height);
        EXPECT_GE(gif.colors, want.colors);
        EXPECT_TRUE(gif.transparent);
    }
}

TEST_F(ToolBar, ImageParts) {
    const unsigned char head[] = {1, 2}, tail[] = {3};
    EXPECT_TRUE(createIcon("x.gif", head, 2, 3, tail, 1));
    EXPECT_EQ(read_file("CodeCoverage/x.gif"), std::string("\1\2\0\0\0\3", 6));
    EXPECT_TRUE(createIcon("x.gif", nullptr, 0, 1, nullptr, 0));
    EXPECT_EQ(read_file("CodeCoverage/x.gif"), std::string(1, '\0'));
    EXPECT_FALSE(createIcon("none/x.gif", head, 2, 0, nullptr, 0));
}

TEST_F(ToolBar, BytesThatCannotBeWritten) {
    const unsigned char bytes[] = {0x41, 0xff};
    std::FILE* readOnly = std::fopen("/dev/null", "r");
    testing::internal::CaptureStdout();
    putBytes(readOnly, bytes, 2);
    putBytes(readOnly, nullptr, 2);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "ERR at 0 65\nERR at 1 -1\n");
    std::fclose(readOnly);
}

TEST_F(ToolBar, Page) {
    ASSERT_TRUE(createToolBar("htm"));
    EXPECT_EQ(read_file("CodeCoverage/__TOOLBAR.HTM"),
              R"(<html>
<head>
<base target="_parent">
</head>
<body bgcolor="FFFFFF">
<table border=0 cellpadding=3 cellspacing=0>
<tr>
<td>
<a href="../CODE_COVERAGE.HTM" title="Coverage Summary"><img src="__Home.gif" border="0"></a>
</td>
<td>
<a target="_new" href="../CodeCoverage/__HELP.HTM" title="Help"><img src="__Help.gif" border="0"></a>
</td>
<td width="100%" align="right">
<a target="_new" href="https://vexal.example/"><img src="__VexalR.gif" border="0"></a>
</td>
</tr>
</table>
</body>
</html>
)");
}

TEST_F(ToolBar, FilesThatCannotBeCreated) {
    struct failure {
        const char *file, *message;
        bool toolBar; // the tool bar was begun
    };
    for (const failure& want :
         {failure{"__TOOLBAR.HTML", "Unable to create ToolBar file!\n", false},
          failure{"__Home.gif", "Unable to create the Home Icon __Home.gif!\n", true},
          failure{"__Help.gif", "Unable to create the Home Icon __Help.gif!\n", true},
          failure{"__VexalR.gif", "Unable to create Vexal Logo __VexalR.gif!\n", true},
          failure{"__Spacer.gif", "Unable to create Spacer image __Spacer.gif!\n", true},
          failure{"__HELP.HTML", "Unable to create On-Line Help!\n", true}}) {
        std::filesystem::remove_all("CodeCoverage");
        block(std::string("CodeCoverage/") + want.file);
        testing::internal::CaptureStderr();
        EXPECT_FALSE(createToolBar("html"));
        EXPECT_EQ(testing::internal::GetCapturedStderr(), want.message);
        close_open_outputs();
        if (want.toolBar) {
            EXPECT_EQ(read_file("CodeCoverage/__TOOLBAR.HTML"), "") << want.file;
        }
    }
}

TEST_F(ToolBar, HelpPageShowsTheColorsOfTheRun) {
    SetBGColor(clrCovered, "green");
    SetBGColor(clrNotFeasible, "gray");
    const std::string page = help_page();
    EXPECT_EQ(part(page, "<TABLE BORDER=\"0\" CELLSPACING=\"0\"", "</TABLE>\n</TR>\n"),
              R"(<TABLE BORDER="0" CELLSPACING="0" CELLPADDING="0" ALIGN="center">
<TR>
<IMG SRC="__Spacer.gif" WIDTH="15" HEIGHT="2"><TD BGCOLOR="#FF9900">
<TABLE BORDER="0" CELLSPACING="1" CELLPADDING="4" 
STYLE="font-family:Arial,Helvetica;font-size:x-small">
<TR>
<TD ALIGN="center" BGCOLOR="#F0F0F0" WIDTH="25%"><B>Color</B></TD>
<TD ALIGN="center" BGCOLOR="#F0F0F0"><B>Meaning</B></TD>
</TR>
<TR>
<TD BGCOLOR="green">Covered code</TD>
<TD BGCOLOR="#FFFFFF">
 The portion of code colored in this color was 
exercised by the tests.
</TD>
</TR>
<TR>
<TD BGCOLOR="#ffff99">Uncovered basic block</TD>
<TD BGCOLOR="#FFFFFF">
 Basic blocks that are colored in this color were 
not exercised by any of the tests.<BR> They were, however, within 
functions that were executed during the tests.
</TD>
</TR>
<TR>
<TD BGCOLOR="#ffcccc">Uncovered function</TD>
<TD BGCOLOR="#FFFFFF">
 Functions that are colored in this color were 
never called during the tests.
</TD>
</TR>
<TR>
<TD BGCOLOR="#fafad2">Partially-covered code</TD>
<TD BGCOLOR="#FFFFFF">
 More than one basic block was generated for 
the code at this position.
Some of the blocks were covered while some were not.
</TD>
</TR>
<TR>
<TD BGCOLOR="#ffffff">Unknown</TD>
<TD BGCOLOR="#FFFFFF">
 No code was generated for this source position. 
Most probably, the source at this position is a comment,
a header-file inclusion, or a variable declaration.
</TD>
</TR>
</TABLE>
)");
    Infeasible_markers_specified = true;
    EXPECT_EQ(part(help_page(), "<TD BGCOLOR=\"gray\">", "<TD BGCOLOR=\"#ffffff\">"),
              R"(<TD BGCOLOR="gray">Infeasible code</TD>
<TD BGCOLOR="#FFFFFF">
 The portion of code colored in this color 
was marked in the source as code that no test can reach,
and is ignored in coverage analysis.
</TD>
</TR>
<TR>
<TD BGCOLOR="#ffffff">Unknown</TD>
)");
}

TEST_F(ToolBar, HelpPageIsWholeAndReadable) {
    const std::string page = help_page();
    EXPECT_EQ(page.compare(0, 21, "<html>\n<head>\n<title>"), 0);
    EXPECT_EQ(page.compare(page.size() - 16, 16, "</body>\n</html>\n"), 0) << "closed at the end of the run";
    std::size_t start = 0;
    for (std::size_t end = page.find('\n'); end != std::string::npos; end = page.find('\n', start)) {
        EXPECT_LE(end - start, 84u) << page.substr(start, end - start);
        start = end + 1;
    }
    EXPECT_NE(page.find("\n^ 1000 (8/10) means that ten blocks \n"), std::string::npos);
    EXPECT_NE(page.find("<B>^</B>\n"), std::string::npos);
}
