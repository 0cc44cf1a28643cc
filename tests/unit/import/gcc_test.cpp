#include "import/gcc/gcov_json.h"
#include "import/gcc/gcov_runs.h"
#include "import/gcc/notes_sources.h"
#include "import/gcc/object_files.h"
#include "import/gcc/object_records.h"
#include "tests/tools/product.h"
#include "tests/tools/scratch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <string>

using namespace std::string_literals;

/// Directory, files and counts of all documents, or what is wrong.
static std::string read(std::string_view text, std::size_t piece) {
    std::string result;
    gcov_reader reader([&result](const gcov_document& document) {
        result += std::string(document.view(document.directory)) + ":";
        for (const gcov_file& file : document.files)
            result += " " + std::string(document.view(file.name));
        for (const gcov_line& line : document.lines)
            result += " " + std::string(document.view(line.function)) + "=" + std::to_string(line.count);
        result += "\n";
    });
    for (; !text.empty(); text.remove_prefix(std::min(piece, text.size()))) {
        if (!reader.feed(text.substr(0, piece)))
            return reader.fault();
    }
    return reader.finish() ? result : reader.fault();
}

TEST(GcovJson, NamesAndDocumentsInPieces) {
    // A control byte and a byte that is no UTF-8 stand in the name as they are; one is escaped.
    const std::string text =
        "{\"files\":[{\"lines\":[{\"function_name\":\"f\",\"line_number\":1,\"count\":3},"
        "{\"function_name\":\"f\",\"line_number\":2,\"count\":0},{\"line_number\":3,\"count\":1}],"
        "\"file\":\"a\x01\xff\\u00e9\\\"\\\\.c\"}],\"format_version\":\"1\"}\n"
        "{\"format_version\":\"2\",\"more\":[{}],\"files\":[],\"current_working_directory\":\"/d\"}"s;
    for (const std::size_t piece : {std::size_t{1}, std::size_t{7}, text.size()})
        EXPECT_EQ(read(text, piece), ": a\x01\xff\xc3\xa9\"\\.c f=3 f=0 =1\n/d:\n") << piece;
}

TEST(GcovJson, DeepNestingIsAFault) {
    EXPECT_NE(read("{\"x\":" + std::string(1000000, '['), 4096).find("is not valid JSON"), std::string::npos);
}

/// A name in notes: its length in bytes or in words, then the name with zeros behind it.
static std::string noted(const std::string& name, bool words) {
    const std::size_t padded = words ? (name.size() + 4) / 4 * 4 : name.size() + 1;
    const std::size_t length = words ? padded / 4 : padded;
    std::string bytes = {static_cast<char>(length & 0xff), static_cast<char>(length >> 8), 0, 0};
    bytes += name;
    bytes.resize(4 + padded);
    return bytes;
}

TEST(GccObjects, SourcesThatNotesName) {
    const scratch_directory scratch;
    const auto sources = [&scratch](const std::string& bytes) {
        std::string result;
        find_sources(scratch.put("x.gcno", bytes),
                     [&result](std::string_view source) { result += std::string(source) + " "; });
        return result;
    };
    const std::string deep = "/" + std::string(300, 'd') + "/e.h";
    for (const bool words : {false, true}) {
        const std::string head =
            (words ? "oncg*39A\1\2\3\4"s : "oncg*22B\1\2\3\4\5\6\7\0"s) + noted("/build", words);
        const std::string names = noted("_Z1/f", words) + noted("a.c", words) + noted("/usr/x.h", words) +
                                  noted(deep, words) + noted("/usr/x.h", words);
        EXPECT_EQ(sources(head + names), "/usr/x.h " + deep + " /usr/x.h ");
        EXPECT_EQ(sources(head + names.substr(0, names.size() - 6)), "/usr/x.h " + deep + " ");
    }
    const auto big_endian = [](std::string bytes) {
        std::reverse(bytes.begin(), bytes.begin() + 4);
        return bytes;
    };
    EXPECT_EQ(sources("gcnoB22*\1\2\3\4\5\6\7\0"s + big_endian(noted("/build", false)) +
                      big_endian(noted("/usr/x.h", false))),
              "/usr/x.h ");
    EXPECT_EQ(sources("oncg*22B\1\2\3\4" + std::string(100000, '/')), "");
    EXPECT_EQ(sources("oncg"), "");
    find_sources("absent.gcno", [](std::string_view) { FAIL(); });
}

/// gcov reads what is there and says nothing.
TEST(GccObjects, NotesThatAreCutShort) {
    const scratch_directory scratch;
    for (const bool words : {false, true}) {
        const compiler_version version = {words ? 11U : 12U, 2};
        const auto cut = [&](const std::string& bytes) {
            return read_notes_records(scratch.put("x.gcno", bytes), version).cut_short;
        };
        const std::string head = (words ? "oncg*31B\1\2\3\4"s : "oncg*22B\1\2\3\4\5\6\7\0"s) +
                                 noted("/build", words) + "\1\0\0\0"s;
        const std::string arcs = "\0\0\0\1"s + noted(std::string(11, 'f'), words) + "\0\0\x43\1"s +
                                 noted(std::string(11, 'a'), words);
        const std::string lines = "\0\0\x45\1"s + noted(std::string(300, 'l'), words);
        const std::string whole = head + arcs + lines;
        for (std::size_t size = 12; size <= whole.size(); ++size)
            EXPECT_EQ(cut(whole.substr(0, size)), size != head.size() && size != whole.size()) << size;
        EXPECT_FALSE(cut(head + "\0\0\0\2"s + lines)) << "a kind of record that is not known";
        EXPECT_TRUE(cut(head + "\0\0\0\1\xff\xff\xff\x7f"s));
    }
}

TEST(GccObjects, CountersThatAreCutShort) {
    const scratch_directory scratch;
    for (const bool words : {false, true}) {
        const compiler_version version = {words ? 11U : 12U, 2};
        const auto records = [&](const std::string& bytes) {
            return read_counters_records(scratch.put("x.gcda", bytes), version);
        };
        const std::string zeros = "\0\0\xa1\1\xf0\xff\xff\xff"s; // counters that are not stored
        const std::string whole = (words ? "adcg*31B\1\2\3\4"s : "adcg*22B\1\2\3\4\5\6\7\0"s) + "\0\0\0\1"s +
                                  noted(std::string(8, '\0'), words) + zeros + "\0\0\0\1"s +
                                  noted(std::string(8, '\0'), words) + "\0\0\xa1\1"s +
                                  noted(std::string(16, '\0'), words) + "\0\0\0\0"s;
        for (std::size_t size = 12; size < whole.size(); ++size)
            EXPECT_TRUE(records(whole.substr(0, size)).cut_short) << size;
        EXPECT_FALSE(records(whole).cut_short);
        EXPECT_EQ(records(whole).functions, 2U);
    }
}

TEST(GccObjects, HeadsOfBothByteOrders) {
    const scratch_directory scratch;
    const auto notes = [&scratch](const std::string& bytes) {
        const std::optional<object_head> head = read_notes_head(scratch.put("x.gcno", bytes));
        return head ? head->version.text() : "none";
    };
    EXPECT_EQ(notes("oncg*22B\1\2\3\4rest"), "GCC 12.2");
    EXPECT_EQ(notes("gcnoB31*\1\2\3\4rest"), "GCC 13.1");
    EXPECT_EQ(notes("oncg*39A\1\2\3\4"), "GCC 9.3");
    EXPECT_EQ(notes("oncgR804\1\2\3\4"), "GCC 4.8");
    for (const std::string bytes :
         {"oncg*22B\1\2\3", "", "oncg*2xB\1\2\3\4", "adcg*22B\1\2\3\4", "oncg*00A\1\2\3\4"})
        EXPECT_EQ(notes(bytes), "none") << bytes;
    const auto complete = [&scratch](const std::string& bytes) {
        return read_counters_head(scratch.put("x.gcda", bytes)).has_value();
    };
    EXPECT_TRUE(complete("adcg*22B\1\2\3\4\0\0\0\0"s));
    EXPECT_FALSE(complete("adcg*22B\1\2\3\4\0\0\0"s));
    EXPECT_FALSE(complete("adcg*22B\1\2\3\4\0\0\0\1"s));
}

TEST(GccObjects, AGcovThatHangsIsEnded) {
    const scratch_directory scratch;
    const std::string gcov = scratch.put("gcov", "#!/bin/sh\n[ $1 = --version ] && exit\nexec sleep 50\n");
    std::filesystem::permissions(gcov, std::filesystem::perms::owner_all);
    gcov_programs programs(gcov);
    const std::vector<gcc_object> objects = {{"/x/a.gcno", "", {12, 2}}, {"/x/b.gcno", "", {12, 2}}};
    const auto nothing = [](const gcov_document&) { FAIL(); };
    const gcov_troubles troubles = run_gcov(objects, &programs, 2, "", nothing, std::chrono::seconds(0));
    EXPECT_EQ(troubles.unreadable, (std::vector<std::string>{"/x/a.gcno: gcov did not come to an end",
                                                             "/x/b.gcno: gcov did not come to an end"}));
}

/// A gcov that is given several objects ends with the status of one of them, or in the middle.
TEST(GccObjects, OneAtFaultAmongSeveral) {
    const scratch_directory scratch;
    const std::string gcov = scratch.put("gcov", R"(#!/bin/sh
status=0
for object; do
    case $object in
    *damaged.gcda) status=2 ;;
    *foreign.gcno) kill -9 $$ ;;
    esac
    case $object in
    *.gc*) echo '{"format_version":"1","files":[{"file":"'$object'","functions":[],"lines":[]}]}' ;;
    esac
done
exit $status
)");
    std::filesystem::permissions(gcov, std::filesystem::perms::owner_all);
    for (const unsigned jobs : {1U, 3U}) {
        gcov_programs programs(gcov);
        std::vector<gcc_object> objects;
        std::multiset<std::string> expected;
        for (int i = 0; i < 40; ++i) {
            const std::string name = "/x/" + (i == 5 ? "foreign" : i == 20 ? "damaged" : std::to_string(i));
            objects.push_back({name + ".gcno", i == 20 ? name + ".gcda" : "", {12, 2}});
            if (i != 5)
                expected.insert(i == 20 ? name + ".gcda" : name + ".gcno");
        }
        std::multiset<std::string> files;
        const gcov_troubles troubles =
            run_gcov(objects, &programs, jobs, "", [&](const gcov_document& document) {
                files.emplace(document.view(document.files.at(0).name));
            });
        EXPECT_EQ(files, expected);
        EXPECT_EQ(troubles.damaged, std::vector<std::string>{"/x/damaged.gcda"});
        EXPECT_EQ(troubles.unreadable,
                  std::vector<std::string>{"/x/foreign.gcno: gcov was ended by signal 9"});
    }
}
