// A whole run of vexcov-site: the options, one source page after the other, then the pages about all of them.
#pragma once

/// Ends the run through pgt_Exit when something cannot be read or written; main calls it through
/// run_program.
void run_site(int argc, char** argv);
