#!/usr/bin/env python3
"""Runs the fault drivers and prints the table of figures; the status is 0 only without violations.

    torture.py [--quick] [WORD...]

With words only the checks whose names hold one of them. VEXCOV_BUILD names the build directory, VEXCOV_JOBS the
number of processes."""

import shutil
import sys
import time

import calls
import damage
import fault_run
import locking
import resources
import surroundings

CHECKS = {**damage.CHECKS, **calls.CHECKS, **resources.CHECKS, **locking.CHECKS, **surroundings.CHECKS}
SHOWN = 20  # violations of one check
LAYOUT = "{:<34}{:>8}{:>10}{:>10}{:>12}{:>8}{:>8}  {}"


def figures_of(name, quick):
    """Makes the runs of a check: how many there were, with status 0, with 1, violations, MiB, seconds, and a note."""
    started = time.monotonic()
    runs, violations, peak, note = [], 0, 0, ""
    for result in CHECKS[name](quick):
        if isinstance(result, str):
            note = result
            continue
        what, outcome, problem = result
        runs.append(outcome.status)
        peak = max(peak, -(-outcome.peak // fault_run.MIB))
        violations += bool(problem)
        if problem and violations <= SHOWN:
            print(f"VIOLATION {name}: {what}: {problem}", flush=True)
    return len(runs), runs.count(0), runs.count(1), violations, peak, round(time.monotonic() - started), note


def main(arguments):
    words = [word for word in arguments if word != "--quick"]
    names = [name for name in CHECKS if not words or any(word in name for word in words)]
    rows = [figures_of(name, "--quick" in arguments) for name in names]
    print(LAYOUT.format("check", "runs", "status 0", "status 1", "violations", "MiB <=", "s", ""))
    for name, row in zip(names, rows):
        print(LAYOUT.format(name, *row))
    runs, complete, refused, violations = (sum(row[i] for row in rows) for i in range(4))
    print(LAYOUT.format("all", runs, complete, refused, violations, "", "", ""))
    return 1 if violations or not runs else 0


if __name__ == "__main__":
    try:
        sys.exit(main(sys.argv[1:]))
    finally:
        shutil.rmtree(fault_run.SCRATCH, ignore_errors=True)
