#include "common/fatal.h"

#include "common/output_file.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

void (*pgt_ExitHook)(int status) = nullptr;

void pgt_Exit(int status) {
    if (pgt_ExitHook)
        pgt_ExitHook(status);
    bool complete = close_open_outputs();
    if (std::fflush(stdout) != 0 || std::ferror(stdout)) {
        std::fputs("ERROR: cannot write standard output\n", stderr);
        complete = false;
    }
    if (std::fflush(stderr) != 0 || std::ferror(stderr))
        complete = false;
    std::exit(complete ? status : 1);
}

void secure_standard_streams() {
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        if (fcntl(descriptor, F_GETFD) != -1)
            continue;
        // The lowest free descriptor is taken, which is this one: those below it are open by now.
        if (open("/dev/null", O_RDWR) == -1)
            std::_Exit(1); // infeasible
    }
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}
