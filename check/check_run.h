// What vexcov-check does with its arguments.
#pragma once

/// Exit status of a run that found a floor that is not held.
constexpr int kFloorNotHeld = 2;

/// Compares the coverage with the floors that are asked for and writes what it found to standard output.
/// Comes back when all are held; otherwise ends the run with kFloorNotHeld, and with 1 when the inputs cannot
/// be used.
void run_check(int argc, char** argv);
