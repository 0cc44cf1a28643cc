#include "import/clang_export.h"

#include "tests/unit/import/failure.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

/// Each function as "name count | files | numbers of its regions".
static std::vector<std::string> read(const std::string& json) {
    std::FILE* stream = std::tmpfile();
    std::fwrite(json.data(), 1, json.size(), stream);
    std::rewind(stream);
    std::vector<std::string> functions;
    read_clang_export(stream, "x.json", [&functions](const export_function& function) {
        std::string text = function.name + " " + std::to_string(function.count) + " |";
        for (const std::string& file : function.filenames)
            text += " " + file;
        for (const export_region& region : function.regions) {
            text += " |";
            for (const std::int64_t value : region)
                text += " " + std::to_string(value);
        }
        functions.push_back(text);
    });
    std::fclose(stream);
    return functions;
}

/// An export that lists `functions`.
static std::string exported(const std::string& functions) {
    return R"({"data":[{"files":[],"functions":[)" + functions +
           R"(],"totals":{}}],"type":"llvm.coverage.json.export","version":"2.0.1"})";
}

/// An export of one function with one region that begins with `number`.
static std::string with_number(const std::string& number) {
    return exported(R"({"name":"f","count":1,"filenames":["a.c"],"regions":[[)" + number +
                    ",2,3,4,5,0,0,0]]}");
}

using Strings = std::vector<std::string>;

TEST(ClangExport, KeysInAnyOrderAndUnknownOnes) {
    const Strings expected = {"f 7 | a.c b.h | 1 2 3 4 5 0 0 0 | 6 7 8 9 10 1 0 3"};
    EXPECT_EQ(read(exported(R"({"branches":[[1,2]],"count":7,"filenames":["a.c","b.h"],"name":"f",)"
                            R"("regions":[[1,2,3,4,5,0,0,0],[6,7,8,9,10,1,0,3]]})")),
              expected);
    EXPECT_EQ(
        read(R"( {"version":"3.0.1", "name":{"data":[]}, "type":"llvm.coverage.json.export","count":null,
                   "data":[{"functions":[
                     {"regions":[[1,2,3,4,5,0,0,0,99],[6,7,8,9,10,1,0,3]],"x":[[{"name":"no","regions":5}],true],
                      "filenames":["a.c","b.h"],"mcdc_records":[],"name":"f","n":-1.5e3,"count":7}
                   ],"files":[{"functions":[1],"segments":[[1,2,3,true,false]]}]}, {"functions":[]}]} )"),
        expected);
}

TEST(ClangExport, EscapesAndNamesAcrossPieces) {
    // The name begins in front of the end of the first piece that is read and ends behind it.
    for (const std::size_t blanks : {262000U, 262050U, 262080U, 262100U, 262120U}) {
        const std::string json =
            std::string(blanks, ' ') +
            exported(R"({"name":"caf\u00e9\u0000;\"f\"","count":1,"filenames":["d\/a.c"],"regions":[]})");
        EXPECT_EQ(read(json), Strings{std::string("caf\xc3\xa9\0;\"f\" 1 | d/a.c", 20)}) << blanks;
    }
}

TEST(ClangExport, NumbersBeyondSixtyFourBitsAreClamped) {
    EXPECT_EQ(read(with_number("18446744073709551615")),
              Strings{"f 1 | a.c | 9223372036854775807 2 3 4 5 0 0 0"});
    EXPECT_EQ(read(with_number("99999999999999999999999999")),
              Strings{"f 1 | a.c | 9223372036854775807 2 3 4 5 0 0 0"});
    EXPECT_EQ(read(with_number("-99999999999999999999999999")),
              Strings{"f 1 | a.c | -9223372036854775808 2 3 4 5 0 0 0"});
}

TEST(ClangExport, FaultsAreNamed) {
    struct fault {
        std::string json;
        const char* message;
    };
    const std::string good = exported("");
    const std::string wrong_type = "a value in \"regions\" of function \"f\" has the wrong type";
    const fault faults[] = {
        {"", "ERROR: x.json is empty"},
        {"   \n", "ERROR: x.json ends in the middle, after 4 bytes"},
        {good.substr(0, 40), "ERROR: x.json ends in the middle, after 40 bytes"},
        {good + " {}", "ERROR: x.json is not valid JSON at byte "},
        {"TN:\nSF:a.c\n", "ERROR: x.json is not valid JSON at byte 0"},
        {"[1]", "ERROR: x.json is not an export of llvm-cov"},
        {"5", "ERROR: x.json is not an export of llvm-cov"},
        {"{}", "ERROR: x.json is not an export of llvm-cov"},
        {R"({"data":5})", "ERROR: x.json is not an export of llvm-cov"},
        {R"({"data":[{"functions":[5]}]})", "ERROR: x.json is not an export of llvm-cov"},
        {R"({"type":"coverage.py","data":[{"functions":[]}]})", "ERROR: x.json is not an export of llvm-cov"},
        {R"({"type":"llvm.coverage.json.export","version":"9.0.0","data":[{"functions":[]}]})",
         "ERROR: x.json has version \"9.0.0\" of the export"},
        {R"({"type":"llvm.coverage.json.export","version":"2.0.1","data":[{"files":[]}]})",
         "ERROR: x.json lists no functions"},
        {exported(R"({"name":"f","filenames":[],"regions":[]})"), "function \"f\" has no \"count\""},
        {exported(R"({"name":"f","count":1,"filenames":[],"regions":[[1,2,3]]})"),
         "a region of function \"f\" has 3 numbers instead of 8"},
        {with_number("1.5"), wrong_type.c_str()},
        {with_number("1e3"), wrong_type.c_str()},
        {with_number("\"1\""), wrong_type.c_str()},
        {with_number("null"), wrong_type.c_str()},
        {with_number("[]"), wrong_type.c_str()},
        {with_number("{}"), wrong_type.c_str()},
        {with_number("NaN"), "not valid JSON"},
        {exported(R"({"name":"f","count":"1"})"),
         "a value in \"count\" of function \"f\" has the wrong type"},
        {exported(R"({"name":7})"), "a value in \"name\""},
        {exported(R"({"filenames":"a.c"})"), "a value in \"filenames\""},
        {exported(R"({"filenames":[7]})"), "a value in \"filenames\""},
        {exported(std::string(1000000, '[')), "ERROR: x.json is not an export of llvm-cov"},
        {exported(R"({"x":)" + std::string(1000000, '[')), "not valid JSON"},
    };
    for (const fault& each : faults) {
        const std::string message = failure_of([&each] { read(each.json); });
        EXPECT_NE(message.find(each.message), std::string::npos) << each.json.substr(0, 100) << "\n"
                                                                 << message;
    }
}
