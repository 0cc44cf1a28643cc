#include "demangle/demangle.h"
#include "demangle/demangle_bound.h"
#include "tests/tools/scratch.h"

#include <gtest/gtest.h>
#include <sstream>
#include <string>

TEST(Demangle, NamesAndLengths) {
    std::size_t length = 99;
    EXPECT_STREQ(demangleName("_Z3fooi", 0, &length), "foo(int)");
    EXPECT_EQ(length, 9U);
    // Whatever the flag says; names that are not mangled come back as the very same pointer.
    for (const char* name : {"main", "_Zbar", "_Z", "", "__Z3fooi"}) {
        length = 99;
        EXPECT_EQ(demangleName(name, 1, &length), name);
        EXPECT_EQ(length, 0U);
    }
    EXPECT_EQ(demangleName(nullptr, 0, &length), nullptr);
    EXPECT_EQ(length, 0U);
}

TEST(DemangleBound, IsNotBelowTheText) {
    std::istringstream names(read_file(VEXCOV_TEST_DATA "/golden/cases/cpp-names/input/names.dpitext"));
    int checked = 0;
    for (std::string key, name; names >> key;) {
        std::getline(names >> std::ws, name);
        std::size_t length = 0;
        const bool shown = key == "function" && demangleName(name.c_str(), 0, &length) != name;
        EXPECT_FALSE(shown && demangles_within(name.c_str(), length / 2)) << name;
        checked += shown ? 1 : 0;
    }
    EXPECT_GE(checked, 20);
    EXPECT_TRUE(demangles_within("_ZNS_T_", 65536)) << "broken, and short";
}
