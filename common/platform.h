// What systems do in different ways, or some of them not at all. No other file of the programs is made for
// one of them: the rest needs C++20 and POSIX.1-2008. VEXCOV_PORTABLE leaves Linux's ways out, to try the
// others.
#pragma once

#include <csignal>
#include <cstddef>
#include <cstdint>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <vector>

/// When the contents of the file changed last, in nanoseconds since the start of 1970; dates more than 285
/// years away from it count as 285 years.
std::int64_t modification_time(const struct stat& status);

/// As fcntl with F_SETLKW, again after a signal. The lock belongs to the open file, where the system has such
/// locks: one that the process owns would be dropped as soon as any other descriptor of the same file is
/// closed, for instance when the reference profile or a source file is the profile itself.
int wait_for_record_lock(int descriptor, struct flock* lock);

/// As pipe, with ends that are closed in programs that are started later.
int open_pipe(int ends[2]);

/// Has a pipe hold `size` bytes, where the system can and gives that many.
void enlarge_pipe(int end, int size);

/// Has `take` called with `context` and all that is written to standard error from now on, which is written
/// there as ever; null ends that. Where the C library cannot, nothing is given to it. False, with errno,
/// where it could not be begun for want of memory. `take` must not write to standard error.
bool watch_standard_error(void (*take)(void* context, const char* bytes, std::size_t size) noexcept,
                          void* context);

/// The number of processors that this process may use, at least 1.
unsigned usable_processors();

/// Has what outlives its parent among the descendants of this process become its child, where the system can.
void adopt_orphans();

/// The children in this process's session, adopted ones included; daemons have a session of their own. Empty
/// where the system does not tell.
std::vector<pid_t> own_children();

/// A signal that has arrived.
struct arrived_signal {
    int number;
    bool of_process; ///< sent by a process, not by the terminal or the system
};

/// Blocks the signals and keeps those that arrive for next_signal, until forget_signals. False, with errno,
/// when the system cannot.
bool keep_signals(const sigset_t& signals);

/// Waits until a signal is kept, `descriptor` (-1 for none) can be read, or `milliseconds` (-1 for any
/// number) have passed.
void wait_for_signal(int descriptor, int milliseconds);

/// Takes the next signal that is kept. False when there is none.
bool next_signal(arrived_signal* signal);

/// Keeps no more signals. They stay blocked. A child process that goes on in this program calls it, too.
void forget_signals();
