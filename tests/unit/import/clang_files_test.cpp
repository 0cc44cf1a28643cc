#include "import/clang/archive.h"
#include "import/clang/byte_reader.h"
#include "import/clang/clang_inputs.h"
#include "import/clang/clang_join.h"
#include "import/clang/file_tables.h"
#include "import/clang/function_mapping.h"
#include "import/clang/name_hash.h"
#include "tests/tools/product.h"
#include "tests/tools/scratch.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

static const std::filesystem::path kCases = std::filesystem::path(VEXCOV_TEST_DATA) / "golden" / "cases";

static std::string bytes(std::initializer_list<int> values) {
    std::string text;
    for (const int value : values)
        text += static_cast<char>(value);
    return text;
}

/// What `read` throws, or the empty text.
template <typename Read> std::string fault_of(Read read) {
    try {
        read();
        return "";
    } catch (const input_error& error) {
        return error.what();
    }
}

/// The regions of a mapping as "line:column-line:column kind count", or the fault, or "other build".
static std::string decoded(const std::string& mapping, const std::vector<std::uint64_t>& counters) {
    export_function function = {};
    std::string text;
    const std::string fault = fault_of([&] {
        mapping_files files;
        read_mapping_files(mapping, &files);
        const function_counters given = {counters.empty() ? nullptr : counters.data(), counters.size()};
        if (!mapping_decoder().decode(std::string_view(mapping).substr(files.end), files.indices.size(),
                                      given, &function))
            text = "other build";
    });
    if (!fault.empty() || !text.empty())
        return fault + text;
    for (const export_region& r : function.regions)
        text += std::to_string(r[kLineStart]) + ":" + std::to_string(r[kColumnStart]) + "-" +
                std::to_string(r[kLineEnd]) + ":" + std::to_string(r[kColumnEnd]) + " " +
                std::to_string(r[kKind]) + " " + std::to_string(r[kExecutionCount]) + "\n";
    return text;
}

/// int f(int n) { if (n) return 1; return 2; } over five lines: a branch, two gaps, an expression c0 - c1.
static const std::string kBranchMapping =
    bytes({1, 1, 1,   1, 5, 7,   1, 1,    0xe,  4,    2,    1,    1,    7,    0, 8, 0x20,
           5, 2, 0,   7, 0, 8,   5, 0,    9,    1,    0x85, 0x80, 0x80, 0x80, 8, 5, 1,
           5, 0, 0xd, 2, 0, 0xe, 1, 0x83, 0x80, 0x80, 0x80, 8,    2,    1,    3, 0, 0xb});

TEST(ClangFiles, NumbersAtTheirLimits) {
    const std::string largest = std::string(9, '\xff') + '\1';
    EXPECT_EQ(byte_reader(largest).leb(), 0xffffffffffffffffU);
    EXPECT_EQ(byte_reader(bytes({0x80, 0x80, 0})).leb(), 0U);
    for (const std::string& beyond : {std::string(9, '\xff') + '\2', std::string(10, '\x80') + '\0'})
        EXPECT_EQ(fault_of([&] { byte_reader(beyond).leb(); }), "holds a number beyond 64 bits");
    for (std::size_t size = 0; size < largest.size(); ++size)
        EXPECT_EQ(fault_of([&] { byte_reader(largest.substr(0, size)).leb(); }), "ends in the middle");
    EXPECT_EQ(fault_of([] { byte_reader("1234567").u64(); }), "ends in the middle");
    EXPECT_EQ(fault_of([] { byte_reader("abc").bytes(0xffffffffffffffffU); }), "ends in the middle");
}

TEST(ClangFiles, NamesAndTheirHashes) {
    EXPECT_EQ(name_hash("foo"), 0x5cf8c24cdb18bdacU);
    EXPECT_EQ(name_hash("main"), 0xdb956436e78dd5faU);
    EXPECT_EQ(normal_source_name("/w/build", "../src/./a.c"), "/w/src/a.c");
    EXPECT_EQ(normal_source_name("/w", "/x//y/../../../a.c"), "/a.c");
    EXPECT_EQ(normal_source_name(".", "a.c"), "a.c");
    EXPECT_EQ(normal_source_name("b", "../../c/../a.c"), "../a.c");
    EXPECT_EQ(normal_source_name("", "../../a.c"), "../../a.c");
}

TEST(ClangFiles, RegionsOfAMapping) {
    EXPECT_EQ(decoded(kBranchMapping, {5, 2}), "1:14-5:2 0 5\n2:7-2:8 0 5\n2:9-3:5 3 2\n3:5-3:13 0 2\n"
                                               "3:14-4:3 3 3\n4:3-4:11 0 3\n");
    // Counters of another thread came in between, or stand at their limit.
    EXPECT_TRUE(decoded(kBranchMapping, {2, 5}).ends_with("4:3-4:11 0 0\n"));
    EXPECT_TRUE(
        decoded(kBranchMapping, {0xfffffffffffffffd, 0}).ends_with("4:3-4:11 0 9223372036854775807\n"));
    EXPECT_TRUE(decoded(kBranchMapping, {}).ends_with("4:3-4:11 0 0\n"));
    EXPECT_EQ(decoded(kBranchMapping, {5}), "other build");
    for (std::size_t size = 0; size < kBranchMapping.size(); ++size)
        EXPECT_EQ(decoded(kBranchMapping.substr(0, size), {5, 2}), "ends in the middle") << size;
    EXPECT_EQ(decoded(kBranchMapping + '\0', {5, 2}), "has damaged coverage mapping: bytes are left over");
    // Two expansions, one within the other; then a region of whole lines and one that was skipped.
    EXPECT_EQ(decoded(bytes({3, 1, 1, 1, 0, 1, 0xc,  1, 1, 0, 2, 1, 0x14, 2, 1, 0, 2,
                             3, 1, 3, 1, 0, 2, 0x10, 1, 0, 0, 0, 5, 1,    3, 1, 1}),
                      {7, 9}),
              "1:1-1:2 1 7\n2:1-2:2 1 7\n3:1-3:2 0 7\n4:1-4:1073741823 2 0\n5:3-6:1 0 9\n");
}

TEST(ClangFiles, MappingsThatCannotBe) {
    const std::string head = "has damaged coverage mapping: ";
    const auto one_region = [](std::initializer_list<int> region) {
        return bytes({1, 1, 0, 1}) + bytes(region);
    };
    EXPECT_EQ(decoded(one_region({2, 1, 1, 0, 2}), {1}), head + "an expression is missing");
    EXPECT_EQ(decoded(one_region({0xc, 1, 1, 0, 2}), {1}), head + "a file number is too large");
    EXPECT_EQ(decoded(one_region({8, 1, 1, 0, 2}), {1}), head + "a region is of an unknown kind");
    EXPECT_EQ(decoded(one_region({1, 1, 3, 0, 2}), {1}), head + "a region ends before its start");
    EXPECT_EQ(decoded(one_region({1, 1, 0x80, 0x80, 0x80, 0x80, 0x10, 0, 2}), {1}),
              head + "a line or column is too large");
    EXPECT_EQ(decoded(one_region({4, 1, 1, 0, 2}), {1}), head + "an expansion leads to itself");
    for (const int operand : {2, 3, 6, 7}) // of the expression itself, or of one that refers back to it
        EXPECT_EQ(decoded(bytes({1, 1, 2, 1, operand, 1, 2, 1, 2, 1, 1, 0, 2}), {1}),
                  head + "an expression refers to itself")
            << operand;
}

TEST(ClangFiles, ExpressionsAsDeepAsTheyLike) {
    // Each expression adds the one behind it to the first counter.
    constexpr int kDepth = 200000;
    const auto leb = [](std::uint32_t value) {
        std::string text;
        for (; value >= 0x80; value >>= 7)
            text += static_cast<char>(value | 0x80);
        return text + static_cast<char>(value);
    };
    std::string mapping = bytes({1, 1}) + leb(kDepth);
    for (std::uint32_t i = 1; i < kDepth; ++i)
        mapping += bytes({1}) + leb(i << 2 | 3);
    mapping += bytes({1, 1, 1, 3, 1, 1, 0, 2});
    EXPECT_EQ(decoded(mapping, {3}), "1:1-1:2 0 " + std::to_string(3 * (kDepth + 1)) + "\n");
}

/// Joins a program with a profile and returns the number of functions handed out, or the message.
static std::string joined(const scratch_directory& scratch, std::string_view program,
                          std::string_view profile) {
    std::size_t functions = 0;
    std::string fault;
    const outcome end = run_product([&] {
        fault = fault_of([&] {
            clang_join join;
            export_function memory = {};
            file_bytes file(scratch.put("p", program));
            join.begin_input("p");
            const auto add = [&](const file_part& part, const std::string&) {
                mapped_sections sections;
                read_mapped_sections(part, &sections);
                join.add_object(sections);
            };
            if (is_archive(program))
                for_each_member(&file, "p", add);
            else
                add(file_part(&file, 0, file.size()), "");
            join.add_profile(profile);
            join.hand_out([&](const export_function&, const std::string&) { ++functions; }, &memory);
        });
    });
    return end.ended ? end.errors : fault.empty() ? std::to_string(functions) : fault;
}

TEST(ClangFiles, CutAtEveryLength) {
    const scratch_directory scratch;
    const std::filesystem::path input = kCases / "import-clang-versions" / "input";
    const std::string archive = read_file(kCases / "import-clang-programs" / "input" / "library.a");
    for (const std::string version : {"clang13", "clang19", "i386-19", "byte-counters"}) {
        const std::string program = read_file(input / version / "p");
        const std::string raw = read_file(input / version / "1.profraw");
        const std::string merged = read_file(input / version / "2.profdata");
        ASSERT_EQ(joined(scratch, program, raw), "5") << version;
        ASSERT_EQ(joined(scratch, program, merged), "5") << version;
        for (std::size_t size = 0; size < program.size(); size += version == "clang13" ? 1 : 61)
            EXPECT_NE(joined(scratch, program.substr(0, size), raw), "5") << version << size;
        for (std::size_t size = 8; size + 8 < raw.size(); ++size) // it ends in padding
            EXPECT_NE(joined(scratch, program, raw.substr(0, size)), "5") << version << size;
        for (std::size_t size = 8; size < merged.size(); ++size)
            joined(scratch, program, merged.substr(0, size));
    }
    for (std::size_t size = 0; size < archive.size(); size += 7)
        joined(scratch, archive.substr(0, size), "");
}

TEST(ClangFiles, MoreSectionsThanTheHeaderHolds) {
    // The numbers stand in section 0 then.
    const scratch_directory scratch;
    std::string program = read_file(kCases / "import-clang-versions" / "input" / "clang14" / "p");
    const std::string raw = read_file(kCases / "import-clang-versions" / "input" / "clang14" / "1.profraw");
    const std::size_t first = static_cast<std::size_t>(little_endian_at<std::uint64_t>(program, 40));
    program[first + 32] = program[60];
    program[first + 40] = program[62];
    program.replace(60, 4, bytes({0, 0, 0xff, 0xff}));
    EXPECT_EQ(joined(scratch, program, raw), "5");
    program.replace(first + 32, 8, std::string(8, '\xff'));
    EXPECT_EQ(joined(scratch, program, raw), "is a damaged ELF file: its sections do not fit into it");
}

/// A build or a test may go on while its directory is searched.
TEST(ClangFiles, WhatGoesAwayIsPassedOver) {
    const scratch_directory scratch;
    scratch.put("app", "1");
    std::atomic<bool> done = false;
    std::thread other([&] {
        while (!done) {
            for (const char* const folder : {"a", "b", "c", "d", "e", "f"})
                write_file(scratch.path() / folder / "deeper" / "file", "");
            for (const char* const folder : {"a", "b", "c", "d", "e", "f"})
                std::filesystem::remove_all(scratch.path() / folder);
        }
    });
    std::size_t found = 0;
    constexpr std::size_t kSearches = 1000;
    for (std::size_t i = 0; i < kSearches; ++i) {
        for (const std::string& file : files_below(scratch.path().string())) {
            try {
                file_bytes opened(file);
                found += static_cast<std::size_t>(opened.size());
            } catch (const not_of_interest&) { // and nothing else
            }
        }
    }
    done = true;
    other.join();
    EXPECT_EQ(found, kSearches);
}
