#include "import/function_starts.h"
#include "import/source_outline.h"
#include "tests/tools/scratch.h"

#include <gtest/gtest.h>

#include <string>

/// The head of the function that the compiler puts at the "@" of the text, up to there; "none" without one.
static std::string head(std::string text) {
    const std::size_t place = text.find('@');
    text.erase(place, 1);
    const scratch_directory scratch;
    const source_text source(scratch.put("s.cpp", text));
    const source_outline outline(source);
    const outlined_head* const found = outline.head_of(place, text.size());
    return found ? text.substr(found->begin, place - found->begin) : "none";
}

TEST(SourceOutline, HeadsBeginBehindWhatIsInFront) {
    for (const std::string front : {"",
                                    "int a; ",
                                    "void f() {} ",
                                    "struct s { ",
                                    "#define X int(\n",
                                    "class c : b { public: ",
                                    "class c { Q(int a READ b) public slots: ",
                                    "namespace { ",
                                    "extern \"C\" {\n",
                                    "int f() const; ",
                                    "int a[] = {1, 2}; ",
                                    "/* ( */ // {\n",
                                    "case 1: default: label: ",
                                    "#if A\nint x(\n#else\nint y;\n#endif\n",
                                    "const char* s = R\"({)\"; ",
                                    "struct s { int a = 1'0; } ; ",
                                    "void f() { if (a) { g('{'); } }\n",
                                    "X() = default; ",
                                    "void f();\n#if A\nvoid f() {\n#else\n{\n#endif\n}\n",
                                    "; ; ",
                                    "} "})
        EXPECT_EQ(head(front + "int f(int a) @{ return a; }"), "int f(int a) ") << front;
}

TEST(SourceOutline, WhatBelongsToAHead) {
    for (const std::string whole :
         {"template <class T = s<int>>\nstatic ::std::string\nf(T a)\n",
          "[[nodiscard]] __attribute__((x)) int f() ", "f() : a{1}, b(2),\n#if A\n c{{3}}\n#endif\n",
          "f(int a = s{1}.x) : a_(a) ", "auto f() noexcept(s{}) -> int ", "f()\n#ifdef A\n: a_(1)\n#endif\n",
          "template <class T> requires requires(T t) { t.x(); } void f(T) ",
          "template <class T> requires requires { T(); } && A<T> void f(T) ", "int operator[](int a) ",
          "template <auto A = s{1}> void f() ", "f() try : a(1) ", "int f(a, b) int a; char *b[]; ",
          "int operator()() ", "void* operator new[](size_t a) ",
          "f(int a, // ;\n#if A\n int b\n#else\n int c\n#endif\n) ", "virtual ~", "int (*f(int a))(int) "})
        EXPECT_EQ(head("int x;" + whole + "@{ }"), whole);
    EXPECT_EQ(head("int x; int @f(int a) { }"), "int "); // a name
    EXPECT_EQ(head("int x; f() : a_(@1), b_{[] { if (a) { } return 1; }} { }"), "f() : a_(");
    EXPECT_EQ(head("s() = defaul@t;"), "s() = defaul");
}

TEST(SourceOutline, WhatHasNoHead) {
    for (const std::string text :
         {"int a = f([](int b) @{ return b; });", "auto a = [&, b = x{1}] @{ };", "auto a = @[] { }; ",
          "return a ? [] @{ } : b;", "s v{[] @{ }};", "int x; @{ }", "@", "@MADE(f)", "MADE(@f)\nint a;"})
        EXPECT_EQ(head(text), "none") << text;
}

/// The text from the "else" to the code that it leads to, marked by "@".
static std::string branch(std::string text) {
    const std::size_t place = text.find('@');
    text.erase(place, 1);
    const scratch_directory scratch;
    const source_text source(scratch.put("s.cpp", text));
    const std::optional<std::size_t> word = source_outline(source).else_before(place);
    return word ? text.substr(*word, place - *word) : "none";
}

TEST(SourceOutline, Branches) {
    EXPECT_EQ(branch("if (a) b(); else // x\n@c();"), "else // x\n");
    EXPECT_EQ(branch("if (a) { } else {\n#if A\n /* x */\n @c();"), "else {\n#if A\n /* x */\n ");
    EXPECT_EQ(branch("if (a) { } else\n@{ c(); }"), "else\n");
    EXPECT_EQ(branch("if (a) { } else\n{ @c(); }"), "else\n{ ");
    EXPECT_EQ(branch("else @if (a) b();"), "else ");
    EXPECT_EQ(branch("#else\n@a();"), "none");
    EXPECT_EQ(branch("else_a(); @b();"), "none");
    EXPECT_EQ(branch("else { @} b();"), "none");
    EXPECT_EQ(branch("else { } @b();"), "none");
}

TEST(SourceOutline, DeepAndLongTextsTakeLinearTime) {
    std::string text;
    for (int i = 0; i < 100000; ++i)
        text += "#if A\n{{\n#else\n}}}\n";
    EXPECT_EQ(head(text + "\nint f() @{"), "int f() ");
    EXPECT_EQ(head(std::string(1000000, '{') + std::string(1000000, '(') + "@{"), "none");
}

/// Lines and columns of the starts, with the line for the profile.
static std::string starts(const std::string& text, const std::vector<source_extent>& extents) {
    const scratch_directory scratch;
    const source_text source(scratch.put("s.cpp", text));
    std::string result;
    for (const function_start& start : find_function_starts(source, source_outline(source), extents))
        result += std::to_string(start.position.line) + ":" + std::to_string(start.position.column) + "/" +
                  std::to_string(start.line) + " ";
    return result;
}

TEST(FunctionStarts, HeadsNextToOtherFunctions) {
    // A default argument of g, and g; the heads of one line.
    EXPECT_EQ(starts("void g(int a = [] { return 1; }()) { }", {{{1, 19}, {1, 32}}, {{1, 36}, {1, 39}}}),
              "1:19/1 1:36/1 ");
    EXPECT_EQ(starts("int f() { } int g() { }", {{{1, 9}, {1, 12}}, {{1, 21}, {1, 24}}}), "1:1/1 1:13/1 ");
    // One in another, and instances.
    EXPECT_EQ(starts("int\nf() {\nstruct s {\nint\ng() { } }; }",
                     {{{2, 5}, {5, 13}}, {{5, 5}, {5, 8}}, {{5, 5}, {5, 8}}}),
              "1:1/1 4:1/4 4:1/4 ");
    // Places that the text does not have.
    EXPECT_EQ(starts("int f() {", {{{0, 0}, {0, 0}}, {{1, 0}, {1, 9}}, {{1, 9}, {2, 1}}, {{7, 1}, {8, 1}}}),
              "0:0/0 1:0/1 1:9/1 7:1/7 ");
}

TEST(FunctionStarts, MarkersInFrontOfTheBraceKeepItsLine) {
    EXPECT_EQ(starts("int\nf()\n// x\n{ }", {{{4, 1}, {4, 4}}}), "1:1/4 ");
    EXPECT_EQ(starts("int f() // x\n{ }", {{{2, 1}, {2, 4}}}), "1:1/1 ");
    EXPECT_EQ(starts("int\nf() /* x */ { }", {{{2, 1}, {2, 15}}}), "1:1/2 ");
}
