// The one way out of the program.
//
// Every fatal condition, and the normal end of a run, leaves through pgt_Exit, so that pages and
// exports written so far are whole up to that point and no failed write goes unnoticed.
#pragma once

/// Ends the process: closes every stream of output_file.h that is still open, flushes the standard
/// streams and exits with `status`. Where an output could not be written in full, "ERROR: cannot write %s"
/// goes to standard error and the exit status is 1 whatever was asked for.
[[noreturn]] void pgt_Exit(int status);

/// Remembers that a part of the output was given up for lack of memory, so that the run, which goes on, does
/// not end with status 0. Then pgt_Exit says so.
void pgt_OutOfMemory();

/// Remembers that a part of the input could not be taken into account, which has been said on standard error:
/// the run goes on, so that the rest is not lost, and ends with status 1.
void pgt_Incomplete();

/// Whether pgt_Incomplete or pgt_OutOfMemory was called.
bool pgt_IsIncomplete();

/// Called first by pgt_Exit when set. It may throw to get control back instead of ending the process, as
/// in-process drivers of hostile inputs do; when it returns, the process ends. Null in the shipped programs.
extern void (*pgt_ExitHook)(int status);

/// Opens the null device in place of each standard stream that the caller closed, so that no page can be
/// opened on descriptor 0, 1 or 2, and lets a write to a closed pipe or beyond the file size limit fail
/// instead of killing the process. The programs call it first.
void secure_process();
