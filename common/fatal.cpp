#include "common/fatal.h"

#include "common/message.h"
#include "common/output_file.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fcntl.h>
#include <new>
#include <unistd.h>

static bool out_of_memory = false; ///< something is missing in the output for lack of memory
static bool incomplete = false;    ///< something else is missing, which was said when it was noticed

void pgt_OutOfMemory() {
    out_of_memory = true;
}

void pgt_Incomplete() {
    incomplete = true;
}

bool pgt_IsIncomplete() {
    return incomplete || out_of_memory;
}

void pgt_Exit(int status) {
    throw run_end{status};
}

/// Closes what is open and returns the exit status: `status`, or 1 when some output is not complete.
static int close_run(int status) {
    bool complete = close_open_outputs() && !incomplete;
    if (status == 0 && out_of_memory) {
        print_error("out of memory, the output is not complete");
        complete = false;
    }
    const bool shown = std::ferror(stdout) == 0;
    if (std::fclose(stdout) != 0 || !shown) { // some file systems tell only then that there was no room
        print_error("cannot write standard output");
        complete = false;
    }
    if (std::fflush(stderr) != 0 || std::ferror(stderr)) {
        print_error("cannot write standard error");
        complete = false;
    }
    return complete ? status : 1;
}

/// Runs the body and returns the exit status that it asks for.
template <typename Body> static int status_of(const Body& body) {
    try {
        body();
        return 0;
    } catch (const run_end& end) {
        return end.status;
    } catch (const std::bad_alloc&) { // infeasible: begin
        print_error("out of memory");
        return 1;
        // infeasible: end
    }
}

int run_program(void (*body)(int argc, char** argv), int argc, char** argv) {
    return close_run(status_of([=] { body(argc, argv); }));
}

int run_program(const std::function<void()>& body) {
    return close_run(status_of(body));
}

/// An exception needs memory itself. Where there is none left, the language ends the program without looking
/// for a handler, and no exception is active. Any other that nobody catches is a fault of the program.
[[noreturn]] static void end_without_exception() {
    try {
        if (const std::exception_ptr active = std::current_exception())
            std::rethrow_exception(active);
    } catch (const std::bad_alloc&) {
        // before main
    } catch (...) {
        std::abort();
    }
    print_error("out of memory");
    std::exit(close_run(1));
}

/// Set before the first global variable is made, since some of them need memory.
__attribute__((constructor(101))) static void watch_for_exceptions() {
    std::set_terminate(end_without_exception);
}

void secure_process(closed_output output) {
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        if (fcntl(descriptor, F_GETFD) != -1)
            continue;
        // Every write to what is open for reading fails.
        const bool fails = descriptor == STDOUT_FILENO && output == closed_output::fails;
        // The lowest free descriptor is taken, which is this one: those below it are open by now.
        if (open("/dev/null", fails ? O_RDONLY : O_RDWR) == -1) {
            // infeasible: begin
            print_error("cannot open /dev/null");
            std::_Exit(1);
            // infeasible: end
        }
    }
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}
