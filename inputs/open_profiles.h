// Opening the profiles of a run. What cannot be opened ends it with a message on standard error and exit
// status 1.
#pragma once

struct DPI_FILE;

/// The dynamic profile `name`; the caller closes it.
DPI_FILE* open_dynamic_profile(const char* name);

/// The profile `name` of the reference run, with which `profile` is to be compared.
DPI_FILE* open_reference_profile(const char* name, DPI_FILE* profile);

/// Proves that the static profile exists before anything is written.
void probe_static_profile(const char* name);
