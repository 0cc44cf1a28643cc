#include "fuzz/harness.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <unistd.h>

namespace fs = std::filesystem;

// ---- one call ----

void require(bool holds, const char* property) {
    if (holds)
        return;
    dprintf(STDERR_FILENO, "PROPERTY DOES NOT HOLD: %s\nThe files are in %s\n", property,
            scratch().path().c_str());
    std::abort();
}

outcome run_in_scratch(const std::function<void()>& call) {
    static const int home = open(".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    require(chdir(scratch().path().c_str()) == 0, "the scratch directory is there");
    const outcome result = run_product(call);
    require(fchdir(home) == 0, "the way back from the scratch directory");
    require(!result.ended || result.status == 0 || result.status == 1, "the exit status is 0 or 1");
    require(result.status == 0 || !result.errors.empty() || !result.output.empty(),
            "exit status 1 comes with a message");
    return result;
}

// ---- files ----

static scratch_directory make_scratch() {
    setenv("PATH", "/nonexistent", 1); // no support file of a compiler is looked for
    return {};
}

const scratch_directory& scratch() {
    static const scratch_directory directory = make_scratch();
    return directory;
}

void clear_scratch() {
    for (const fs::directory_entry& entry : fs::directory_iterator(scratch().path()))
        fs::remove_all(entry.path());
}

std::string read_scratch(const std::string& name) {
    const fs::path file = scratch().path() / name;
    return fs::is_regular_file(file) ? read_file(file) : std::string();
}

std::string escaped(std::string_view text) {
    std::string result;
    for (const char c : text)
        result += c == '<' ? "&lt;" : c == '>' ? "&gt;" : std::string(1, c);
    return result;
}

std::vector<std::string_view> split(std::string_view words, char separator) {
    std::vector<std::string_view> result;
    for (std::size_t end = words.find(separator); end != std::string_view::npos;
         end = words.find(separator)) {
        result.push_back(words.substr(0, end));
        words.remove_prefix(end + 1);
    }
    result.push_back(words);
    return result;
}

// ---- decisions ----

unsigned int byte_script::byte() {
    const std::string_view taken = take(1);
    return taken.empty() ? 0 : static_cast<unsigned char>(taken[0]);
}

std::string_view byte_script::one_of(std::string_view words, char separator) {
    const std::vector<std::string_view> choices = split(words, separator);
    return choices[below(static_cast<unsigned int>(choices.size()))];
}

std::uint32_t byte_script::number() {
    static const std::uint32_t limits[] = {0x7fffffff, 0x80000000, 0xffffffff, 0x7ffffffe,
                                           0xffff,     0x10000,    999999,     1000000};
    const unsigned int first = byte();
    if (first < 224)
        return first;
    if (first < 232)
        return limits[first - 224];
    return (first - 232) << 8 | byte();
}

std::string_view byte_script::take(std::size_t count) {
    const std::string_view taken = bytes_.substr(0, count);
    bytes_.remove_prefix(taken.size());
    return taken;
}
