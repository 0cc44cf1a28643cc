// The usage text.
#pragma once

/// Prints the usage text to standard output; `program` is the program's invocation name.
void print_usage(const char* program);
