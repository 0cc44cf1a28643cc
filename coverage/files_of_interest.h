// The component-list file: which source files are of interest, and further infeasible-code markers.
#pragma once

#include <string>
#include <vector>

/// File-name patterns in file order; empty when every file is of interest. "~" in front excludes.
extern std::vector<std::string> moduleName;

/// Reads the component-list file and appends to moduleName and the marker lists of the run configuration.
/// Does nothing for a null path. Returns 0; an unusable file ends the run with a message on standard error
/// and exit status 1.
int getModuleNames(const char* path);

/// The text between the first pair of double quotation marks from `p` on, ended in place, or null when the
/// line ends before an opening or a closing mark. An empty text ends the run with exit status 1.
char* find_quota(char* p);

/// True when a source file is of interest: no pattern at all, or some including pattern and no excluding one
/// occurs in its name. The other two names are not examined.
bool isInComponents(const char* fileName, const char* displayName, const char* procName);
