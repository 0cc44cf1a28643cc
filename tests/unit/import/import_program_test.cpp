// The importer as a process: recorded exports, merging, the command line, failures.
#include "tests/tools/scratch.h"
#include "tests/unit/import/profile_dump.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

namespace fs = std::filesystem;

static const fs::path recorded = fs::path(VEXCOV_TEST_DATA) / "data" / "import";

/// Runs the importer in a directory; the search path finds the usual tools.
static program_result import(const fs::path& directory, std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "vexcov-import");
    return run_program(VEXCOV_IMPORT_PROGRAM, arguments, directory, "/usr/bin:/bin");
}

static program_result shell(const fs::path& directory, const std::string& command) {
    return run_program("/bin/sh", {"sh", "-c", command}, directory, "/usr/bin:/bin");
}

/// An export of functions in JSON.
static std::string exported(const std::string& functions) {
    return R"({"version":"2.0.1","type":"llvm.coverage.json.export","data":[{"functions":[)" + functions +
           "]}]}";
}

/// A function of `file` with one region.
static std::string function(const std::string& name, const std::string& file, const std::string& count,
                            const std::string& extent = "1,1,2,2") {
    return R"({"name":")" + name + R"(","filenames":[")" + file + R"("],"count":)" + count +
           R"(,"regions":[[)" + extent + "," + count + ",0,0,0]]}";
}

class ImportProgram : public testing::Test {
  protected:
    fs::path path(const std::string& name) const { return scratch_.path() / name; }
    program_result run(const std::vector<std::string>& arguments) {
        return import(scratch_.path(), arguments);
    }
    std::string dpi() const { return dump_profile(read_file(path("pgopti.dpi"))); }
    std::string spi() const { return read_file(path("pgopti.spi")); }
    bool nothing_written() const {
        return !fs::exists(path("pgopti.dpi")) && !fs::exists(path("pgopti.spi"));
    }

    void copy_recorded(const std::vector<std::string>& names) {
        for (const std::string& name : names)
            write_file(path(name), read_file(recorded / name));
    }

    scratch_directory scratch_;
};

TEST_F(ImportProgram, RecordedControlFlow) {
    copy_recorded({"flow.cpp", "flow.json"});
    const program_result result = run({"clang", "flow.json"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.standard_error + result.standard_output, "");
    EXPECT_EQ(spi(), "./flow.cpp - _Z12never_calledi 52 5 I\n"
                     "./flow.cpp - _ZL5loopsi 16 15 I\n"
                     "./flow.cpp - _ZL6choosei 30 13 I\n"
                     "./flow.cpp - _ZL8branchesii 2 20 I\n"
                     "./flow.cpp - _ZL8straightv 50 2 I\n"
                     "./flow.cpp - main 58 2 I\n");
    EXPECT_EQ(
        dpi(),
        "runs 1\n"
        "./flow.cpp'_ZL5loopsi' _ZL5loopsi: 16:25=1 18:21=4 18:28=3 19:9=3 20:5=1 20:12=1 20:22=0 23:5=1 "
        "23:8=1 "
        "25:7=1 25:14=1 25:22=1 25:25=1 26:5=1 28:1=0 entry 0\n"
        "./flow.cpp'_ZL6choosei' _ZL6choosei: 30:26=2 33:5=1 36:5=1 37:5=1 40:5=2 40:9=2 41:13=2 42:13=0 "
        "43:9=2 44:7=2 44:19=0 47:5=2 48:1=0 entry 0\n"
        "./flow.cpp'_ZL8branchesii' _ZL8branchesii: 2:35=1 3:9=1 3:11=1 3:14=1 4:9=0 5:5=1 5:9=1 5:16=0 "
        "7:12=1 "
        "7:16=1 7:19=0 10:9=1 12:5=1 12:13=1 12:15=1 12:17=1 12:19=1 12:21=0 13:5=1 14:1=0 entry 0\n"
        "./flow.cpp'_ZL8straightv' _ZL8straightv: 50:23=1 50:35=1 entry 0\n"
        "./flow.cpp'main' main: 58:12=1 58:90=1 entry 0\n");
}

TEST_F(ImportProgram, RecordedKindsOfFunctions) {
    copy_recorded({"features.cpp", "features.h", "features.json"});
    EXPECT_EQ(run({"clang", "-runs", "3", "features.json"}).status, 0);
    EXPECT_EQ(
        dpi(),
        "runs 3\n"
        "./features.cpp'_Z5applyIZ4mainE3$_0EiT_i' _Z5applyIZ4mainE3$_0EiT_i: 24:45=1 26:21=1 26:28=0 27:9=0 "
        "28:5=1 29:1=0 entry 0\n"
        "./features.cpp'_Z5applyIZ4mainE3$_1EiT_i' _Z5applyIZ4mainE3$_1EiT_i: 24:45=1 26:21=4 26:28=3 27:9=3 "
        "28:5=1 29:1=1 entry 0\n"
        "./features.cpp'_Z5fortyv' _Z5fortyv: 6:47=1 6:63=1 entry 0\n"
        "./features.cpp'_ZN12_GLOBAL__N_16hiddenEi' _ZN12_GLOBAL__N_16hiddenEi: 32:19=1 33:9=1 34:9=0 36:9=1 "
        "37:5=1 38:1=0 entry 0\n"
        "./features.cpp'_ZN7counterC2Ei' _ZN7counterC2Ei: 15:40=3 16:5=3 entry 0\n"
        "./features.cpp'_ZN7counterD2Ev' _ZN7counterD2Ev: 17:16=3 17:29=3 entry 0\n"
        "./features.cpp'_ZNK7countercvbEv' _ZNK7countercvbEv: 21:27=1 21:48=1 entry 0\n"
        "./features.cpp'_ZNK7counterplERKS_' _ZNK7counterplERKS_: 18:51=1 20:5=1 entry 0\n"
        "./features.cpp'_ZZ4mainENK3$_1clEi' _ZZ4mainENK3$_1clEi: 47:30=3 47:46=3 entry 0\n"
        "./features.cpp'_ZZ4mainENK3$_2clEi' _ZZ4mainENK3$_2clEi: 50:33=1 51:13=1 51:17=1 52:17=0 53:13=1 "
        "54:9=0 "
        "entry 0\n"
        "./features.cpp'main' main: 41:12=1 42:9=1 43:9=0 44:5=1 46:6=1 47:5=1 47:47=1 49:9=1 49:12=1 55:9=1 "
        "57:5=1 60:1=0 entry 0\n"
        "./features.h'_Z5twicei' _Z5twicei: 4:29=1 6:1=1 entry 0\n"
        "./features.h'_Z6largerIdET_S0_S0_' _Z6largerIdET_S0_S0_: 8:42=1 9:9=1 10:9=0 11:5=1 12:1=0 entry 0\n"
        "./features.h'_Z6largerIiET_S0_S0_' _Z6largerIiET_S0_S0_: 8:42=1 9:9=1 10:9=1 11:5=0 12:1=0 entry 0\n"
        "./features.h'_ZL15local_in_headeri' _ZL15local_in_headeri: 14:39=1 14:48=1 14:58=1 14:60=0 14:66=1 "
        "14:68=1 14:76=0 entry 0\n");
    EXPECT_NE(spi().find("_ZZ4mainENK3$_0clEi 45 3 I\n"), std::string::npos)
        << "a lambda that was never called: first line of its code, no record";
}

TEST_F(ImportProgram, MergesInputs) {
    copy_recorded({"flow.cpp", "flow.json"});
    EXPECT_EQ(run({"clang", "flow.json", "flow.json"}).status, 0);
    EXPECT_NE(dpi().find("main: 58:12=2 58:90=2 entry 0\n"), std::string::npos);

    // Two runs that together executed everything; a static function in two programs; counts that are too
    // large.
    const auto branch = [](const char* entry, const char* inner) {
        return std::string(R"({"name":"both","filenames":["x.c"],"count":)") + entry +
               R"(,"regions":[[1,1,9,2,)" + entry + ",0,0,0],[2,3,4,5," + inner + ",0,0,0]]}";
    };
    write_file(path("1.json"),
               exported(branch("1", "0") + "," + function("one.c:local", "x.c", "5", "20,1,21,2") + "," +
                        function("big", "x.c", "9223372036854775807", "30,1,31,2")));
    write_file(path("2.json"),
               exported(branch("1", "3") + "," + function("two.c;local", "x.c", "6", "20,1,21,2") + "," +
                        function("big", "x.c", "9223372036854775807", "30,1,31,2")));
    EXPECT_EQ(run({"clang", "1.json", "2.json"}).status, 0);
    EXPECT_EQ(dpi(), "runs 1\n"
                     "x.c'big' big: 30:1=9223372036854775807 31:1=9223372036854775807 entry 0\n"
                     "x.c'both' both: 1:1=2 2:3=3 4:5=2 9:1=2 entry 0\n"
                     "x.c'local' local: 20:1=11 21:1=11 entry 0\n");
}

TEST_F(ImportProgram, DifferentBlocksKeepTheLarger) {
    const std::string small = function("f", "x.c", "7");
    const std::string large =
        R"({"name":"f","filenames":["x.c"],"count":0,"regions":[[1,1,9,2,0,0,0,0],[5,1,6,1,0,0,0,0]]})";
    for (const std::string& both : {small + "," + large, large + "," + small}) {
        write_file(path("x.json"), exported(both));
        const program_result result = run({"clang", "x.json"});
        EXPECT_EQ(
            result.standard_error,
            "WARNING: 1 functions came again with different blocks; the one with more blocks was kept\n");
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(spi(), "x.c - f 1 4 I\n");
    }
}

TEST_F(ImportProgram, KeysAreInOrder) {
    write_file(path("x.json"), exported(function("z", "a", "1") + "," + function("f", "a+b", "1") + "," +
                                        function("f", "a!b", "1") + "," + function("f$", "a", "1") + "," +
                                        function("f", "a", "1") + "," + function("g", "a'b", "1") + "," +
                                        function("\xc3\xa9", "a", "1") + "," + function("F", "a", "1")));
    EXPECT_EQ(run({"clang", "x.json"}).status, 0);
    EXPECT_EQ(spi(), "a!b - f 1 2 I\n"
                     "a - F 1 2 I\n"
                     "a'b - g 1 2 I\n"
                     "a - f$ 1 2 I\n"
                     "a - f 1 2 I\n"
                     "a - z 1 2 I\n"
                     "a - \xc3\xa9 1 2 I\n"
                     "a+b - f 1 2 I\n");
}

TEST_F(ImportProgram, RootMakesNamesRelative) {
    const std::string here = fs::canonical(scratch_.path()).string();
    write_file(path("src/a.c"), "{\n}\n");
    write_file(path("x.json"),
               exported(function("f", here + "/src/a.c", "1") + "," +
                        function("g", here + "/src/../src/a.c", "1") + "," +
                        function("h", here + "x/a.c", "1") + "," + function("i", "rel/a.c", "1")));
    const std::string outside = here + "x/a.c - h 1 2 I\n";
    EXPECT_EQ(run({"clang", "-root", here + "/", "x.json"}).status, 0);
    EXPECT_EQ(spi(), outside + "rel/a.c - i 1 2 I\nsrc/a.c - f 1 2 I\nsrc/a.c - g 1 2 I\n");
    const program_result result = run({"clang", "-root", "src/..", "x.json"});
    EXPECT_EQ(result.standard_error, "") << "the sources are found";
    EXPECT_EQ(spi(), outside + "rel/a.c - i 1 2 I\nsrc/a.c - f 1 2 I\nsrc/a.c - g 1 2 I\n");
    EXPECT_EQ(run({"clang", "-root", here + "/src", "x.json"}).status, 0);
    EXPECT_EQ(spi(), outside + "a.c - f 1 2 I\na.c - g 1 2 I\nrel/a.c - i 1 2 I\n");
}

TEST_F(ImportProgram, ChangedSourcesAreReported) {
    write_file(path("a.c"), "{\n}");
    write_file(path("x.json"),
               exported(function("f", "a.c", "1") + "," + function("g", "a.c", "1", "2,2,5,2")));
    const program_result result = run({"clang", "x.json"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.standard_error,
              "WARNING: 2 blocks lie beyond the end of their line or file; the sources have "
              "changed since the program was built\n");
}

TEST_F(ImportProgram, NamesThatCannotBeWritten) {
    write_file(path("x.json"),
               exported(function("-[A b]", "a.c", "1") + "," + function("-[A b]", "b.c", "1") + "," +
                        function("g", "my dir/a.c", "0") + "," + function("a\\u0000b", "a.c", "1") + "," +
                        function("my dir/c.c;h", "a.c", "1") + "," + function("", "a.c", "1")));
    const program_result result = run({"clang", "x.json"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(
        result.standard_error,
        "ERROR: names that are empty or have white space or control characters in them cannot be written to "
        "the static profile:\n"
        "   function \"\"\n"
        "   function \"-[A b]\"\n"
        "   function \"a\\x00b\"\n"
        "   source file \"my dir/a.c\"\n");
    EXPECT_TRUE(nothing_written());
}

TEST_F(ImportProgram, FailuresWriteNothing) {
    write_file(path("good.json"), exported(function("f", "a.c", "1")));
    write_file(path("cut.json"), exported(function("f", "a.c", "1")).substr(0, 120));
    write_file(path("none.json"), exported(""));
    struct failure {
        std::vector<std::string> arguments;
        std::string message;
    };
    const failure failures[] = {
        {{"clang", "good.json", "cut.json"}, "cut.json ends in the middle, after 120 bytes"},
        {{"clang", "none.json"}, "the input holds no functions"},
        {{"clang", "absent.json"}, "cannot open absent.json: No such file or directory"},
        {{"clang", "."}, "cannot read .: Is a directory"},
        {{"clang"}, "standard input is empty"},
        {{"clang", "-spi", "no/x", "good.json"}, "cannot create no/x."},
        {{"clang", "-dpi", "x", "-spi", "x", "good.json"},
         "the static and the dynamic profile cannot be the same file, x"},
        {{"clang", "-dpi", ".", "good.json"}, ". is not a regular file"},
        {{"gcc", "good.json"}, "unknown format gcc; the only one is clang"},
        {{}, "no format given: vexcov-import clang [options] [files] (see vexcov-import -help)"},
        {{"clang", "-x"}, "unknown option -x (vexcov-import -help lists the options)"},
        {{"clang", "-spi"}, "option -spi needs a file name"},
        {{"clang", "-runs", "0", "good.json"}, "-runs needs a number from 1 to 4294967295, not 0"},
        {{"clang", "-runs", "4294967296", "good.json"},
         "-runs needs a number from 1 to 4294967295, not 4294967296"},
        {{"clang", "-runs", "1x", "good.json"}, "-runs needs a number from 1 to 4294967295, not 1x"},
    };
    const std::size_t files = 3;
    for (const failure& each : failures) {
        const program_result result = run(each.arguments);
        EXPECT_EQ(result.status, 1) << each.message;
        EXPECT_EQ(result.standard_error.substr(0, 7 + each.message.size()), "ERROR: " + each.message);
        EXPECT_EQ(result.standard_output, "");
        EXPECT_EQ(static_cast<std::size_t>(
                      std::distance(fs::directory_iterator(scratch_.path()), fs::directory_iterator())),
                  files)
            << each.message;
    }
}

TEST_F(ImportProgram, StandardInputAndOtherNames) {
    write_file(path("x.json"), exported(function("f", "a.c", "1")));
    const std::string program = VEXCOV_IMPORT_PROGRAM;
    const program_result result = shell(scratch_.path(), program + " clang -dpi -spi -spi -runs < x.json");
    EXPECT_EQ(result.standard_error, "");
    EXPECT_EQ(read_file(path("-runs")), "a.c - f 1 2 I\n") << "the argument behind an option is its value";
    EXPECT_EQ(dump_profile(read_file(path("-spi"))), "runs 1\na.c'f' f: 1:1=1 2:1=1 entry 0\n");
    const program_result both = shell(scratch_.path(), program + " clang x.json - < x.json");
    EXPECT_EQ(both.status, 0);
    EXPECT_EQ(dpi(), "runs 1\na.c'f' f: 1:1=2 2:1=2 entry 0\n");
}

TEST_F(ImportProgram, WaitsForTheLockOfTheOldProfile) {
    if (shell(scratch_.path(), "command -v python3").status != 0)
        GTEST_SKIP() << "needs python3";
    write_file(path("x.json"), exported(function("f", "a.c", "1")));
    write_file(path("pgopti.dpi"), "an older profile");
    write_file(path("hold.py"),
               "import fcntl, os, subprocess, sys, time\n"
               "profile = open('pgopti.dpi', 'r+b')\n"
               "fcntl.lockf(profile, fcntl.LOCK_EX, 0, 16)\n"
               "importer = subprocess.Popen([sys.argv[1], 'clang', 'x.json'])\n"
               "time.sleep(0.3)\n"
               "print(importer.poll(), open('pgopti.dpi').read(), os.path.exists('pgopti.spi'))\n"
               "fcntl.lockf(profile, fcntl.LOCK_UN, 0, 16)\n"
               "print(importer.wait())\n");
    const program_result result =
        shell(scratch_.path(), std::string("python3 hold.py ") + VEXCOV_IMPORT_PROGRAM);
    EXPECT_EQ(result.standard_output, "None an older profile False\n0\n");
    EXPECT_EQ(dpi(), "runs 1\na.c'f' f: 1:1=1 2:1=1 entry 0\n");
}

TEST_F(ImportProgram, HelpAndVersion) {
    const program_result help = run({"-help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_EQ(help.standard_error, "");
    EXPECT_TRUE(help.standard_output.starts_with("Usage: vexcov-import clang "));
    const program_result version = run({"clang", "-version", "absent.json"});
    EXPECT_EQ(version.status, 0);
    EXPECT_TRUE(version.standard_output.starts_with("vexcov-import "));
}

TEST_F(ImportProgram, LiveCompiler) {
    if (shell(scratch_.path(), "command -v clang++ && command -v llvm-profdata && command -v llvm-cov")
            .status != 0)
        GTEST_SKIP() << "needs clang++, llvm-profdata and llvm-cov";
    copy_recorded({"features.cpp", "features.h"});
    // Older compilers than the recorded one have another -fcoverage-compilation-dir; -root does without.
    const program_result build = shell(
        scratch_.path(), "clang++ -fprofile-instr-generate -fcoverage-mapping features.cpp -o live && "
                         "LLVM_PROFILE_FILE=live.profraw ./live && "
                         "llvm-profdata merge live.profraw -o live.profdata && "
                         "llvm-cov export -format=text -skip-expansions -instr-profile=live.profdata ./live "
                         ">live.json");
    ASSERT_EQ(build.status, 0) << build.standard_error;
    const program_result result = run({"clang", "-root", ".", "live.json"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.standard_error, "");
    const std::string live = dpi();
    EXPECT_NE(live.find("features.h'_Z5twicei' _Z5twicei: 4:29=1 6:1=1 entry 0\n"), std::string::npos)
        << live;
    EXPECT_NE(live.find("features.cpp'_ZN7counterD2Ev' _ZN7counterD2Ev: 17:16=3 17:29=3 entry 0\n"),
              std::string::npos)
        << live;
}
