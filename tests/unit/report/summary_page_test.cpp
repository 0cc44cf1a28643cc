// The coverage summary and the root page.
#include "report/summary_page.h"

#include "coverage/run_totals.h"
#include "tests/unit/report/report_fixture.h"

class SummaryPage : public ReportTest {
  protected:
    static void set_totals(std::int64_t files, std::int64_t filesCovered, std::int64_t procs,
                           std::int64_t procsCovered, std::int64_t blocks, std::int64_t blocksCovered) {
        totalNumberOfFiles = files;
        totalNumberOfFilesCovered = filesCovered;
        totalNumberOfProcs = procs;
        totalNumberOfProcsCovered = procsCovered;
        totalNumberOfBlocks = blocks;
        totalNumberOfBlocksCovered = blocksCovered;
    }

    void TearDown() override {
        set_totals(0, 0, 0, 0, 0, 0);
        ReportTest::TearDown();
    }

    static std::string root(const char* covered, const char* uncovered) {
        EXPECT_TRUE(bCreateSummary(nullptr, "Code_Coverage", "__Code_Coverage", covered, uncovered, "html"));
        return read_file("CODE_COVERAGE.HTML");
    }
};

TEST_F(SummaryPage, FiguresOfTheRun) {
    set_totals(2, 1, 12345, 12000, 0, 0);
    ASSERT_TRUE(bCreateSummary("p", "Code_Coverage", "__Code_Coverage", "__C", "__U", "html"));
    EXPECT_EQ(
        read_file("CodeCoverage/__CODE_COVERAGE.HTML"),
        R"(<html>
<head>
<title>Coverage Summary</title>
</head>
<body bgcolor="FFFFFF">
)" + generated_by("", "<td width=\"30%\">") +
            R"(<h3 ALIGN="center" STYLE="font-family:Arial,Helvetica;color:#3366ff">Coverage Summary of p</h3>
</td>
</table>
)" + kDataTableStart +
            R"(<TH ALIGN="center" COLSPAN="4">Files</TH>
<TH ALIGN="center" COLSPAN="4">Functions</TH>
<TH ALIGN="center" COLSPAN="4">Blocks</TH>
</TR>
<TR BGCOLOR="#F0F0F0">
<TH ALIGN="center">total</TH>
<TH ALIGN="center">cvrd</TH>
<TH ALIGN="center">uncvrd</TH>
<TH ALIGN="center">cvrg%</TH>
<TH ALIGN="center">total</TH>
<TH ALIGN="center">cvrd</TH>
<TH ALIGN="center">uncvrd</TH>
<TH ALIGN="center">cvrg%</TH>
<TH ALIGN="center">total</TH>
<TH ALIGN="center">cvrd</TH>
<TH ALIGN="center">uncvrd</TH>
<TH ALIGN="center">cvrg%</TH>
</TR>
</THEAD>
<TBODY>
<TR ID=DataRow STYLE="color:black;font-weight:normal" BGCOLOR="#FFFFFF">
<TD ALIGN="center">2</TD>
<TD ALIGN="center">1</TD>
<TD ALIGN="center">1</TD>
<TD ALIGN="center" STYLE="font-weight:bold"> 50.00</TD>
<TD ALIGN="center">12,345</TD>
<TD ALIGN="center">12,000</TD>
<TD ALIGN="center">345</TD>
<TD ALIGN="center" STYLE="font-weight:bold"> 97.21</TD>
<TD ALIGN="center">0</TD>
<TD ALIGN="center">0</TD>
<TD ALIGN="center">0</TD>
<TD ALIGN="center" STYLE="font-weight:bold">  0.00</TD>
</TR>
</TBODY>
</TABLE>
</TR>
</TABLE>
</body>
</html>

)");
    EXPECT_EQ(read_file("CODE_COVERAGE.HTML"),
              R"(<html>
<head>
<title>Vexal&#174; Compilers code-coverage information for p</title>
</head>
<frameset rows="30%, *">
<frame src="CodeCoverage/__CODE_COVERAGE.HTML" scrolling="yes">
<frameset cols="63%, *">
<frame src="CodeCoverage/__C_4.HTML" scrolling="yes">
<frame src="CodeCoverage/__U_4.HTML" scrolling="yes">
<noframes> Your browser does not have frames support</noframes>
</frameset>
<noframes> Your browser doesn't have frames support</noframes>
</frameset>
</html>
)");
}

TEST_F(SummaryPage, FramesFollowTheIndexes) {
    const std::string head = R"(<html>
<head>
<title>Vexal&#174; Compilers code-coverage information</title>
</head>
)";
    const std::string summary = "<frame src=\"CodeCoverage/__CODE_COVERAGE.HTML\" scrolling=\"yes\">\n";
    const std::string tail = "<noframes> Your browser doesn't have frames support</noframes>\n"
                             "</frameset>\n"
                             "</html>\n";
    EXPECT_EQ(root(nullptr, nullptr), head + "<frameset rows=\"100%, *\">\n" + summary + tail);
    EXPECT_EQ(root("__C", nullptr), head + "<frameset rows=\"30%, *\">\n" + summary +
                                        "<frame src=\"CodeCoverage/__C_4.HTML\" scrolling=\"yes\">\n" + tail);
    EXPECT_EQ(root(nullptr, "__U"), head + "<frameset rows=\"30%, *\">\n" + summary +
                                        "<frameset cols=\"100%, *\">\n"
                                        "<frame src=\"CodeCoverage/__U_4.HTML\" scrolling=\"yes\">\n"
                                        "<noframes> Your browser does not have frames support</noframes>\n"
                                        "</frameset>\n" +
                                        tail);
    compWithRef = true;
    EXPECT_NE(root("__C", "__U").find("<frameset cols=\"50%, *\">\n"), std::string::npos);
    EXPECT_NE(root(nullptr, "__U").find("<frameset cols=\"100%, *\">\n"), std::string::npos);
}

TEST_F(SummaryPage, DifferentialWordsAndNoProject) {
    compWithRef = true;
    root(nullptr, nullptr);
    const std::string page = read_file("CodeCoverage/__CODE_COVERAGE.HTML");
    EXPECT_NE(page.find(":#3366ff\">Coverage Summary</h3>\n"), std::string::npos);
    EXPECT_NE(page.find("<TH ALIGN=\"center\">missed</TH>\n"
                        "<TH ALIGN=\"center\">similar</TH>\n"
                        "<TH ALIGN=\"center\">miss%</TH>\n"),
              std::string::npos);
}

TEST_F(SummaryPage, PagesThatCannotBeCreated) {
    block("CODE_COVERAGE.HTML");
    testing::internal::CaptureStderr();
    EXPECT_FALSE(bCreateSummary("p", "Code_Coverage", "__Code_Coverage", nullptr, nullptr, "html"));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Unable to create root html file Code_Coverage!\n");
    EXPECT_TRUE(exists("CodeCoverage/__CODE_COVERAGE.HTML"));

    block("CodeCoverage/__OTHER.HTML");
    testing::internal::CaptureStderr();
    EXPECT_FALSE(bCreateSummary("p", "Other", "__Other", nullptr, nullptr, "html"));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Unable to create root html file __Other!\n");
    EXPECT_FALSE(exists("OTHER.HTML"));
}
