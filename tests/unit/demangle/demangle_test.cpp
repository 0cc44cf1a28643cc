#include "demangle/demangle.h"
#include "demangle/demangle_bound.h"
#include "tests/tools/scratch.h"

#include <gtest/gtest.h>
#include <sstream>
#include <string>

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
