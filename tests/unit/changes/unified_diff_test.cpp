// Diffs as git and others write them. A diff stands beside what is read from it: for each file the kind of
// its change, its name and its lines, or what is wrong.
#include "changes/unified_diff.h"

#include <gtest/gtest.h>
#include <string>

namespace {

struct diff_case {
    const char* what;
    std::string diff;
    std::string expected;
    int strip = kDetectPrefix;
};

std::string shown(const std::vector<changed_file>& files) {
    static const char* const kinds[] = {"modified", "added", "deleted", "renamed", "copied"};
    std::string text;
    for (const changed_file& file : files) {
        text += kinds[static_cast<int>(file.change)];
        text += file.binary ? " binary " : " ";
        text += (file.old_name.empty() ? "" : file.old_name + " => ") + file.name;
        for (const line_range& range : file.lines)
            text += " " + std::to_string(range.first) + "-" + std::to_string(range.last);
        text += "\n";
    }
    return text;
}

std::string read(const diff_case& test, std::size_t piece_size) {
    unified_diff_reader reader(test.strip);
    for (std::size_t at = 0; at < test.diff.size(); at += piece_size)
        if (!reader.feed(std::string_view(test.diff).substr(at, piece_size)))
            return reader.fault();
    return reader.finish() ? shown(reader.take_files()) : reader.fault();
}

void check(const std::vector<diff_case>& tests) {
    for (const diff_case& test : tests) {
        EXPECT_EQ(read(test, test.diff.size() + 1), test.expected) << test.what;
        EXPECT_EQ(read(test, 1), test.expected) << test.what << ", byte by byte";
    }
}

std::string git(const std::string& old_name, const std::string& new_name) {
    return "diff --git " + old_name + " " + new_name + "\nindex 8baef1b..1c2d3e4 100644\n--- " + old_name +
           "\n+++ " + new_name + "\n";
}

const std::string kHunk = "@@ -1 +1,2 @@\n context\n+new\n";

TEST(UnifiedDiff, Lines) {
    check({
        {"context, several hunks, neighbours",
         git("a/x.c", "b/x.c") +
             "@@ -3,5 +3,6 @@ int f(int a)\n one\n-two\n+TWO\n+2\n three\n+3\n-\n four\n"
             "@@ -20,0 +22,2 @@\n+++ x;\n+\n@@ -30 +33,0 @@ y\n--- z;\n@@ -40 +42 @@\n-a\n+b\n",
         "modified x.c 4-5 7-7 22-23 42-42\n"},
        {"no newline at the end, on both sides",
         git("a/x", "b/x") +
             "@@ -1 +1 @@\n-old\n\\ No newline at end of file\n+new\n\\ Kein Zeilenumbruch\n" +
             git("a/y", "b/y") + kHunk,
         "modified x 1-1\nmodified y 2-2\n"},
        {"lines that end in CRLF, an empty line without its blank",
         "diff --git a/x b/x\r\n--- a/x\r\n+++ b/x\r\n@@ -1,3 +1,4 @@\r\n\r\n\n+a\r\n \r\n",
         "modified x 3-3\n"},
        {"nothing", "", ""},
        {"only white space", "\n \t\r\n", ""},
        {"the last line of all", git("a/x", "b/x") + "@@ -2147483646,0 +2147483647 @@\n+x",
         "modified x 2147483647-2147483647\n"},
    });
}

TEST(UnifiedDiff, KindsOfChanges) {
    const std::string created = "@@ -0,0 +1,2 @@\n+a\n+b\n";
    check({
        {"new and deleted files, empty ones, too",
         "diff --git a/n.c b/n.c\nnew file mode 100644\nindex 0000000..8baef1b\n--- /dev/null\n+++ b/n.c\n" +
             created +
             "diff --git a/e.c b/e.c\nnew file mode 100644\nindex 0000000..e69de29\n"
             "diff --git a/d.c b/d.c\ndeleted file mode 100644\nindex 8baef1b..0000000\n--- a/d.c\n+++ "
             "/dev/null\n"
             "@@ -1 +0,0 @@\n-a\n",
         "added n.c 1-2\nadded e.c\ndeleted d.c\n"},
        {"renames with and without changes, copies",
         "diff --git a/old.c b/dir/new.c\nsimilarity index 90%\nrename from old.c\nrename to dir/new.c\n"
         "index 1..2 100644\n--- a/old.c\n+++ b/dir/new.c\n" +
             kHunk +
             "diff --git a/a/x.c b/b/x.c\nsimilarity index 100%\nrename from a/x.c\nrename to b/x.c\n"
             "diff --git a/y.c b/z.c\nsimilarity index 100%\ncopy from y.c\ncopy to z.c\n",
         "renamed old.c => dir/new.c 2-2\nrenamed a/x.c => b/x.c\ncopied y.c => z.c\n"},
        {"modes and binary files",
         "diff --git a/run b/run\nold mode 100644\nnew mode 100755\n"
         "diff --git a/my run b/my run\nold mode 100644\nnew mode 100755\n"
         "diff --git a/p.png b/p.png\nindex 1..2 100644\nBinary files a/p.png and b/p.png differ\n"
         "diff --git a/q.png b/q.png\nindex 1..2 100644\nGIT binary patch\ndelta 14\nVcmZ+y=ZfZ\n\ndelta "
         "10\nZcmZ\n\n",
         "modified run\nmodified my run\nmodified binary p.png\nmodified binary q.png\n"},
        {"a file that becomes a link",
         "diff --git a/x b/x\ndeleted file mode 100644\nindex 1..0\n--- a/x\n+++ /dev/null\n@@ -1 +0,0 "
         "@@\n-a\n"
         "diff --git a/x b/x\nnew file mode 120000\nindex 0..2\n--- /dev/null\n+++ b/x\n@@ -0,0 +1 @@\n+y\n"
         "\\ No newline at end of file\n",
         "deleted x\nadded x 1-1\n"},
        {"a mail, and text of git log around the files",
         "From 1234 Mon Sep 17 00:00:00 2001\nSubject: x\n\n--- a lonely line\ntext\n---\n x.c | 2 +-\n\n" +
             git("a/x.c", "b/x.c") + kHunk + "-- \n2.39.5\n\ncommit 1234\n\n    rename to\n+ text\n" +
             git("a/y.c", "b/y.c") + kHunk + "Submodule sub 1..2:\n  > text\n",
         "modified x.c 2-2\nmodified y.c 2-2\n"},
        {"of other programs",
         "Index: src/x.c\n===\n--- src/x.c\t(revision 1)\n+++ src/x.c\t(working copy)\n" + kHunk +
             "diff -ru old/y.c new/y.c\n--- old/y.c\t2024-01-01\n+++ new/y.c\t2024-01-02\n" + kHunk +
             "Only in new: z\n--- x.c.orig\t1\n+++ x.c\t2\n" + kHunk +
             "--- /dev/null\t1\n+++ b/n.c\t2\n@@ -0,0 +1 @@\n+a\n",
         "modified src/x.c 2-2\nmodified y.c 2-2\nmodified x.c 2-2\nadded n.c 1-1\n"},
    });
}

TEST(UnifiedDiff, Names) {
    const std::string added = "--- /dev/null\n+++ ";
    check({
        {"prefixes: none, short ones, own ones, that of a folder",
         git("a/x.c", "a/x.c") + kHunk + git("i/y.c", "w/y.c") + kHunk + git("from/z.c", "into/z.c") + kHunk +
             git("a/b/v.c", "b/b/v.c") + kHunk + git("ca/u.c", "da/u.c") + kHunk + git("old-t.c", "new-t.c") +
             kHunk,
         "modified a/x.c 2-2\nmodified y.c 2-2\nmodified z.c 2-2\nmodified b/v.c 2-2\nmodified u.c 2-2\n"
         "modified new-t.c 2-2\n"},
        {"new files without prefix, and with one of their own",
         "diff --git b/n.c b/n.c\nnew file mode 100644\n" + added + "b/n.c\n@@ -0,0 +1 @@\n+\n" +
             "diff --git c/m.c w/m.c\nnew file mode 100644\n" + added + "w/m.c\n@@ -0,0 +1 @@\n+\n",
         "added b/n.c 1-1\nadded m.c 1-1\n"},
        {"quotes, octal bytes, blanks",
         git(R"("a/f\303\266 o\t\"\\.c")", R"("b/f\303\266 o\t\"\\.c")") + kHunk +
             "diff --git a/my file.c b/my file.c\n--- a/my file.c\t\n+++ b/my file.c\t\n" + kHunk +
             "diff --git a/x \"y\" \"b/\\001\"\nsimilarity index 100%\nrename from x\nrename to \"\\001\"\n"
             "diff --git \"a/\\002\" \"b/\\002\"\nold mode 1\nnew mode 2\n"
             "diff --git \"a/\\003\" b/z\nsimilarity index 100%\ncopy from \"\\003\"\ncopy to z\n",
         "modified f\xc3\xb6 o\t\"\\.c 2-2\nmodified my file.c 2-2\nrenamed x => \1\nmodified \2\ncopied \3 "
         "=> z\n"},
        {"a name in an encoding of its own, not quoted", git("a/\xf6.c", "b/\xf6.c") + kHunk,
         "modified \xf6.c 2-2\n"},
        {"folders to strip", git("a/x/y.c", "b/x/y.c") + kHunk, "modified y.c 2-2\n", 2},
        {"nothing to strip",
         git("a/x/y.c", "b/x/y.c") + kHunk +
             "diff --git a/o b/n\nsimilarity index 100%\nrename from s/o\nrename to s/n\n",
         "modified b/x/y.c 2-2\nrenamed s/o => s/n\n", 0},
        {"folders to strip of what git gives without a prefix",
         "diff --git a/s/o b/s/n\nsimilarity index 100%\nrename from s/o\nrename to s/n\n",
         "renamed o => n\n", 2},
        {"more folders than there are", git("a/y.c", "b/y.c") + kHunk,
         ", line 7: a name has fewer than 2 folders that could be stripped; give a smaller -strip", 2},
    });
}

TEST(UnifiedDiff, Damaged) {
    const std::string head = git("a/x", "b/x");
    const std::string counts = ": the hunk does not hold the lines that its head counts";
    const std::string damaged = ", line 5: the head of a hunk is damaged";
    const std::string merge = ": this is a diff of a merge against several parents, which cannot be used; "
                              "name the two commits to compare";
    check({
        {"no diff", "fatal: bad revision 'main'\n", " is no unified diff (made with: git diff, diff -u)"},
        {"cut in a hunk", head + "@@ -1 +1,3 @@\n a\n+b\n",
         ", line 7: the diff ends in the middle of a hunk"},
        {"cut in front of the hunks", head, ", line 4: the changes of a file are missing"},
        {"cut behind the index", "diff --git a/x b/x\nindex 1..2 100644\n",
         ", line 2: the changes of a file are missing"},
        {"cut between the names", "diff --git a/x b/x\n--- a/x\n",
         ", line 2: a line \"---\" comes without its \"+++\""},
        {"half of the names", "diff --git a/x b/x\n--- a/x\n@@ -1 +1 @@\n",
         ", line 3: a line \"---\" comes without its \"+++\""},
        {"fewer lines than counted", head + "@@ -1,2 +1,3 @@\n a\n+b\n" + head, ", line 8" + counts},
        {"more lines than counted", head + kHunk + "+b\n",
         ", line 8: the hunk holds more lines than its head counts"},
        {"more lines of the old side", head + "@@ -1 +1,2 @@\n-a\n-b\n", ", line 7" + counts},
        {"more lines behind a remark", head + kHunk + "\\ No newline\n b\n",
         ", line 9: the hunk holds more lines than its head counts"},
        {"no plus", head + "@@ -1 1 @@\n", damaged},
        {"no end", head + "@@ -1 +1\n", damaged},
        {"no number", head + "@@ -1 +x @@\n", damaged},
        {"a line 0", head + "@@ -1 +0 @@\n", damaged},
        {"a line that cannot be", head + "@@ -1 +2147483648 @@\n", damaged},
        {"lines behind the last one", head + "@@ -1 +2147483647,2 @@\n", damaged},
        {"a number beyond 32 bits", head + "@@ -1 +1,4294967297 @@\n", damaged},
        {"hunks that overlap", head + "@@ -1 +1,2 @@\n a\n+b\n@@ -9 +2 @@\n",
         ", line 8: the hunks of a file are not in order"},
        {"a hunk alone", "@@ -1 +1 @@\n", ", line 1: a hunk comes without the name of its file"},
        {"damaged quotes", "diff --git a/x b/x\n--- \"a/x\n+++ b/x\n",
         ", line 3: the quotes of a file's name are damaged"},
        {"an escape that cannot be", "--- a/x\n+++ \"b/\\400\"\n",
         ", line 2: the quotes of a file's name are damaged"},
        {"no file", "--- /dev/null\n+++ /dev/null\n", ", line 2: a file has no name"},
        {"a merge", "diff --cc x\nindex 1,2..3\n--- a/x\n+++ b/x\n@@@ -1,1 -1,1 +1,1 @@@\n",
         ", line 1" + merge},
        {"a hunk of a merge", head + "@@@ -1 -1 +1 @@@\n", ", line 5" + merge},
        {"colours", "\x1b[1mdiff --git a/x b/x\x1b[m\n",
         ", line 1: this diff is coloured (git diff --no-color writes one that is not)"},
        {"two commits", head + kHunk + head + kHunk,
         ", line 14: \"x\" comes twice, as in diffs of several commits in a row; make one of all of them"},
        {"a line without end", "--- " + std::string(1 << 17, 'x'), ", line 1: a line is longer than can be"},
    });
}

TEST(UnifiedDiff, LongLinesOfHunks) {
    const std::string line = "+" + std::string(1 << 18, 'x') + "\n";
    check({{"a long line", git("a/x", "b/x") + "@@ -0,0 +1,2 @@\n" + line + line, "modified x 1-2\n"}});
}

} // namespace
