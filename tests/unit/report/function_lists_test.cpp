// Pages of a module: its frameset and its function lists.
#include "report/function_lists.h"

#include "common/output_file.h"
#include "common/text_buffer.h"
#include "coverage/function_table.h"
#include "tests/unit/report/report_fixture.h"

#include <array>
#include <vector>

class FunctionLists : public ReportTest {
  protected:
    /// Makes these the functions of the current module.
    void set_table(const std::vector<func>& covered, const std::vector<func>& uncovered) {
        covered_ = covered;
        uncovered_ = uncovered;
        for (func& function : covered_)
            coveredList_.push_back(&function);
        for (func& function : uncovered_)
            uncoveredList_.push_back(&function);
        fileFuncsCovered = coveredList_.data();
        numFileFuncsCovered = static_cast<std::int32_t>(covered_.size());
        fileFuncsUncovered = uncoveredList_.data();
        numFileFuncsUncovered = static_cast<std::int32_t>(uncovered_.size());
    }

    void TearDown() override {
        fileFuncsCovered = fileFuncsUncovered = nullptr;
        numFileFuncsCovered = numFileFuncsUncovered = 0;
        ReportTest::TearDown();
    }

    /// Numbers of the pages that the list has.
    static std::string pages(const std::string& list) {
        std::string numbers;
        for (char number = '0'; number <= '9'; ++number)
            if (exists("CodeCoverage/S_A_C_" + list + "_" + number + ".HTML"))
                numbers += number;
        return numbers;
    }

    static std::string row(const std::string& name) {
        std::FILE* stream = open_output("row", "wt");
        {
            text_buffer page(stream);
            printHTML(page, name.c_str());
        }
        close_output(stream);
        return read_file("row");
    }

    std::vector<func> covered_, uncovered_;
    std::vector<func*> coveredList_, uncoveredList_;
};

TEST_F(FunctionLists, PageOfCoveredFunctions) {
    set_table({{"_main", 6, 4, 3, 75.0}, {"__x<int>", 5, 1, 1, 100.0}}, {});
    ASSERT_TRUE(bOutputFunctionCoverageFor(true, 1, "s/a.c", "html", fileFuncsCovered, 2));
    EXPECT_EQ(read_file("CodeCoverage/S_A_C_CVRDFNCS_4.HTML"),
              R"(<html>
<head>
<title>Covered Functions of s/a.c</title>
<base target="src_view">
</head>
<body bgcolor="FFFFFF">
<h5 ALIGN="left">covered functions</h5>
<TABLE BORDER=0 CELLPADDING=3 CELLSPACING=0 STYLE="color:black;font-weight:normal;font-family:Verdana,Arial;font-size:x-small">
<thead>
<TH ALIGN="left" COLSPAN="2"><a target="_self" title="sort based on coverage" href="S_A_C_CVRDFNCS_5.HTML">coverage</a></TH>
<TH ALIGN="left"><a target="_self" title="sort based on function name" href="S_A_C_CVRDFNCS_2.HTML">function</a></TH>
</thead>
<tbody>
<TR>
<td align="right">100.00</td><td align="center">(1/1)</td>
<td align="left"><a href="S_A_C_SRC.HTML#l5" title="Line 5">_x&lt;int&gt;</a></td>
</tr>
<TR>
<td align="right"> 75.00</td><td align="center">(3/4)</td>
<td align="left"><a href="S_A_C_SRC.HTML#l1" title="Line 6">main</a></td>
</tr>
</tbody>
</table>
</body>
</html>
)");
}

TEST_F(FunctionLists, PageOfUncoveredFunctions) {
    set_table({}, {{"f@8", 40, 1000, 0, 0.0}});
    ASSERT_TRUE(bOutputFunctionCoverageFor(false, -3, "a.c", "htm", fileFuncsUncovered, 1));
    const std::string page = read_file("CodeCoverage/A_C_UNCVRDFNCS_0.HTM");
    EXPECT_EQ(part(page, "<title>", "<title>"), "no such part");
    EXPECT_EQ(part(page, "<h5", "</html>"),
              R"(<h5 ALIGN="left">uncovered functions</h5>
<TABLE BORDER=0 CELLPADDING=3 CELLSPACING=0 STYLE="color:black;font-weight:normal;font-family:Verdana,Arial;font-size:x-small">
<thead>
<TH ALIGN="center"><a target="_self" title="sort based on blocks" href="A_C_UNCVRDFNCS_6.HTM">blocks</a></TH>
<TH ALIGN="left"><a target="_self" title="sort based on function name" href="A_C_UNCVRDFNCS_4.HTM">function</a></TH>
</thead>
<tbody>
<TR>
<td align="center">1000</td>
<td align="left"><a href="A_C_SRC.HTM#l35" title="Line 40">f</a></td>
</tr>
</tbody>
</table>
</body>
</html>
)");

    compWithRef = true;
    ASSERT_TRUE(bOutputFunctionCoverageFor(false, -2, "a.c", "htm", fileFuncsUncovered, 1));
    EXPECT_EQ(part(read_file("CodeCoverage/A_C_UNCVRDFNCS_1.HTM"), "<thead>", "<td align=\"left\">"),
              R"(<thead>
<TH ALIGN="left" COLSPAN="2"><a target="_self" title="sort based on miss rate" href="A_C_UNCVRDFNCS_5.HTM">miss rate</a></TH>
<TH ALIGN="left"><a target="_self" title="sort based on function name" href="A_C_UNCVRDFNCS_4.HTM">function</a></TH>
</thead>
<tbody>
<TR>
<td align="right">  0.00</td><td align="center">(0/1000)</td>
<td align="left"><a href="A_C_SRC.HTM#l35" title="Line 40">f</a></td>
)");
}

TEST_F(FunctionLists, TitlesLeadToTheOtherOrders) {
    const func function = {"f", 1, 1, 1, 100.0};
    set_table({function}, {function});
    struct expected {
        int order;
        char function, coverage, blocks;
    };
    for (const expected& want :
         {expected{-3, '4', '1', '6'}, expected{-2, '4', '5', '0'}, expected{-1, '4', '5', '6'},
          expected{1, '2', '5', '6'}, expected{2, '4', '1', '6'}, expected{3, '4', '5', '0'}}) {
        const char number = static_cast<char>('3' + want.order);
        bOutputFunctionCoverageFor(true, want.order, "s/a.c", "html", fileFuncsCovered, 1);
        bOutputFunctionCoverageFor(false, want.order, "s/a.c", "html", fileFuncsUncovered, 1);
        const std::string covered = read_file(std::string("CodeCoverage/S_A_C_CVRDFNCS_") + number + ".HTML");
        const std::string uncovered =
            read_file(std::string("CodeCoverage/S_A_C_UNCVRDFNCS_") + number + ".HTML");
        EXPECT_NE(covered.find(std::string("CVRDFNCS_") + want.coverage + ".HTML\">coverage"),
                  std::string::npos);
        EXPECT_NE(covered.find(std::string("CVRDFNCS_") + want.function + ".HTML\">function"),
                  std::string::npos);
        EXPECT_NE(uncovered.find(std::string("CVRDFNCS_") + want.blocks + ".HTML\">blocks"),
                  std::string::npos);
    }
    EXPECT_EXIT(bOutputFunctionCoverageFor(true, 4, "a.c", "html", fileFuncsCovered, 1),
                testing::ExitedWithCode(1), "Invalid sorting option 4\n");
}

TEST_F(FunctionLists, FramesetOfBothLists) {
    const func function = {"f", 1, 1, 1, 100.0};
    set_table({function}, {function});
    ASSERT_TRUE(bOutputFunctionCoverage("s/a.c", "html"));
    EXPECT_EQ(read_file("CodeCoverage/S_A_C.HTML"),
              R"(<html>
<head>
<title>Vexal&#174; Compilers code-coverage information for s/a.c</title>
</head>
<frameset cols="25%, *">
<frameset rows="10%, 40%, *">
<frame src="__TOOLBAR.HTML" scrolling="no">
<frame src="S_A_C_UNCVRDFNCS_4.HTML" scrolling="yes">
<frame src="S_A_C_CVRDFNCS_4.HTML" scrolling="yes">
<noframes> Your browser does not have frames support</noframes>
</frameset>
<frame name="src_view" src="S_A_C_SRC.HTML" scrolling="yes">
<noframes> Your browser doesn't have frames support</noframes>
</frameset>
</html>
)");
    EXPECT_EQ(pages("CVRDFNCS"), "1245");
    EXPECT_EQ(pages("UNCVRDFNCS"), "0246");
}

TEST_F(FunctionLists, FramesetOfOneListOrNone) {
    const func function = {"f", 1, 1, 0, 0.0};
    set_table({}, {function});
    compWithRef = true;
    ASSERT_TRUE(bOutputFunctionCoverage("s/a.c", "html"));
    EXPECT_EQ(pages("UNCVRDFNCS"), "1245") << "differential mode sorts by miss rate instead of blocks";
    EXPECT_EQ(pages("CVRDFNCS"), "");
    EXPECT_EQ(part(read_file("CodeCoverage/S_A_C.HTML"), "<frameset rows", "<noframes>"),
              "<frameset rows=\"10%, *\">\n"
              "<frame src=\"__TOOLBAR.HTML\" scrolling=\"no\">\n"
              "<frame src=\"S_A_C_UNCVRDFNCS_4.HTML\" scrolling=\"yes\">\n"
              "<noframes> Your browser does not have frames support</noframes>\n");

    numFileFuncsUncovered = 0;
    ASSERT_TRUE(bOutputFunctionCoverage("s/b.c", "html"));
    EXPECT_EQ(part(read_file("CodeCoverage/S_B_C.HTML"), "<frameset rows", "<noframes>"),
              "<frameset rows=\"100%, *\">\n"
              "<frame src=\"__TOOLBAR.HTML\" scrolling=\"no\">\n"
              "<noframes> Your browser does not have frames support</noframes>\n");
}

TEST_F(FunctionLists, PagesThatCannotBeCreated) {
    const func function = {"f", 1, 1, 1, 100.0};
    set_table({function}, {function});
    block("CodeCoverage/S_A_C_CVRDFNCS_4.HTML");
    testing::internal::CaptureStderr();
    EXPECT_FALSE(bOutputFunctionCoverage("s/a.c", "html"));
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Cannot open CodeCoverage/S_A_C_CVRDFNCS_4.HTML for output!\n");
    EXPECT_EQ(pages("CVRDFNCS") + pages("UNCVRDFNCS"), "12450246") << "the others are attempted";
    EXPECT_FALSE(exists("CodeCoverage/S_A_C.HTML"));

    block("CodeCoverage/S_B_C.HTML");
    testing::internal::CaptureStderr();
    EXPECT_FALSE(bOutputFunctionCoverage("s/b.c", "html"));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Unable to create root html file s/b.c!\n");
}

TEST_F(FunctionLists, NamesAsHtml) {
    EXPECT_EQ(row("operator<"), "operator&lt;");
    EXPECT_EQ(row("a&b"), "a&b");
    EXPECT_EQ(row("f@8"), "f");
    EXPECT_EQ(row("f@"), "f");
    EXPECT_EQ(row("a@8b"), "a8b");
    EXPECT_EQ(row("a@8@@12"), "a8") << "only the last digits run to the end";
    EXPECT_EQ(row("@1>"), "1&gt;");
    EXPECT_EQ(row(""), "");
}
