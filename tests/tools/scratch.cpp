#include "tests/tools/scratch.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

scratch_directory::scratch_directory() {
    std::string name = (fs::temp_directory_path() / "vexcov-test-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr)
        throw std::runtime_error("cannot make a scratch directory");
    path_ = name;
}

scratch_directory::~scratch_directory() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

std::string scratch_directory::put(const std::string& name, const std::string& bytes) const {
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

void write_file(const fs::path& path, const std::string& bytes) {
    fs::create_directories(path.parent_path());
    std::ofstream output(path, std::ios::binary);
    output << bytes;
    output.close();
    if (!output)
        throw std::runtime_error("cannot write " + path.string());
}

static std::vector<std::string> clean_environment(const std::string& search_path) {
    std::vector<std::string> environment = {"LC_ALL=C", "TZ=UTC", "PATH=" + search_path};
    for (const char* name : {"ASAN_OPTIONS", "UBSAN_OPTIONS", "LSAN_OPTIONS"})
        if (const char* value = std::getenv(name))
            environment.push_back(std::string(name) + "=" + value);
    // An instrumented program would otherwise leave its counters in the scratch directory.
    const char* profile = std::getenv("LLVM_PROFILE_FILE");
    environment.push_back(std::string("LLVM_PROFILE_FILE=") + (profile ? profile : "/dev/null"));
    return environment;
}

static std::vector<char*> pointers(std::vector<std::string>& strings) {
    std::vector<char*> result;
    for (std::string& text : strings)
        result.push_back(text.data());
    result.push_back(nullptr);
    return result;
}

static void redirect(int descriptor, const std::string& path, int flags) {
    const int file = open(path.c_str(), flags, 0600);
    if (file < 0 || dup2(file, descriptor) < 0)
        _exit(126);
    close(file);
}

program_result run_program(const std::string& program, const std::vector<std::string>& arguments,
                           const fs::path& directory, const std::string& search_path,
                           const std::string& input) {
    const scratch_directory streams;
    const std::string output = (streams.path() / "stdout").string(),
                      error = (streams.path() / "stderr").string();
    std::vector<std::string> words = arguments, environment = clean_environment(search_path);
    const std::vector<char*> argv = pointers(words), envp = pointers(environment);

    const pid_t child = fork();
    if (child == 0) {
        umask(022);
        redirect(STDIN_FILENO, input, O_RDONLY);
        redirect(STDOUT_FILENO, output, O_WRONLY | O_CREAT | O_TRUNC);
        redirect(STDERR_FILENO, error, O_WRONLY | O_CREAT | O_TRUNC);
        alarm(60);
        if (chdir(directory.c_str()) == 0)
            execve(program.c_str(), argv.data(), envp.data());
        _exit(127);
    }
    int status = 0;
    while (child > 0 && waitpid(child, &status, 0) < 0)
        if (errno != EINTR)
            break;
    if (child < 0)
        throw std::runtime_error("cannot start " + program);
    return {read_file(output), read_file(error),
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
