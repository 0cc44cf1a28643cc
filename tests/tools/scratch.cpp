#include "tests/tools/scratch.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <sys/wait.h>

namespace fs = std::filesystem;

scratch_directory::scratch_directory() {
    for (const fs::path& parent : {fs::path("/dev/shm"), fs::temp_directory_path()}) {
        std::string name = (parent / "vexcov-test-XXXXXX").string();
        if (mkdtemp(name.data())) {
            path_ = fs::path(name) / "files";
            fs::create_directory(path_);
            return;
        }
    }
    throw std::runtime_error("cannot make a scratch directory");
}

scratch_directory::~scratch_directory() {
    std::error_code ignored;
    fs::remove_all(path_.parent_path(), ignored);
}

std::string scratch_directory::put(const std::string& name, std::string_view bytes) const {
    write_file(path_ / name, bytes);
    return (path_ / name).string();
}

std::string read_file(const fs::path& path) {
    std::ifstream input(path, std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(input), std::istreambuf_iterator<char>()};
    if (!input)
        throw std::runtime_error("cannot read " + path.string());
    return bytes;
}

void write_file(const fs::path& path, std::string_view bytes) {
    fs::create_directories(fs::absolute(path).parent_path());
    std::ofstream output(path, std::ios::binary);
    output << bytes;
    output.close();
    if (!output)
        throw std::runtime_error("cannot write " + path.string());
}

program_result run_command(const std::string& command, const fs::path& directory,
                           const std::string& search_path) {
    const scratch_directory streams;
    // An instrumented program would otherwise leave its counters in the directory.
    const std::string line =
        "cd '" + directory.string() +
        "' && set -f && umask 022 && exec env -i LC_ALL=C TZ=UTC PATH='" VEXCOV_PROGRAMS ":" + search_path +
        "' LLVM_PROFILE_FILE=\"${LLVM_PROFILE_FILE-/dev/null}\""
        " ASAN_OPTIONS=\"$ASAN_OPTIONS\" LSAN_OPTIONS=\"$LSAN_OPTIONS\""
        " UBSAN_OPTIONS=\"$UBSAN_OPTIONS\" </dev/null >'" +
        streams.path().string() + "/output' 2>'" + streams.path().string() + "/errors' /usr/bin/timeout 60 " +
        command;
    const int status = std::system(line.c_str());
    return {read_file(streams.path() / "output"), read_file(streams.path() / "errors"),
            WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status)};
}

std::string written(const std::function<void(std::FILE*)>& write) {
    char* text = nullptr;
    std::size_t size = 0;
    std::FILE* stream = open_memstream(&text, &size);
    write(stream);
    std::fclose(stream);
    const std::string result(text, size);
    std::free(text);
    return result;
}
