// Whole runs of vexcov-run over programs that the compilers of this machine build.
#include "tests/tools/scratch.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <pty.h>
#include <set>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace fs = std::filesystem;
using namespace std::string_literals;

/// A program whose argument says what it does: a static and a shared library, a plugin, C and C++.
static const std::pair<const char*, const char*> kSources[] = {
    {"parts/used.c", "int used(int x) {\n    return x + 1;\n}\n"},
    {"parts/never.c", "int never(void) {\n    return 1;\n}\n"},
    {"shared.cpp", "extern \"C\" int shared(int x) {\n    return x * 2;\n}\n"},
    {"plugin.cpp", "extern \"C\" int plugin(int x) {\n    return x;\n}\n"},
    {"main.cpp", R"(#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>
extern "C" int used(int);
extern "C" int shared(int);
static volatile sig_atomic_t signals = 0;
static void count(int) {
    ++signals;
}
static int in_child() {
    return 0;
}
static int load(const char* name) {
    void* library = dlopen(name, RTLD_NOW);
    if (!library)
        return 1;
    const int result = reinterpret_cast<int (*)(int)>(dlsym(library, "plugin"))(0);
    dlclose(library);
    return result;
}
static int wait_for_signals(int number) {
    for (; signals < number; usleep(10000)) {
        if (signals > 0)
            std::fclose(std::fopen("signalled", "w"));
    }
    usleep(100000);
    return signals == number ? 5 : 6;
}
int main(int argc, char** argv) {
    const char* what = argc > 1 ? argv[1] : "";
    if (std::strcmp(what, "fork") == 0) {
        int status = 1;
        if (fork() == 0)
            std::exit(in_child());
        wait(&status);
        return status;
    }
    if (std::strcmp(what, "load") == 0)
        return load(argv[2]);
    if (std::strcmp(what, "fail") == 0)
        return 3;
    if (std::strcmp(what, "die") == 0)
        std::raise(SIGSEGV);
    if (std::strcmp(what, "wait") != 0)
        return shared(used(0)) - 2;
    const int numbers[] = {SIGINT, SIGTERM, SIGHUP};
    for (const int number : numbers)
        std::signal(number, count);
    std::fclose(std::fopen("ready", "w"));
    return wait_for_signals(std::atoi(argv[2]));
}
)"}};

namespace {

class Run : public testing::TestWithParam<std::string> {
  protected:
    /// Builds the program in "a project/build"; runs start in "a project".
    void SetUp() override {
        fs::create_directories(project / "build");
        if (shell("clang --version && gcc --version && gcov --version").status != 0)
            GTEST_SKIP() << "a compiler is missing";
        fs::create_directory(scratch.path() / "tmp");
        for (const auto& [name, text] : kSources)
            write_file(project / "src" / name, text);
        build(GetParam() == "clang" ? "clang -fprofile-instr-generate -fcoverage-mapping" : "gcc --coverage");
    }

    void build(const std::string& compiler) const {
        const program_result built =
            shell("cd build && cc='" + compiler +
                  " -fPIC' && $cc -c ../src/parts/used.c ../src/parts/never.c && ar rc libparts.a used.o "
                  "never.o && "
                  "$cc -shared -x c++ ../src/shared.cpp -o libshared.so && "
                  "$cc -shared -x c++ ../src/plugin.cpp -o plugin.so && "
                  "$cc -x c++ -c ../src/main.cpp && $cc main.o -o app -L. -lparts -lshared -lstdc++ "
                  "'-Wl,-rpath,$ORIGIN' && rm main.o");
        ASSERT_EQ(built.status, 0) << built.standard_error;
    }

    /// What a shell does with a line, in the project.
    program_result shell(const std::string& line) const {
        write_file(scratch.path() / "line", line);
        return run_command("/bin/sh ../line", project, "/usr/bin:/bin");
    }

    /// Runs vexcov-run with its temporary files in a directory of its own, which must be empty behind it.
    program_result run(const std::string& arguments) const {
        const program_result result =
            shell("TMPDIR='" + (scratch.path() / "tmp").string() + "' vexcov-run " + arguments);
        EXPECT_TRUE(fs::is_empty(scratch.path() / "tmp"));
        return result;
    }

    std::set<std::string> files() const {
        std::set<std::string> names;
        for (const auto& entry : fs::recursive_directory_iterator(project))
            names.insert(entry.path().lexically_relative(project).string());
        return names;
    }

    const scratch_directory scratch;
    const fs::path project = scratch.path() / "a project";
};

/// The functions of an export and how often each ran.
std::map<std::string, int> functions_in(const fs::path& text_export) {
    std::map<std::string, int> counts;
    std::istringstream lines(read_file(text_export));
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with('"'))
            counts[line.substr(1, line.find('"', 1) - 1)] = std::stoi(line.substr(line.find('\t')));
    }
    return counts;
}

std::map<std::string, std::string> bytes_of(const fs::path& folder) {
    std::map<std::string, std::string> bytes;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        if (entry.is_regular_file())
            bytes[entry.path().lexically_relative(folder).string()] = read_file(entry.path());
    }
    return bytes;
}

} // namespace

TEST_P(Run, AddsUpAllProcessesAndLeavesOnlyTheReport) {
    shell("cd build && ./app"); // what an older run has left is no part of the report
    const std::set<std::string> before = files();
    const std::string tests = " -- sh -c 'for i in 1 2 3 4 5 6 7 8; do build/app & done; wait; build/app "
                              "fork && build/app load build/plugin.so'";
    const program_result first = run("-objects build -o 'the report/1' -txtfcvrg f.txt" + tests);
    EXPECT_EQ(first.status, 0);
    EXPECT_EQ(first.standard_error, "");
    EXPECT_NE(first.standard_output.find("files              5         4     80.00\n"), std::string::npos)
        << first.standard_output;
    EXPECT_TRUE(first.standard_output.ends_with("Report: the report/1/CODE_COVERAGE.HTML\n"));
    std::map<std::string, int> counts = functions_in(project / "f.txt");
    EXPECT_EQ(counts["used"], 8);
    EXPECT_EQ(counts["shared"], 8);
    EXPECT_EQ(counts["plugin"], 1);
    EXPECT_EQ(counts["in_child()"] + counts["in_child"], 1);
    EXPECT_EQ(counts.count("never"), 0U);
    for (const std::string& name : files())
        EXPECT_TRUE(before.contains(name) || name == "f.txt" || name.starts_with("the report")) << name;
    EXPECT_FALSE(fs::exists(project / "the report/1/pgopti.spi"));

    EXPECT_EQ(run("-objects build -o second -keep" + tests).status, 0);
    auto second = bytes_of(project / "second");
    EXPECT_EQ(second.erase("pgopti.dpi"), 1U);
    EXPECT_NE(second["pgopti.spi"].find("src/parts/never.c - never"), std::string::npos);
    second.erase("pgopti.spi");
    EXPECT_EQ(second, bytes_of(project / "the report/1"));

    const program_result third =
        run("-objects build -o third -all -ref second/pgopti.dpi -nopartial -prj demo "
            "-xmlfcvrg f.xml -dpi third.dpi -- build/app");
    EXPECT_NE(
        third.standard_output.find("total    missed   percent\nfiles              5         0      0.00\n"),
        std::string::npos)
        << third.standard_output;
    EXPECT_EQ(third.standard_error.find("Version"),
              std::string::npos); // of vexcov's messages only the others
    EXPECT_NE(third.standard_error.find("vexcov-run: warning: option -ref overrides option -nopartial.\n"),
              std::string::npos);
    EXPECT_TRUE(read_file(project / "f.xml").starts_with("<PROJECT name = \"demo\">\n"));
    EXPECT_TRUE(fs::exists(project / "third.dpi") && fs::exists(project / "third/pgopti.spi"));
}

TEST_P(Run, EndsWithTheStatusOfTheCommandOrOfTheReport) {
    const program_result failed = run("-objects build -- build/app fail");
    EXPECT_EQ(failed.status, 3);
    EXPECT_TRUE(failed.standard_output.ends_with("Report: CODE_COVERAGE.HTML\n"));
    EXPECT_TRUE(fs::exists(project / "CodeCoverage/SRC_MAIN_CPP_SRC.HTML"));
    const program_result died = run("-- sh -c 'build/app; build/app die; kill -SEGV $$'");
    EXPECT_EQ(died.status, 139);
    EXPECT_NE(
        died.standard_error.find("vexcov-run: warning: sh was ended by signal 11 (Segmentation fault)\n"),
        std::string::npos);
    EXPECT_TRUE(died.standard_output.ends_with("Report: CODE_COVERAGE.HTML\n"));

    const program_result busy = run("-o deep/er -- sh -c 'build/app; sleep 2 &'");
    EXPECT_EQ(busy.status, 0);
    EXPECT_NE(busy.standard_error.find("vexcov-run: warning: processes that the command started still run"),
              std::string::npos);
    write_file(project / "file", "");
    for (const std::string& wrong :
         {"-o file/x"s, "-o file"s, "-ref absent.dpi"s, "-comp build"s, "-objects absent"s}) {
        const program_result early = run(wrong + " -- touch ran");
        EXPECT_EQ(early.status, 1);
        EXPECT_TRUE(early.standard_error.starts_with("vexcov-run: error: ")) << early.standard_error;
        EXPECT_FALSE(fs::exists(project / "ran")) << "known before the tests run, which may take long";
    }
    EXPECT_EQ(run("-o file/x -- build/app").standard_error,
              "vexcov-run: error: cannot make the directory file/x: Not a directory; -o names another\n");
    const program_result full = run("-txtbcvrgfull /dev/full -- build/app");
    EXPECT_EQ(full.status, 1);
    EXPECT_NE(full.standard_error.find("vexcov-run: error: cannot write /dev/full; look for room"),
              std::string::npos);
    EXPECT_NE(run("-txtbcvrgfull absent/x -- build/app")
                  .standard_error.find("vexcov-run: error: Couldn't open file "),
              std::string::npos);
    const program_result silent = run("-- build/app >/dev/full");
    EXPECT_EQ(silent.status, 1);
    EXPECT_TRUE(silent.standard_error.ends_with(
        "vexcov-run: error: cannot write standard output; look at what reads it, and for room\n"));
    EXPECT_EQ(run("-- build/app fail >/dev/full").status, 1);
}

TEST_P(Run, SaysWhatIsMissing) {
    const bool clang = GetParam() == "clang";
    const program_result elsewhere = run("-objects src -- build/app fail");
    EXPECT_EQ(elsewhere.status, 3);
    EXPECT_NE(elsewhere.standard_error.find("-objects"), std::string::npos) << elsewhere.standard_error;
    const program_result outside = run("-root build -objects build -- build/app");
    EXPECT_EQ(outside.status, 1);
    EXPECT_NE(outside.standard_error.find("all source files lie outside"), std::string::npos)
        << outside.standard_error;
    const program_result other = run((clang ? "-gcc" : "-clang") + std::string(" -- build/app"));
    EXPECT_EQ(other.status, 1);
    EXPECT_NE(other.standard_error.find(clang ? "leave out -gcc" : "leave out -clang"), std::string::npos);
    const program_result cut = run("-objects build -- sh -c 'build/app; find \"${GCOV_PREFIX%/*}\" -type f "
                                   "-exec truncate -s -9 {} +'");
    EXPECT_NE(cut.standard_error.find(clang ? ".profraw ends in the middle" : " cut short "),
              std::string::npos)
        << cut.standard_error;
    EXPECT_EQ(cut.standard_error.find("vexcov-run-"), std::string::npos) << cut.standard_error;
    const program_result silent = run("-objects build -- true");
    EXPECT_EQ(silent.status, 1);
    EXPECT_NE(silent.standard_error.find(clang ? "built for coverage by clang" : "built for coverage by GCC"),
              std::string::npos);

    shell("mv build other");
    fs::create_directory(project / "build");
    build(clang ? "gcc --coverage" : "clang -fprofile-instr-generate -fcoverage-mapping");
    const program_result both = run("-- sh -c 'other/app; build/app'");
    EXPECT_EQ(both.status, 1);
    EXPECT_NE(both.standard_error.find("with -clang or -gcc\n"), std::string::npos);
    const program_result chosen = run("-objects other -" + GetParam() + " -- sh -c 'other/app; build/app'");
    EXPECT_EQ(chosen.status, 0) << chosen.standard_error;
}

TEST_P(Run, PassesASignalOnAndMakesTheReport) {
    const std::string again = "while [ ! -e signalled ]; do sleep 0.02; done; sleep 0.2; "
                              "kill -TERM $pid; wait $pid";
    const std::string start =
        " & pid=$!; while [ ! -e ready ]; do sleep 0.05; done; rm -f ready signalled; kill -TERM $pid; ";
    // Twice in a row, as timeout sends it, is once.
    const program_result once =
        run("-objects build -txtfcvrg f.txt -- build/app wait 1" + start + "kill -TERM $pid; wait $pid");
    EXPECT_EQ(once.status, 5) << once.standard_error;
    EXPECT_EQ(functions_in(project / "f.txt").count("wait_for_signals(int)") +
                  functions_in(project / "f.txt").count("wait_for_signals"),
              1U);
    // What outlives the command gets it, too.
    const program_result orphan = run("-objects build -- sh -c 'build/app wait 1; :'" + start + "wait $pid");
    EXPECT_EQ(orphan.status, 143);
    EXPECT_TRUE(orphan.standard_output.ends_with("Report: CODE_COVERAGE.HTML\n")) << orphan.standard_error;
    const program_result twice = run("-objects build -- sh -c 'echo $$ >sh; build/app wait 9; :'" + start +
                                     again + "; s=$?; kill -0 $(cat sh) || exit $s");
    EXPECT_EQ(twice.status, 143);
    EXPECT_EQ(twice.standard_output, "");
    const program_result alone = run("-objects build -- build/app wait 9" + start + again);
    EXPECT_EQ(alone.status, 143);
    EXPECT_EQ(alone.standard_output, "");
}

class RunWithGcov : public Run {};

TEST_P(RunWithGcov, ASignalEndsTheImport) {
    write_file(project / "gcov", "#!/bin/sh\n[ \"$1\" = --version ] && exec gcov --version\n"
                                 "echo $$ >ready; exec sleep 50\n");
    fs::permissions(project / "gcov", fs::perms::owner_all);
    const program_result result =
        run("-objects build -gcov ./gcov -- build/app & pid=$!; while [ ! -s ready ]; do sleep 0.05; done; "
            "kill -TERM $pid; wait $pid; s=$?; kill -0 $(cat ready) || exit $s");
    EXPECT_EQ(result.status, 143);
    EXPECT_EQ(result.standard_output, "");
}

/// Types Ctrl-C at a command's terminal once the program waits for it, and returns the exit status.
static int interrupt(const fs::path& project) {
    int terminal = -1;
    const pid_t pid = forkpty(&terminal, nullptr, nullptr, nullptr);
    if (pid == 0) {
        execl("/bin/sh", "sh", "../line", nullptr);
        std::_Exit(1);
    }
    if (pid == -1) {
        ADD_FAILURE() << "no terminal can be had";
        return -1;
    }
    while (!fs::exists(project / "ready"))
        usleep(10000);
    EXPECT_EQ(write(terminal, "\003", 1), 1);
    char text[4096];
    while (read(terminal, text, sizeof text) > 0) {
    }
    int status = 0;
    waitpid(pid, &status, 0);
    close(terminal);
    return WEXITSTATUS(status);
}

TEST_P(Run, LeavesTheKeysOfTheTerminalToTheTerminal) {
    const std::string programs = shell("command -v vexcov-run").standard_output;
    write_file(scratch.path() / "line",
               "exec '" + programs.substr(0, programs.size() - 1) + "' -objects build -- build/app wait 1\n");
    const fs::path here = fs::current_path();
    fs::current_path(project);
    EXPECT_EQ(interrupt(project), 5); // 6 where it came twice
    fs::current_path(here);
    EXPECT_TRUE(fs::exists(project / "CODE_COVERAGE.HTML"));
}

/// The fenced blocks of a document with what stands behind the fence.
static std::vector<std::pair<std::string, std::string>> blocks_in(const fs::path& document) {
    std::vector<std::pair<std::string, std::string>> blocks;
    std::istringstream lines(read_file(document));
    bool inside = false;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("```") && !inside)
            blocks.emplace_back(line.substr(3), "");
        if (line.starts_with("```"))
            inside = !inside;
        else if (inside)
            blocks.back().second += line + "\n";
    }
    return blocks;
}

TEST(RunExample, ShowsTheFiguresOfItsReadme) {
    const scratch_directory scratch;
    const fs::path folder = scratch.path() / "example";
    fs::copy(fs::path(VEXCOV_TEST_DATA) / "../examples/cmake", folder, fs::copy_options::recursive);
    program_result result;
    std::size_t compared = 0;
    const std::string readme = read_file(fs::path(VEXCOV_TEST_DATA) / "../README.md");
    std::size_t shown_in_readme = 0; // of one compiler only
    for (const auto& [kind, text] : blocks_in(folder / "README.md")) {
        if (kind == "sh") {
            write_file(scratch.path() / "line",
                       "set -e; export CMAKE_GENERATOR=Ninja vexcov_ROOT='" +
                           fs::canonical(fs::path(VEXCOV_TEST_DATA) / "..").string() + "'\n" + text);
            result = run_command("/bin/sh ../line", folder, "/usr/bin:/bin");
            ASSERT_EQ(result.status, 0) << result.standard_error << result.standard_output;
            continue;
        }
        std::string shown = text; // where it is built, the report has an absolute name
        shown.insert(shown.find("build/"), fs::canonical(folder).string() + "/");
        EXPECT_TRUE(result.standard_output.ends_with(shown)) << result.standard_output;
        const std::string blocks = text.substr(text.find("blocks"), std::string("blocks").size() + 31);
        shown_in_readme += readme.find(blocks) != std::string::npos;
        ++compared;
    }
    EXPECT_EQ(compared, 2U);
    EXPECT_EQ(shown_in_readme, 1U);
}

INSTANTIATE_TEST_SUITE_P(Compilers, Run, testing::Values("clang", "gcc"));
INSTANTIATE_TEST_SUITE_P(Compilers, RunWithGcov, testing::Values("gcc"));
