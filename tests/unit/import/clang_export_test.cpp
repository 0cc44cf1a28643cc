#include "import/clang_export.h"

#include "tests/tools/product.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

/// The names of the functions and their files, or the message.
static std::string read(const std::string& functions, std::size_t blanks = 0) {
    const std::string json = std::string(blanks, ' ') + R"({"data":[{"files":[],"functions":[)" + functions +
                             R"(],"totals":{}}],"type":"llvm.coverage.json.export","version":"2.0.1"})";
    std::FILE* stream = std::tmpfile();
    std::fwrite(json.data(), 1, json.size(), stream);
    std::rewind(stream);
    std::string text;
    export_function memory = {};
    const auto add = [&text](const export_function& function) {
        text += function.name + " in " + std::string(function.filenames.at(0)) + "\n";
    };
    const outcome end = run_product([&] { read_clang_export(stream, "x.json", add, &memory); });
    std::fclose(stream);
    return text + end.errors;
}

TEST(ClangExport, EscapesAndNamesAcrossPieces) {
    // The name begins in front of the end of the first piece that is read and ends behind it.
    for (const std::size_t blanks : {262000U, 262050U, 262080U, 262100U, 262120U})
        EXPECT_EQ(
            read(R"({"name":"caf\u00e9\u0000;\"f\"","count":1,"filenames":["d\/a.c"],"regions":[]})", blanks),
            std::string("caf\xc3\xa9\0;\"f\" in d/a.c\n", 20))
            << blanks;
}

TEST(ClangExport, DeepNestingIsAFault) {
    for (const std::string start : {"", R"({"x":)"})
        EXPECT_TRUE(read(start + std::string(1000000, '[')).starts_with("ERROR: x.json is not "));
}
