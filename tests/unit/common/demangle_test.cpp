#include "common/demangle.h"

#include <cstring>
#include <gtest/gtest.h>
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

TEST(Demangle, TextBeyondTheFirstBuffer) {
    std::string name = "_Z3foo", result = "foo(";
    for (int i = 0; i < 500; ++i) {
        name += "Ss";
        result += i == 0 ? "std::string" : ", std::string";
    }
    std::size_t length = 0;
    EXPECT_EQ(std::string(demangleName(name.c_str(), 0, &length)), result + ")");
    EXPECT_EQ(length, result.size() + 2);
    EXPECT_STREQ(demangleName("_Z3fooi", 0, &length), "foo(int)");
}
