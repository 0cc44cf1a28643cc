// The join of the static and the dynamic profile, one source file at a time.
#pragma once

struct COMP;

/// Joins every routine of the source file that begins with `first` with its counters: enters the blocks into
/// g_cl, builds the function table, stores the file's figures, adds to the run totals and feeds the block
/// exports. order_func must have been called for the file and `pars` must hold its markers.
/// Returns true when the file's listing is to be written. A profile that is gone or counts no run ends the
/// run with a message on standard error and exit status 1.
bool markBlocks(COMP* first);
