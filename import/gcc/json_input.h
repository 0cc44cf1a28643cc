// JSON of gcov from files, compressed or not, and from standard input.
#pragma once

#include "import/gcc/gcov_document.h"

#include <functional>
#include <string>

/// Whether an input of the command line is JSON: its name ends in .json or .json.gz, or is "-", the standard
/// input.
bool is_json_input(const std::string& input);

/// Reads all documents of an input. A fault ends the run with a message; then nothing of the document at
/// fault was handed out.
void read_json_input(const std::string& input, const std::function<void(const gcov_document&)>& on_document);
