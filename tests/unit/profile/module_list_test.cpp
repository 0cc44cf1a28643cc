// Ordering the static profile: what depends on how the sort exchanges its records.
#include "profile/module_list.h"
#include "tests/tools/product.h"
#include "tests/tools/scratch.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

/// The list made of a static profile with this text: its files, and the routines as NAME@LINE, with an
/// asterisk behind an ambiguous one.
static std::string list_of(const std::string& text) {
    const scratch_directory scratch;
    const std::string name = scratch.put("p.spi", text);
    std::string list;
    run_product([&] {
        module_list comps;
        for (const COMP* comp = GetComponentList(name.c_str(), nullptr, nullptr, comps); comp;
             comp = comp->next) {
            list += comp->isFirstOfFile ? std::string(comp->fileName) + ": " : "";
            list += std::string(comp->procName) + "@" + std::to_string(comp->line) +
                    (comp->isAmbiguous ? "* " : " ");
        }
    });
    return list;
}

/// The list of routines of one name on these lines.
static std::string lines_sorted(const std::vector<int>& lines) {
    std::string text;
    for (const int line : lines)
        text += "a.c x f " + std::to_string(line) + " 1 C\n";
    return list_of(text);
}

TEST(ModuleList, DuplicatesAndAmbiguousNames) {
    // Sorted by file, display name, routine name. _ZN1AC1Ev and _ZN1AC2Ev are both A::A().
    EXPECT_EQ(list_of("b.c x f 5 1 C\n"
                      "a.cpp x _ZN1AC2Ev 3 1 C\n"
                      "a.cpp x _ZN1AC1Ev 3 1 C\n"
                      "a.cpp x _ZN1AD2Ev 7 1 C\n"
                      "a.cpp x _ZN1AD1Ev 8 1 C\n"
                      "a.cpp x _Z0 9 1 C\n"
                      "b.c x f 5 2 C\n"),
              "a.cpp: _ZN1AC1Ev@3* _ZN1AC2Ev@3* _ZN1AD1Ev@8 _ZN1AD2Ev@7 _Z0@9 b.c: f@5 ");
}

TEST(ModuleList, FilterAndOwner) {
    const scratch_directory scratch;
    const std::string one =
        scratch.put("1", "a.c x f 1 1 C\nb.c x f 5 1 C\nb.c x f 5 1 C\nb.c x _ZN1AD2Ev 7 1 C\n");
    const std::string two = scratch.put("2", "c.c x h 1 1 C\n");
    std::string asked;
    const auto only_b = [&asked](const char* file, const char* display, const char* name) {
        asked += std::string(display) == name ? file : "?";
        return *file == 'b';
    };
    module_list first, second;
    int count = -1;
    const COMP* head = GetComponentList(one.c_str(), &count, only_b, first);
    EXPECT_EQ(asked, "a.cb.cb.cb.c");
    EXPECT_EQ(count, 2) << "without the duplicate";
    GetComponentList(two.c_str(), &count, nullptr, second);
    EXPECT_EQ(count, 1);
    EXPECT_STREQ(head->displayName, "A::~A()") << "as before";
    second = std::move(first);
    EXPECT_EQ(second.head, head);
    EXPECT_STREQ(head->next->fileName, "b.c");
    EXPECT_EQ(GetComponentList(two.c_str(), nullptr, only_b, second), nullptr) << "nothing is of interest";
}

TEST(ModuleList, TiesAreDecidedByTheExchanges) {
    // Two equal records change places twice: once to bring the middle (the first) to the front, once at the
    // meeting of the indices.
    EXPECT_EQ(lines_sorted({1, 2}), "a.c: f@2 f@1 ");
    // The middle goes to the front: 2 1 3; the ends change places: 3 1 2, then the indices meet in the
    // middle: parts (3 1) and (2), and (3 1) becomes (1 3).
    EXPECT_EQ(lines_sorted({1, 2, 3}), "a.c: f@1 f@3 f@2 ");
    // 2 1 3 4 -> 4 1 3 2 -> 4 3 1 2 -> parts (4 3)(1 2) -> (3 4)(2 1)
    EXPECT_EQ(lines_sorted({1, 2, 3, 4}), "a.c: f@3 f@4 f@2 f@1 ");
    // Only neighbours are duplicates: the sort may put a record of another line between the two.
    EXPECT_EQ(lines_sorted({5, 6, 5}), "a.c: f@5 f@6 ");
    EXPECT_EQ(lines_sorted({5, 5, 6}), "a.c: f@5 f@6 f@5 ");
}
