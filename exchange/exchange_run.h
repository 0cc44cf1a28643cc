// vexcov-export, all of it.
#pragma once

/// Reads the arguments, walks over the coverage once and writes every format that was asked for: files
/// together or not at all. For run_program.
void run_exchange(int argc, char** argv);
