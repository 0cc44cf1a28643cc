// Golden cases: whole runs of the program, compared byte by byte.
//
// A case is a directory below cases/:
//   input/     what lies in the scratch directory before the first command. A file NAME.dpitext is compiled
//              to NAME.dpi (tools/profile_text.h). A directory input/bin becomes the program search path.
//   command    one command a line: "vexcov ARGUMENTS..." or that of another program is run by a shell,
//              "cd DIRECTORY" sets the directory of the runs that follow, relative to the scratch directory,
//              and makes it if need be.
//              Lines that begin with "#" are comments.
//              The path of the scratch directory stands as "SCRATCH" in what they write.
//   needs      "gnu-names" where the case holds C++ names that GNU's C++ library writes in its own way
//   shows      patterns, one a line, of the files that the case is about; without it, all are
//   expected/  every file that the commands made or changed, and "console": for each run the command, what it
//              wrote to its standard streams and its exit status. Of the files that the case is not about,
//              "digests" has the SHA-1 digests, as sha1sum writes them.
//
// With VEXCOV_UPDATE_GOLDEN set the expected files are rewritten instead (scripts/update-golden).
#include "tests/tools/profile_text.h"
#include "tests/tools/scratch.h"

#include <algorithm>
#include <boost/uuid/detail/sha1.hpp>
#include <cstdlib>
#include <cstring>
#include <cxxabi.h>
#include <filesystem>
#include <fnmatch.h>
#include <gtest/gtest.h>
#include <iomanip>
#include <map>
#include <set>
#include <sstream>
#include <string>

namespace fs = std::filesystem;

using file_tree = std::map<std::string, std::string>; ///< bytes or digests of files by their relative paths

static const fs::path kCases = fs::path(VEXCOV_TEST_DATA) / "golden/cases";

/// The text with "SCRATCH" for the path of the scratch directory.
static std::string without_path(std::string text, const fs::path& scratch) {
    const std::string path = scratch.string();
    for (std::size_t at = text.find(path); at != std::string::npos; at = text.find(path, at))
        text.replace(at, path.size(), "SCRATCH");
    return text;
}

/// The text with what glibc says of no error, in the place of what this system's C library says.
static std::string with_glibc_success(std::string text) {
    const std::string own = std::string(": ") + std::strerror(0) + "\n";
    for (std::size_t at = text.find(own); at != std::string::npos; at = text.find(own, at + 1))
        text.replace(at, own.size(), ": Success\n");
    return text;
}

/// LLVM's C++ library writes template arguments that end together as ">>", and names lambdas in another way.
static bool has_gnu_names() {
    int status = 0;
    char* const name = abi::__cxa_demangle("_Z1fSt6vectorIiSaIiEE", nullptr, nullptr, &status);
    const bool gnu = name && std::strstr(name, "> >") != nullptr;
    std::free(name);
    return gnu;
}

static file_tree read_tree(const fs::path& root) {
    file_tree tree;
    for (const auto& entry : fs::recursive_directory_iterator(root))
        if (entry.is_regular_file())
            tree[entry.path().lexically_relative(root).string()] = read_file(entry.path());
    return tree;
}

/// Copies the case's input to `scratch`, with its profiles compiled, and returns it as it stands there.
static file_tree place_input(const fs::path& input, const fs::path& scratch) {
    fs::copy(input, scratch, fs::copy_options::recursive | fs::copy_options::copy_symlinks);
    for (const auto& [name, bytes] : read_tree(scratch)) {
        if (!name.ends_with(".dpitext"))
            continue;
        write_file(scratch / name.substr(0, name.size() - 4), compile_profile_text(bytes));
        fs::remove(scratch / name);
    }
    return read_tree(scratch);
}

static std::string console_section(const std::string& head, const std::string& text) {
    if (text.empty())
        return "";
    return "[" + head + "]\n" + text + (text.back() == '\n' ? "" : "\n[no newline]\n");
}

/// Runs the case's commands and returns what they wrote to their streams.
static std::string run_commands(const fs::path& command_file, const fs::path& scratch) {
    fs::create_directory(scratch / "bin");
    std::string console;
    fs::path directory = scratch;
    std::istringstream commands(read_file(command_file));
    for (std::string line; std::getline(commands, line);) {
        if (line.empty() || line[0] == '#')
            continue;
        console += "$ " + line + "\n";
        if (line.starts_with("cd ")) {
            fs::create_directories(directory = scratch / line.substr(3));
            continue;
        }
        const program_result result = run_command(line, directory, (scratch / "bin").string());
        console += console_section("stdout", result.standard_output) +
                   console_section("stderr", result.standard_error) + "[status " +
                   std::to_string(result.status) + "]\n";
    }
    return console;
}

/// The files in `scratch` that are not just as they were placed there.
static file_tree collect_output(const fs::path& scratch, const file_tree& placed) {
    file_tree output = read_tree(scratch);
    for (const auto& [name, bytes] : placed) {
        const auto found = output.find(name);
        if (found == output.end())
            ADD_FAILURE() << "the input file " << name << " is gone";
        else if (found->second == bytes)
            output.erase(found);
    }
    return output;
}

/// True for a file that the case is about.
static bool is_shown(const fs::path& root, const std::string& name) {
    if (name == "console" || !fs::exists(root / "shows"))
        return true;
    std::istringstream patterns(read_file(root / "shows"));
    for (std::string pattern; std::getline(patterns, pattern);)
        if (fnmatch(pattern.c_str(), name.c_str(), 0) == 0)
            return true;
    return false;
}

static std::string digest_of(const std::string& bytes) {
    boost::uuids::detail::sha1 hash;
    hash.process_bytes(bytes.data(), bytes.size());
    boost::uuids::detail::sha1::digest_type digest;
    hash.get_digest(digest);
    std::ostringstream text;
    text << std::hex << std::setfill('0');
    for (const auto part : digest) // five words, or twenty bytes in newer versions of the library
        text << std::setw(2 * sizeof part) << +part;
    return text.str();
}

static file_tree read_expected(const fs::path& expected_root) {
    file_tree expected = read_tree(expected_root);
    std::istringstream digests(expected["digests"]);
    expected.erase("digests");
    for (std::string digest, name; digests >> digest && std::getline(digests >> std::ws, name);)
        expected[name] = digest;
    return expected;
}

/// Says where two texts begin to differ.
static std::string first_difference(const std::string& expected, const std::string& actual) {
    const auto place = std::mismatch(expected.begin(), expected.end(), actual.begin(), actual.end()).first -
                       expected.begin();
    const std::string same = expected.substr(0, static_cast<std::size_t>(place));
    const std::size_t start = same.rfind('\n') + 1;
    const auto line_of = [start](const std::string& text) {
        return text.substr(start, text.find('\n', start) - start);
    };
    return "line " + std::to_string(std::count(same.begin(), same.end(), '\n') + 1) +
           "\n  expected: " + line_of(expected) + "\n  actual:   " + line_of(actual);
}

static void compare(const file_tree& expected, const file_tree& actual) {
    for (const auto& [name, bytes] : expected) {
        const auto found = actual.find(name);
        if (found == actual.end())
            ADD_FAILURE() << name << ": missing";
        else if (found->second != bytes)
            ADD_FAILURE() << name << ": " << first_difference(bytes, found->second);
    }
    for (const auto& [name, bytes] : actual)
        if (!expected.contains(name))
            ADD_FAILURE() << name << ": not expected";
}

/// Makes the expected files what the program wrote.
static void update(const fs::path& root, const file_tree& actual) {
    fs::remove_all(root / "expected");
    std::string digests;
    for (const auto& [name, bytes] : actual)
        if (is_shown(root, name))
            write_file(root / "expected" / name, bytes);
        else
            digests.append(bytes).append("  ").append(name).append("\n");
    if (!digests.empty())
        write_file(root / "expected/digests", digests);
}

static std::set<std::string> case_names() {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(kCases))
        names.insert(entry.path().filename().string());
    return names;
}

class Golden : public testing::TestWithParam<std::string> {};

TEST_P(Golden, Case) {
    const fs::path root = kCases / GetParam();
    if (fs::exists(root / "needs") && !has_gnu_names())
        GTEST_SKIP() << "names are written in another way here";
    const scratch_directory scratch;
    const file_tree placed = place_input(root / "input", scratch.path());
    const std::string console = run_commands(root / "command", scratch.path());
    file_tree actual = collect_output(scratch.path(), placed);
    for (auto& [name, bytes] : actual) {
        bytes = without_path(std::move(bytes), scratch.path());
        if (!is_shown(root, name))
            bytes = digest_of(bytes);
    }
    actual["console"] = with_glibc_success(without_path(console, scratch.path()));
    if (std::getenv("VEXCOV_UPDATE_GOLDEN") != nullptr)
        return update(root, actual);
    compare(read_expected(root / "expected"), actual);
}

INSTANTIATE_TEST_SUITE_P(Cases, Golden, testing::ValuesIn(case_names()), [](const auto& test) {
    std::string name = test.param;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
});
