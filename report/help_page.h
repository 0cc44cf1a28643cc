// The on-line help page of a report.
#pragma once

/// Writes the help page, with the colours of this run, into the report directory. False, without a message,
/// when it cannot be created. The page is whole once the run has ended: its stream stays open until then.
bool createOnLineHelp(const char* ext);
