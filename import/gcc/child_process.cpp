#include "import/gcc/child_process.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

constexpr std::size_t kPieceSize = std::size_t{1} << 16;
[[maybe_unused]] constexpr int kPipeSize = 1 << 20; ///< what a pipe is to hold, where that can be told

namespace {

/// What the new process is to have: streams, and the signals that the importer ignores as they were.
class spawn_settings {
  public:
    explicit spawn_settings(int output) {
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        posix_spawnattr_init(&attributes);
        sigset_t defaults;
        sigemptyset(&defaults);
        sigaddset(&defaults, SIGPIPE);
        sigaddset(&defaults, SIGXFSZ);
        posix_spawnattr_setsigdefault(&attributes, &defaults);
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
    }
    spawn_settings(const spawn_settings&) = delete;
    spawn_settings& operator=(const spawn_settings&) = delete;
    ~spawn_settings() {
        posix_spawn_file_actions_destroy(&actions);
        posix_spawnattr_destroy(&attributes);
    }

    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
};

} // namespace

/// The environment with another locale, as posix_spawn wants it. gcov spends much of its time on memory: it
/// takes it in small pieces and gives it back between objects. So it gets settings of the C library for that,
/// unless there are some.
static std::vector<char*> environment_of_child() {
    static char english[] = "LC_ALL=C";
    static char memory[] = "GLIBC_TUNABLES=glibc.malloc.hugetlb=1:glibc.malloc.top_pad=8388608:"
                           "glibc.malloc.trim_threshold=1073741824:glibc.malloc.mmap_threshold=33554432:"
                           "glibc.malloc.tcache_count=127";
    std::vector<char*> result;
    for (char** variable = environ; variable && *variable; ++variable) {
        if (std::strncmp(*variable, "LC_ALL=", 7) != 0)
            result.push_back(*variable);
    }
    result.push_back(english);
    if (!std::getenv("GLIBC_TUNABLES"))
        result.push_back(memory);
    result.push_back(nullptr);
    return result;
}

int child_process::start(const std::string& program, const std::vector<std::string>& arguments) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        return errno;
    std::vector<char*> argv = {const_cast<char*>(program.c_str())};
    for (const std::string& argument : arguments)
        argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
#ifdef F_SETPIPE_SZ
    fcntl(ends[1], F_SETPIPE_SZ, kPipeSize); // the program need not wait then; it may be too much to ask for
#endif
    const spawn_settings settings(ends[1]);
    std::vector<char*> environment = environment_of_child();
    const int error = posix_spawnp(&process_, program.c_str(), &settings.actions, &settings.attributes,
                                   argv.data(), environment.data());
    close(ends[1]);
    if (error != 0) {
        close(ends[0]);
        process_ = -1;
        return error;
    }
    output_ = ends[0];
    return 0;
}

std::string_view child_process::read() {
    piece_.resize(kPieceSize);
    ssize_t size;
    do {
        size = ::read(output_, piece_.data(), piece_.size());
    } while (size < 0 && errno == EINTR);
    return {piece_.data(), size > 0 ? static_cast<std::size_t>(size) : 0};
}

child_end child_process::finish() {
    if (output_ != -1)
        close(output_);
    output_ = -1;
    int status = 0;
    while (process_ != -1 && waitpid(process_, &status, 0) == -1 && errno == EINTR) {
    }
    process_ = -1;
    if (WIFSIGNALED(status))
        return {WTERMSIG(status), 0};
    return {0, WEXITSTATUS(status)};
}

void child_process::stop() {
    if (process_ != -1)
        kill(process_, SIGKILL);
}

child_process::~child_process() {
    stop();
    finish();
}
