// The join of the static and the dynamic profile, one source file at a time: a thin layer that has the file
// analysed (source_analysis.h) and fills the process-wide records from the result.
#pragma once

struct COMP;

/// What became of a source file.
enum class marking {
    listed,         ///< its listing is to be written
    source_missing, ///< there is no such file
    given_up,       ///< for lack of memory; the dynamic profile is closed
    nothing_new     ///< differential mode: the reference covers all of it
};

/// Joins every routine of the source file that begins with `first` with its counters: hands the analysis to
/// g_cl, builds the function table, stores the file's figures, adds to the run totals and feeds the block
/// exports. `pars` must hold the file's markers. A profile that is gone or counts no run ends the run with a
/// message on standard error and exit status 1.
marking mark_source_file(const COMP* first);

/// mark_source_file; true when the listing is to be written.
bool markBlocks(const COMP* first);
