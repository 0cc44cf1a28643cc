// Lines of an analysed file: classes, code and counts. The expected lines are typed by hand.
#include "analysis/line_walk.h"

#include <gtest/gtest.h>
#include <string>

namespace {

/// An analysis put together by hand.
class LineWalk : public testing::Test {
  protected:
    void set_text(const std::string& text) {
        text_ = text;
        analysis_.text = text_;
        analysis_.positions = position_table(count_lines(text_) + 1);
    }

    /// A function with blocks at these places; without any it was never called.
    struct block {
        std::uint32_t line;
        std::uint32_t column;
        std::uint64_t count;
    };
    void add_function(std::int32_t line, const std::vector<block>& blocks) {
        source_function function = {};
        function.line = line;
        function.called = !blocks.empty();
        for (const block& b : blocks)
            analysis_.positions.add_block(b.line, b.column, b.count, false, nullptr);
        if (function.called) {
            function.first = {blocks.front().line, blocks.front().column};
            function.last = {blocks.back().line, blocks.back().column};
            analysis_.positions.adjust(function.last.line, function.last.column);
        } else {
            analysis_.positions.add_block(static_cast<std::uint32_t>(line), 1, NEVER_ENTERED, false, nullptr);
        }
        analysis_.functions.push_back(function);
    }

    /// The counts of the lines that hold code, as LINE:COUNT.
    std::string counts() {
        analysis_.positions.sort();
        std::string result;
        for (line_walk walk(analysis_); walk.next();)
            if (walk.holds_code())
                result += std::to_string(walk.line().number) + ":" + std::to_string(walk.count()) + " ";
        return result;
    }

    /// The classes of each line: the one at its start, then OFFSET=CLASS of each stretch.
    std::string classes() {
        analysis_.positions.sort();
        std::string result;
        for (line_walk walk(analysis_); walk.next(); result += '\n') {
            result += std::to_string(walk.line().color);
            for (const line_stretch& stretch : walk.stretches())
                result += " " + std::to_string(stretch.offset) + "=" + std::to_string(stretch.color);
        }
        return result;
    }

    std::string text_;
    source_analysis analysis_;
};

TEST_F(LineWalk, CalledFunction) {
    set_text("#include <stdio.h>\n"   // 1
             "int global = 1;\n"      // 2
             "int f(int a) {\n"       // 3
             "    /* a comment\n"     // 4
             "       { } */ a++;\n"   // 5
             "\n"                     // 6
             "    if (a) // really\n" // 7
             "        a = 2;\n"       // 8
             "#define X {\n"          // 9
             "    // only this\n"     // 10
             "    return a;\n"        // 11
             "}\n"                    // 12
             "int other;\n");         // 13
    add_function(3, {{3, 14, 7}, {5, 16, 7}, {8, 9, 0}, {11, 5, 7}, {12, 1, 0}});
    // The head begins in front of the entry block, whose count it has; the closing brace goes on with the
    // count before.
    EXPECT_EQ(counts(), "3:7 5:7 7:7 8:0 11:7 12:7 ");
    EXPECT_EQ(classes(), "2\n2\n2 13=3\n3\n3 15=3\n3\n3\n3 0=5 8=5\n5\n5\n5 0=3 4=3\n3 0=3\n3\n");
}

TEST_F(LineWalk, LargestCountOfTheLine) {
    set_text(
        "int f(int a) { for (int i = 0; i < a; ++i) a += i; return a; }\n" // blocks inside of other counts
        "int g() {\n"
        "    return 1;\n"
        "}\n");
    add_function(1, {{1, 14, 2}, {1, 44, 30}, {1, 52, 2}, {1, 62, 2}});
    // The code in front of the entry of the second function belongs to none: it does not have the first one's
    // count.
    add_function(2, {{2, 9, 1}, {4, 1, 1}});
    EXPECT_EQ(counts(), "1:30 2:1 3:1 4:1 ");
}

TEST_F(LineWalk, ClosingBracesHaveTheCountOfWhatTheyClose) {
    set_text("int f(int a) {\n"      // 1
             "    while (a) {\n"     // 2
             "        if (a > 1)\n"  // 3
             "            stop();\n" // 4
             "    }\n"               // 5
             "    switch (a) {\n"    // 6
             "    case 1: {\n"       // 7
             "        go();\n"       // 8
             "        break;\n"      // 9
             "    }\n"               // 10: nothing gets here
             "    default:\n"        // 11
             "        none();\n"     // 12
             "    }\n"               // 13
             "    if (a) {\n"        // 14
             "        if (g(a))\n"   // 15
             "            a = 1;\n"  // 16
             "        return 0;\n"   // 17: never, as g does not come back
             "    }\n"               // 18: like its beginning
             "    for (;;) {\n"      // 19
             "        end(a);\n"     // 20
             "        a = 2;\n"      // 21
             "    }\n"               // 22
             "}\n");                 // 23
    add_function(1, {{1, 14, 2},
                     {2, 15, 10},
                     {4, 13, 0},
                     {6, 5, 2},
                     {7, 5, 2},
                     {11, 5, 0},
                     {14, 5, 2},
                     {14, 12, 1},
                     {16, 13, 0},
                     {17, 9, 0},
                     {19, 5, 1},
                     {21, 9, 0},
                     {23, 1, 0}});
    EXPECT_EQ(counts(), "1:2 2:10 3:10 4:0 5:10 6:2 7:2 8:2 9:2 11:0 12:0 13:2 14:2 15:1 16:0 17:0 18:1 "
                        "19:1 20:1 21:0 22:0 23:1 ");
}

TEST_F(LineWalk, BlocksThatALineIsShownIn) {
    set_text("int f(int a) {\n"             // 1
             "    if (a) { return 1; }\n"   // 2: goes on, and one that was not executed
             "    both();\n"                // 3: one of two was executed, and so in the next
             "    go_on();\n"               // 4
             "    a = b ? 1 : 2;\n"         // 5: all of three
             "    run([] { return 3; });\n" // 6: the lambda was never called
             "}\n");                        // 7
    add_function(1, {{1, 14, 2}, {2, 12, 0}, {3, 5, 2}, {5, 5, 2}, {5, 13, 1}, {5, 17, 1}, {7, 1, 0}});
    analysis_.positions.add_block(3, 5, 0, false, nullptr);
    add_function(6, {});
    const auto blocks = [this] {
        analysis_.positions.sort();
        std::string result;
        for (line_walk walk(analysis_); walk.next();)
            result +=
                std::to_string(walk.blocks().executed) + "/" + std::to_string(walk.blocks().total) + " ";
        return result;
    };
    EXPECT_EQ(blocks(), "1/1 1/2 1/2 1/2 3/3 1/2 1/1 ");
    analysis_.no_partial = true;
    EXPECT_EQ(blocks(), "1/1 1/2 2/2 1/1 3/3 1/2 1/1 ");
}

TEST_F(LineWalk, NeverCalledFunctionsEndAtTheirBodies) {
    set_text("struct S {\n"                       // 1
             "    S(int a = f({1}))\n"            // 2
             "        : a_{a}, b_{'{'} {\n"       // 3
             "        use(\"}\", R\"x(}\n"        // 4
             "            { )\" )x\");\n"         // 5
             "    }\n"                            // 6
             "    int a_, b_;\n"                  // 7
             "};\n"                               // 8
             "int declared(int);\n"               // 9
             "int x;\n"                           // 10
             "int g() { return 1'000; } int y;\n" // 11
             "int old(a, b)\n"                    // 12
             "    int a; char b;\n"               // 13
             "{ return a; }\n"                    // 14
             "int open() {\n"                     // 15
             "    if (x) {\n"                     // 16
             "}\n");                              // 17
    for (const int line : {2, 9, 11, 12, 15})
        add_function(line, {});
    EXPECT_EQ(counts(), "2:0 3:0 4:0 5:0 6:0 9:0 11:0 12:0 13:0 14:0 15:0 16:0 17:0 ");
}

TEST_F(LineWalk, LambdasThatWereNeverCalled) {
    set_text("void f() {\n"          // 1
             "    run([](int x) {\n" // 2
             "        use(x);\n"     // 3
             "    });\n"             // 4
             "}\n"                   // 5
             "void g() {\n"          // 6
             "}\n");                 // 7
    add_function(1, {{1, 10, 5}, {5, 1, 0}});
    add_function(2, {});
    add_function(6, {});
    // The call that hands the lambda over was executed; the closing brace goes on with that count.
    EXPECT_EQ(counts(), "1:5 2:5 3:0 4:0 5:5 6:0 7:0 ");
}

TEST_F(LineWalk, FunctionsInsideHaveTheirLinesForThemselves) {
    set_text("void f() {\n"                        // 1
             "    sort(all, [&](int a, int b) {\n" // 2
             "        return x[a] < x[b];\n"       // 3: where an import marks the lambda
             "    });\n"                           // 4
             "    struct S {\n"                    // 5
             "        int g() { return 1; }\n"     // 6
             "        int h() { return 2; }\n"     // 7
             "    };\n"                            // 8
             "}\n");                               // 9
    add_function(1, {{1, 10, 5}, {5, 5, 5}, {9, 1, 0}});
    for (const int line : {3, 6, 7})
        add_function(line, {});
    EXPECT_EQ(counts(), "1:5 2:5 3:0 4:5 5:5 6:0 7:0 8:5 9:5 ");
}

TEST_F(LineWalk, BodiesAreFoundThroughConditionalText) {
    set_text("#define TWO 2 /* a comment {\n"  // 1
             "   that goes on */\n"            // 2
             "void f() {\n"                    // 3
             "#ifdef X\n"                      // 4
             "    if (a &&\n"                  // 5
             "#else\n"                         // 6
             "    if (!a) {\n"                 // 7
             "#endif\n"                        // 8
             "        b) {\n"                  // 9
             "    }\n"                         // 10
             "    switch (c) { case'{': ; }\n" // 11
             "    s = \"\\\r\n"                // 12
             "}\";\n"                          // 13
             "}\n"                             // 14
             "int x;\n"                        // 15
             "void open() {\n"                 // 16
             "    if (a) {\n"                  // 17
             "\n"                              // 18
             "void last() {\n"                 // 19
             "}\n"                             // 20
             "int y;\n");                      // 21
    for (const int line : {3, 16, 19})
        add_function(line, {});
    EXPECT_EQ(counts(), "3:0 5:0 7:0 9:0 10:0 11:0 12:0 13:0 14:0 16:0 17:0 19:0 20:0 ");
}

TEST_F(LineWalk, PositionsBehindTheEndOfALineShowNowhere) {
    set_text("x\nx\n    ");
    add_function(1, {{1, 1, 1}, {1, 3, 0}, {3, 5, 0}});
    // The newline has a column; the end of a text without one has none, not even for the blanks in front of
    // it.
    EXPECT_EQ(classes(), "2 0=3\n3\n3\n");
}

TEST_F(LineWalk, LookAheadEndsAt255Blanks) {
    const std::string blanks(255, ' ');
    set_text(blanks + "x\n" + " " + blanks + "x\n" + blanks.substr(1) + "\n" + blanks);
    add_function(1, {{1, 256, 1}, {2, 257, 0}, {3, 255, 1}, {4, 256, 0}, {4, 257, 0}});
    // In the last line, which has no newline, the blank in front of the end is looked at all the same.
    EXPECT_EQ(classes(), "2 0=3 255=3\n3 256=5\n5 0=3 254=3\n3 0=5\n");
}

} // namespace
