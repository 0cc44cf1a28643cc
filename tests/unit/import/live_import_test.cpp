// Imports of what the tools of this machine write.
#include "tests/tools/scratch.h"

#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <string>

/// Runs a command with the system's programs and returns what it printed; fails unless it ends well.
static std::string run(const scratch_directory& scratch, const std::string& command) {
    const program_result result = run_command(command, scratch.path(), "/usr/bin:/bin");
    EXPECT_EQ(result.status, 0) << command << "\n" << result.standard_error;
    return result.standard_output + result.standard_error;
}

static bool succeeds(const scratch_directory& scratch, const std::string& command) {
    return run_command(command, scratch.path(), "/usr/bin:/bin").status == 0;
}

/// The highest count of any block on each line that has blocks, by file, from a block export.
static std::map<std::string, std::map<unsigned, long>> counts_of(const std::string& export_text) {
    std::map<std::string, std::map<unsigned, long>> counts;
    std::string file;
    std::istringstream lines(export_text);
    for (std::string line; std::getline(lines, line);) {
        unsigned number = 0;
        unsigned column = 0;
        unsigned at = 0;
        long count = 0;
        if (line.starts_with("file - "))
            file = line.substr(7);
        else if (std::sscanf(line.c_str(), "%u\t%u\t%u\t%ld", &number, &at, &column, &count) == 4)
            counts[file][at] = std::max(counts[file][at], count);
    }
    return counts;
}

TEST(LiveImport, CountersOfTheInstalledGcc) {
    const scratch_directory scratch;
    if (!succeeds(scratch, "gcc --version") || !succeeds(scratch, "gcov --version"))
        GTEST_SKIP() << "no gcc";
    scratch.put("src/main.c", "int other(int);\nint main(int c, char** v) {\n    (void)v;\n    if (c > 2)\n"
                              "        return 1;\n    return other(c) - 1;\n}\n");
    scratch.put("src/other.c", "int other(int x) {\n    return x;\n}\n");
    scratch.put("src/never.c", "int never(void) {\n    return 1;\n}\n");
    scratch.put("obj/read.me", "");
    for (const std::string name : {"main", "other", "never"})
        run(scratch, "gcc --coverage -c src/" + name + ".c -o obj/" + name + ".o");
    run(scratch, "gcc --coverage obj/main.o obj/other.o -o app");
    const std::string prefix = "env GCOV_PREFIX=" + scratch.path().string();
    run(scratch, prefix + "/run1 ./app");
    run(scratch, prefix + "/run2 ./app");
    EXPECT_EQ(run(scratch, "vexcov-import gcc -root . ."), "");
    run(scratch, "vexcov -nopmeter -txtbcvrgfull blocks.txt");
    auto counts = counts_of(read_file(scratch.path() / "blocks.txt"));
    EXPECT_EQ(counts["src/main.c"], (std::map<unsigned, long>{{2, 2}, {4, 2}, {5, 0}, {6, 2}, {7, 0}}));
    EXPECT_EQ(counts["src/other.c"], (std::map<unsigned, long>{{1, 2}, {2, 2}, {3, 2}}));
    EXPECT_NE(read_file(scratch.path() / "pgopti.spi").find("src/never.c - never 1 3 I\n"),
              std::string::npos);

    run(scratch, "gcc --coverage -DAGAIN -c src/other.c -o obj/other.o");
    EXPECT_NE(run(scratch, "vexcov-import gcc -root . .").find("warning: 2 objects were compiled again"),
              std::string::npos);
}

TEST(LiveImport, RunsOfOneProgramOfGccAgree) {
    const scratch_directory scratch;
    if (!succeeds(scratch, "g++ --version") || !succeeds(scratch, "gcov --version"))
        GTEST_SKIP() << "no gcc";
    scratch.put(
        "a.cpp",
        "#include <string>\n#include <cstdlib>\nstruct held {\n    std::string s;\n    ~held() {}\n};\n"
        "static int pick(int c, int d) {\n    held h{\"x\"};\n    if (c > 2 && d)\n        return 1;\n"
        "    auto twice = [](int v) { return v ? 2 * v : 1; };\n    try {\n        held g{\"y\"};\n"
        "        if (c == 1) throw 1;\n    } catch (int) {\n        return 5;\n    }\n"
        "    return d ? twice(c) : c;\n}\n"
        "int main(int, char** v) {\n    return pick(std::atoi(v[1]), std::atoi(v[2])) == 99;\n}\n");
    run(scratch, "g++ --coverage a.cpp -o app");
    for (const std::string numbers : {"1 0", "2 0", "2 1", "3 0", "3 1"}) {
        run(scratch, "sh -c 'rm -f *.gcda; ./app " + numbers + "'");
        const std::string name = numbers.substr(0, 1) + numbers.substr(2);
        run(scratch, "vexcov-import gcc -root . -spi " + name + ".spi -dpi " + name + ".dpi");
    }
    run(scratch, "vexcov-profile merge -o all 10.dpi 20.dpi 21.dpi 30.dpi 31.dpi");
    run(scratch, "vexcov-profile merge -o back 31.dpi 30.dpi 21.dpi 20.dpi 10.dpi");
    EXPECT_EQ(read_file(scratch.path() / "all.dpi"), read_file(scratch.path() / "back.dpi"));
    EXPECT_EQ(run(scratch, "vexcov-profile check all.dpi"), "nothing found\n");
    run(scratch, "vexcov -nopmeter -spi all.spi -dpi all.dpi -txtbcvrgfull blocks.txt");
    std::map<unsigned, long> counts = counts_of(read_file(scratch.path() / "blocks.txt"))["a.cpp"];
    EXPECT_EQ(std::tuple(counts[9], counts[10], counts[16], counts[18]), std::tuple(5, 1, 1, 3));
    // What the second run adds to the first one.
    const std::string added = run(scratch, "vexcov-export lcov -spi 31.spi -dpi 31.dpi -ref 20.dpi");
    for (const char* line : {"DA:9,0\n", "DA:10,1\n", "DA:16,0\n", "DA:18,0\n"})
        EXPECT_NE(added.find(line), std::string::npos) << line << added;
}

TEST(LiveImport, TracesOfCoveragePy) {
    const scratch_directory scratch;
    if (!succeeds(scratch, "python3 -m coverage --version"))
        GTEST_SKIP() << "no coverage.py";
    const std::string package = run(scratch, "python3 -c 'import json; print(json.__path__[0])'");
    run(scratch, "cp -r " + package.substr(0, package.size() - 1) + " copied");
    scratch.put("run.py",
                "import copied\nprint(copied.loads('[1, {\"a\": null}]'), copied.dumps([1.5, 'x']))\n");
    run(scratch, "python3 -m coverage run --include=copied/* run.py");
    run(scratch, "python3 -m coverage lcov -o t.info");
    EXPECT_EQ(run(scratch, "vexcov-import lcov t.info"), "");
    run(scratch, "vexcov -nopmeter -txtbcvrgfull blocks.txt");
    const auto counts = counts_of(read_file(scratch.path() / "blocks.txt"));
    std::istringstream trace(read_file(scratch.path() / "t.info"));
    std::string file;
    std::size_t compared = 0;
    for (std::string record; std::getline(trace, record);) {
        unsigned line = 0;
        long count = 0;
        if (record.starts_with("SF:"))
            file = record.substr(3);
        if (std::sscanf(record.c_str(), "DA:%u,%ld", &line, &count) != 2)
            continue;
        ++compared;
        const auto known = counts.find(file);
        const bool covered =
            known != counts.end() && known->second.contains(line) && known->second.at(line) > 0;
        EXPECT_EQ(covered, count > 0) << file << ":" << line;
    }
    EXPECT_GT(compared, 100U);
}
