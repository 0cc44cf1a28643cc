// Reading and ordering the static profile.
#include "coverage/files_of_interest.h"
#include "profile/module_list.h"
#include "tests/tools/scratch.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

/// The list made of a static profile with this text. Its records live on, as in a run.
static COMP* list_of(const std::string& text, int* count = nullptr) {
    const scratch_directory scratch;
    moduleName.clear();
    static std::vector<COMP*>& lists = *new std::vector<COMP*>; // keeps them reachable to the end
    lists.push_back(GetComponentList(scratch.put("p.spi", text).c_str(), count));
    return lists.back();
}

static std::string described(const COMP* head) {
    std::string text;
    for (const COMP* comp = head; comp; comp = comp->next) {
        text += std::string(comp->fileName) + ":" + comp->procName + ":" + std::to_string(comp->line);
        text +=
            (comp->isFirstOfFile ? " first" : "") + std::string(comp->isAmbiguous ? " ambiguous" : "") + "\n";
    }
    return text;
}

TEST(SpiFile, FieldsAndLineEnds) {
    int count = 0;
    const COMP* comp = list_of("a.c x f 12 3 Crest of the line\n \t b.c\ny g -1\t+4\n\nZ", &count);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(described(comp), "a.c:f:12 first\nb.c:g:-1 first\n");
    EXPECT_EQ(comp->blockCount, 3);
    EXPECT_EQ(comp->spiFlag, 'C');
    EXPECT_EQ(comp->next->blockCount, 4);
    EXPECT_EQ(comp->next->spiFlag, 'Z') << "a field may stand on a later line";
}

TEST(SpiFile, VersionHeads) {
    // A head before every record; behind "V" its numbers may stand apart, and the record follows anywhere.
    EXPECT_EQ(described(list_of("V 1 2\n3 4\na.c x f 1 1 C\nV1 9 9 9 a.c x g 2 1 C\n")),
              "a.c:f:1 first\na.c:g:2\n");
    // No heads: a name that begins like one, a wrong version, three numbers only.
    EXPECT_EQ(described(list_of("V1.c x f 1 1 C\n")), "V1.c:f:1 first\n");
    EXPECT_EQ(described(list_of("V2 9 9 9 9 C\n")), "V2:9:9 first\n");
    EXPECT_EQ(described(list_of("V1 2 b 3 4 C\n")), "V1:b:3 first\n");
}

TEST(SpiFile, LongStrings) {
    const std::string name(10000, 'n');
    const COMP* comp = list_of(name + " x " + name + " 1 1 C\n");
    EXPECT_EQ(comp->fileName, name);
    EXPECT_EQ(comp->procName, name);
}

TEST(ModuleList, DuplicatesAndAmbiguousNames) {
    // Sorted by file, display name, routine name. _ZN1AC1Ev and _ZN1AC2Ev are both A::A().
    EXPECT_EQ(described(list_of("b.c x f 5 1 C\n"
                                "a.cpp x _ZN1AC2Ev 3 1 C\n"
                                "a.cpp x _ZN1AC1Ev 3 1 C\n"
                                "a.cpp x _ZN1AD2Ev 7 1 C\n"
                                "a.cpp x _ZN1AD1Ev 8 1 C\n"
                                "a.cpp x _Z0 9 1 C\n"
                                "b.c x f 5 2 C\n")),
              "a.cpp:_ZN1AC1Ev:3 first ambiguous\n"
              "a.cpp:_ZN1AC2Ev:3 ambiguous\n"
              "a.cpp:_ZN1AD1Ev:8\n"
              "a.cpp:_ZN1AD2Ev:7\n"
              "a.cpp:_Z0:9\n"
              "b.c:f:5 first\n");
}

/// A list of routines of the same name on these lines.
static std::string lines_sorted(const std::vector<int>& lines) {
    std::string text, result;
    for (const int line : lines)
        text += "a.c x f " + std::to_string(line) + " 1 C\n";
    for (const COMP* comp = list_of(text); comp; comp = comp->next)
        result += std::to_string(comp->line) + " ";
    return result;
}

TEST(ModuleList, TiesAreDecidedByTheExchanges) {
    // Two equal records change places twice: once to bring the middle (the first) to the front, once at the
    // meeting of the indices.
    EXPECT_EQ(lines_sorted({1, 2}), "2 1 ");
    // The middle goes to the front: 2 1 3; the ends change places: 3 1 2, then the indices meet in the
    // middle: parts (3 1) and (2), and (3 1) becomes (1 3).
    EXPECT_EQ(lines_sorted({1, 2, 3}), "1 3 2 ");
    // 2 1 3 4 -> 4 1 3 2 -> 4 3 1 2 -> parts (4 3)(1 2) -> (3 4)(2 1)
    EXPECT_EQ(lines_sorted({1, 2, 3, 4}), "3 4 2 1 ");
}

TEST(ModuleList, OnlyNeighboursAreDuplicates) {
    EXPECT_EQ(lines_sorted({5, 6, 5}), "5 6 ");
    EXPECT_EQ(lines_sorted({5, 5, 6}), "5 6 5 ") << "the sort puts a record of another line between the two";
}

TEST(ModuleList, OrderByLine) {
    // In the list: e d c b a on the lines below. An equal line goes in front of the one that is there.
    COMP* head = list_of(
        "z.c x a 5 1 C\nz.c x b 3 1 C\nz.c x c 5 1 C\nz.c x d 3 1 C\nz.c x e 4 1 C\nzz.c x f 1 1 C\n");
    order_func(head);
    std::string chain;
    for (const COMP* comp = first_func_line; comp; comp = comp->nextByLine) {
        chain += comp->procName;
        EXPECT_EQ(comp->firstByLine, first_func_line);
    }
    EXPECT_EQ(chain, "dbeca");

    order_func(head->next->next->next->next->next);
    EXPECT_STREQ(first_func_line->procName, "f");
    EXPECT_EQ(first_func_line->nextByLine, nullptr);
}
