// The one way out of a run.
//
// Every fatal condition leaves through pgt_Exit. It unwinds to whoever started the run, so that everything in
// between lets go of what it holds; in the programs that is main, through run_program, which also closes what
// is open, so that pages and exports written so far are whole up to that point and no failed write goes
// unnoticed.
#pragma once

#include <functional>

/// What pgt_Exit throws. Not a std::exception, so that no handler of the program takes it for a fault.
struct run_end {
    int status; ///< exit status that was asked for
};

/// Ends the run: throws run_end.
[[noreturn]] void pgt_Exit(int status);

/// Runs `body`, closes every stream of output_file.h that is still open, flushes the standard streams and
/// returns the exit status: 0 when the body came back, that of pgt_Exit when it did not, and 1 after a
/// message when memory ran out. Where an output could not be written in full, "cannot write %s" goes
/// to standard error and the status is 1 whatever was asked for. For main, once.
int run_program(void (*body)(int argc, char** argv), int argc, char** argv);

/// The same for a process that a program started of itself, once.
int run_program(const std::function<void()>& body);

/// Remembers that a part of the output was given up for lack of memory, so that the run, which goes on, does
/// not end with status 0. Then run_program says so.
void pgt_OutOfMemory();

/// Remembers that a part of the input could not be taken into account, which has been said on standard error:
/// the run goes on, so that the rest is not lost, and ends with status 1.
void pgt_Incomplete();

/// Whether pgt_Incomplete or pgt_OutOfMemory was called.
bool pgt_IsIncomplete();

/// What becomes of text for a standard output that the caller closed.
enum class closed_output {
    dropped, ///< nobody misses it
    fails    ///< it is the result: run_program tells that it cannot be written
};

/// Opens the null device in place of each standard stream that the caller closed, so that no page can be
/// opened on descriptor 0, 1 or 2, and lets a write to a closed pipe or beyond the file size limit fail
/// instead of killing the process. The programs call it first.
void secure_process(closed_output output = closed_output::dropped);
