#include "import/gcc/gcov_program.h"

#include "common/message.h"
#include "import/gcc/child_process.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <optional>
#include <string_view>
#include <unistd.h>
#include <utility>

constexpr unsigned kOldestGcc = 9; ///< the first whose gcov writes JSON

bool has_gcov(const compiler_version& version) {
    return version.major >= kOldestGcc;
}

/// Whether PATH leads to the program.
static bool is_in_path(const std::string& program) {
    const char* const variable = std::getenv("PATH");
    std::string_view path = variable ? variable : "";
    while (!path.empty()) {
        const std::string_view directory = path.substr(0, path.find(':'));
        path.remove_prefix(std::min(path.size(), directory.size() + 1));
        if (access((std::string(directory) + "/" + program).c_str(), X_OK) == 0)
            return true;
    }
    return false;
}

/// Decodes "gcov (Debian 12.2.0-14) 12.2.0": the version is the first number behind the parentheses.
static compiler_version version_in(std::string_view text) {
    text = text.substr(0, text.find('\n'));
    const std::size_t closed = text.rfind(") ");
    if (!text.starts_with("gcov") || closed == std::string_view::npos)
        return {};
    compiler_version version;
    unsigned* part = &version.major;
    for (const char c : text.substr(closed + 2)) {
        if (c == '.' && part == &version.major)
            part = &version.minor;
        else if (std::isdigit(static_cast<unsigned char>(c)) && *part < 1000)
            *part = *part * 10 + static_cast<unsigned>(c - '0');
        else
            break;
    }
    return version;
}

/// What a program says of itself; nothing when it cannot be run.
static std::optional<compiler_version> version_of(const std::string& program) {
    child_process child;
    if (child.start(program, {"--version"}) != 0)
        return std::nullopt;
    std::string text;
    for (std::string_view piece = child.read(); !piece.empty() && text.size() < 4096; piece = child.read())
        text += piece;
    if (child.finish().status == 127 && text.empty()) // the system found out too late that it is no program
        return std::nullopt;
    return version_in(text);
}

/// What is there instead of the program that would be right.
static std::string describe(const std::string& program, const std::optional<compiler_version>& version) {
    const std::string name = printable(program);
    if (!version)
        return name + " is not there";
    return version->major == 0 ? name + " does not tell its version" : name + " is of " + version->text();
}

std::string gcov_programs::find(const gcc_object& object) const {
    const std::string program = given_.empty() ? "gcov" : given_;
    const std::string versioned = "gcov-" + std::to_string(object.version.major);
    if (given_.empty() && is_in_path(versioned))
        return versioned;
    const std::optional<compiler_version> version = version_of(program);
    if (version && version->major == object.version.major)
        return program;
    const std::string compiled = shown_path(object.notes) + " was compiled by " + object.version.text();
    if (given_.empty())
        end_with_error(
            "%s, and there is no gcov of that version: there is no %s in PATH, and %s (name one with -gcov)",
            compiled.c_str(), versioned.c_str(), describe(program, version).c_str());
    if (!version)
        end_with_error("cannot run %s; name another with -gcov", printable(program).c_str());
    if (version->major != 0)
        end_with_error("%s, and %s; name one of that version with -gcov", compiled.c_str(),
                       describe(program, version).c_str());
    return program;
}

const std::string& gcov_programs::program_for(const gcc_object& object) {
    const unsigned major = object.version.major;
    const auto found = known_.find(major);
    if (found != known_.end())
        return found->second;
    if (!has_gcov(object.version))
        end_with_error("%s was compiled by clang, or by %s, whose gcov writes no JSON; for clang, build with "
                       "-fprofile-instr-generate -fcoverage-mapping and see vexcov-import clang",
                       shown_path(object.notes).c_str(), object.version.text().c_str());
    return known_.emplace(major, find(object)).first->second;
}
