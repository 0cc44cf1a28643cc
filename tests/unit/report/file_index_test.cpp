// Index pages of covered and uncovered files.
#include "report/file_index.h"

#include "coverage/coverage_list.h"
#include "tests/unit/report/report_fixture.h"

class FileIndex : public ReportTest {
  protected:
    FileIndex() {
        files_[0] = {nullptr, paths_[0], 1234, 1000, 5000000, 2500000, FILE_COVERED, 81.037, 50.0};
        files_[1] = {nullptr, paths_[1], 2, 2, 9, 9, FILE_COVERED, 100.0, 100.0};
    }

    /// Numbers of the pages that an index has.
    static std::string pages(const std::string& index) {
        std::string numbers;
        for (char number = '0'; number <= '9'; ++number)
            if (exists("CodeCoverage/" + index + "_" + number + ".HTML"))
                numbers += number;
        return numbers;
    }

    char paths_[2][8] = {"s/b.c", "s/t/a.c"};
    filename_list_node files_[2];
    filename_list_node* list_[2] = {&files_[0], &files_[1]};
    char owner_[8] = "Someone", address_[8] = "so@me", *oldOwner_ = g_lpszMailName,
         *oldAddress_ = g_lpszMailAddr;

    void SetUp() override {
        ReportTest::SetUp();
        g_lpszMailName = owner_;
        g_lpszMailAddr = address_;
    }
    void TearDown() override {
        g_lpszMailName = oldOwner_;
        g_lpszMailAddr = oldAddress_;
        ReportTest::TearDown();
    }
};

TEST_F(FileIndex, CoveredPage) {
    ASSERT_TRUE(bCreateCovProfMain("__Covered", "html", "the project", 2, list_));
    EXPECT_EQ(pages("__COVERED"), "012456");
    EXPECT_EQ(
        read_file("CodeCoverage/__COVERED_4.HTML"),
        R"(<html>
<head>
<title>Vexal&#174; Compilers code-coverage information for the project</title>
<base target="_parent">
</head>

<body bgcolor="FFFFFF">

<h4 ALIGN="center" STYLE="font-family:Arial,Helvetica;color:#3366ff">Covered Files in the project</h4>
<ol>
)" + std::string(kDataTableStart) +
            R"(<TH ALIGN="left" ROWSPAN="2"><a target="_self" title="sort based on file name" href="__COVERED_2.HTML">Name</a></TH>
<TH ALIGN="center" COLSPAN="3">Functions</TH>
<TH ALIGN="center" COLSPAN="3">Blocks</TH>
</TR>
<TR BGCOLOR="#F0F0F0">
<TH ALIGN="center">total</TH>
<TH ALIGN="center">cvrd</TH>
<TH ALIGN="center"><a target="_self" title="sort based on function coverage%" href="__COVERED_5.HTML">cvrg%</a></TH>
<TH ALIGN="center">total</TH>
<TH ALIGN="center">cvrd</TH>
<TH ALIGN="center"><a target="_self" title="sort based on block coverage%" href="__COVERED_6.HTML">cvrg%</a></TH>
</TR>
</THEAD>
<TBODY>
<TR ID=DataRow STYLE="color:black;font-weight:normal" BGCOLOR="#FFFFFF">
<TD ALIGN="left"><a href="S_T_A_C.HTML" title="s/t/a.c">a.c</a></TD>
<TD ALIGN="right">2</TD>
<TD ALIGN="right">2</TD>
<TD ALIGN="right">100.00</TD>
<TD ALIGN="right">9</TD>
<TD ALIGN="right">9</TD>
<TD ALIGN="right">100.00</TD>
</TR>
<TR ID=DataRow STYLE="color:black;font-weight:normal" BGCOLOR="#FFFFFF">
<TD ALIGN="left"><a href="S_B_C.HTML" title="s/b.c">b.c</a></TD>
<TD ALIGN="right">1,234</TD>
<TD ALIGN="right">1,000</TD>
<TD ALIGN="right"> 81.04</TD>
<TD ALIGN="right">5,000,000</TD>
<TD ALIGN="right">2,500,000</TD>
<TD ALIGN="right"> 50.00</TD>
</TR>
</TBODY>
</TABLE>
</TR>
</TABLE>
</ol>
<hr size=1 noshade>
)" + generated_by("width=\"100%\" ", "<td width=\"50%\">") +
            R"(<table border=0 cellpadding=3 cellspacing=0 width="50%">
<tr><a>Web-Page Owner: <a href="mailto:so@me">Someone</a></tr>
</table>
</td>
</table>
</body>
</html>

)");
}

TEST_F(FileIndex, UncoveredPageHasNoCoverage) {
    ASSERT_TRUE(bCreateUnCovProfMain("__Un", "html", nullptr, 2, list_));
    EXPECT_EQ(pages("__UN"), "24");
    const std::string page = read_file("CodeCoverage/__UN_2.HTML");
    EXPECT_NE(page.find("<title>Vexal&#174; Compilers code-coverage information</title>\n"),
              std::string::npos);
    EXPECT_NE(page.find(":#3366ff\">Uncovered Files</h4>\n"), std::string::npos);
    EXPECT_EQ(
        part(page, "<TH ALIGN=\"left\"", "</TR>\n<TR ID"),
        R"(<TH ALIGN="left" ROWSPAN="2"><a target="_self" title="sort based on file name" href="__UN_4.HTML">Name</a></TH>
<TH ALIGN="center" COLSPAN="1">Functions</TH>
<TH ALIGN="center" COLSPAN="1">Blocks</TH>
</TR>
<TR BGCOLOR="#F0F0F0">
<TH ALIGN="center">total</TH>
<TH ALIGN="center">total</TH>
</TR>
</THEAD>
<TBODY>
<TR ID=DataRow STYLE="color:black;font-weight:normal" BGCOLOR="#FFFFFF">
<TD ALIGN="left"><a href="S_B_C.HTML" title="s/b.c">b.c</a></TD>
<TD ALIGN="right">1,234</TD>
<TD ALIGN="right">5,000,000</TD>
</TR>
)");
}

TEST_F(FileIndex, DifferentialPage) {
    compWithRef = true;
    ASSERT_TRUE(bCreateUnCovProfMain("__Un", "html", nullptr, 2, list_));
    EXPECT_EQ(pages("__UN"), "012456");
    EXPECT_EQ(
        part(read_file("CodeCoverage/__UN_0.HTML"), "<TH ALIGN=\"left\"", "<TD ALIGN=\"left\">"),
        R"(<TH ALIGN="left" ROWSPAN="2"><a target="_self" title="sort based on file name" href="__UN_4.HTML">Name</a></TH>
<TH ALIGN="center" COLSPAN="3">Functions</TH>
<TH ALIGN="center" COLSPAN="3">Blocks</TH>
</TR>
<TR BGCOLOR="#F0F0F0">
<TH ALIGN="center">total</TH>
<TH ALIGN="center">missed</TH>
<TH ALIGN="center"><a target="_self" title="sort based on miss rate%" href="__UN_1.HTML">miss%</a></TH>
<TH ALIGN="center">total</TH>
<TH ALIGN="center">missed</TH>
<TH ALIGN="center"><a target="_self" title="sort based on block coverage%" href="__UN_6.HTML">miss%</a></TH>
</TR>
</THEAD>
<TBODY>
<TR ID=DataRow STYLE="color:black;font-weight:normal" BGCOLOR="#FFFFFF">
<TD ALIGN="left"><a href="S_T_A_C.HTML" title="s/t/a.c">a.c</a></TD>
)");
}

TEST_F(FileIndex, TitlesLeadToTheOtherOrders) {
    ASSERT_TRUE(bCreateCovProfMain("i", "html", nullptr, 1, list_));
    const char* links[7] = {"416", "450", "456", nullptr, "256", "416", "450"}; // name, functions, blocks
    for (int number = 0; number <= 6; ++number) {
        if (!links[number])
            continue;
        const std::string page = read_file("CodeCoverage/I_" + std::to_string(number) + ".HTML");
        const std::string found = {page[page.find(".HTML\">Name") - 1], page[page.find(".HTML\">cvrg") - 1],
                                   page[page.rfind(".HTML\">cvrg") - 1]};
        EXPECT_EQ(found, links[number]) << "page " << number;
    }
}

TEST_F(FileIndex, PagesThatCannotBeCreated) {
    block("CodeCoverage/__COV_4.HTML");
    block("CodeCoverage/__COV_1.HTML");
    testing::internal::CaptureStderr();
    EXPECT_FALSE(bCreateCovProfMain("__Cov", "html", nullptr, 2, list_));
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Unable to create root html file __Cov!\nUnable to create root html file __Cov!\n");
    EXPECT_EQ(pages("__COV"), "012456") << "the others are attempted";
    EXPECT_EXIT(bCreateCov(true, -4, "i", "html", nullptr, 2, list_), testing::ExitedWithCode(1),
                "Invalid sorting option -4\n");
    EXPECT_EXIT(bCreateCov(true, 0, "i", "html", nullptr, 2, list_), testing::ExitedWithCode(1),
                "Internal error: invalid sort oder: 0\n");
    EXPECT_TRUE(exists("CodeCoverage/I_3.HTML")) << "the page of the order was begun";
}
