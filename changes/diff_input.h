// The diff that an option of a program names.
#pragma once

#include "changes/unified_diff.h"

#include <string>
#include <vector>

/// The files of the diff in the file `name`, or on standard input for "-". `strip` is what
/// unified_diff_reader takes. A diff that cannot be read or used ends the run with a message and exit status
/// 1.
std::vector<changed_file> read_diff(const std::string& name, int strip);
