#!/usr/bin/env python3
"""Runs the fault drivers and prints the table of figures; the status is 0 only without violations.

    torture.py [--quick] [WORD...]

With words only the checks whose names hold one of them. VEXCOV_BUILD names the build directory, VEXCOV_JOBS the
number of processes."""

import shutil
import sys
import time

import allocation
import damage
import fault_run
import locking
import resources
import surroundings
import system_calls

CHECKS = (
    *damage.CHECKS,
    *allocation.CHECKS,
    *system_calls.CHECKS,
    *resources.CHECKS,
    *locking.CHECKS,
    *surroundings.CHECKS,
)


def main(arguments):
    quick = "--quick" in arguments
    words = [word for word in arguments if word != "--quick"]
    rows = []
    for name, check in CHECKS:
        if words and not any(word in name for word in words):
            continue
        started = time.monotonic()
        row = check(fault_run.Row(name), quick)
        row.seconds = time.monotonic() - started
        rows.append(row)
        for violation in row.violations[:20]:
            print(f"VIOLATION {name}: {violation}", flush=True)
        if len(row.violations) > 20:
            print(f"VIOLATION {name}: and {len(row.violations) - 20} more", flush=True)
    violations = fault_run.print_table(rows)
    return 1 if violations or not rows else 0


if __name__ == "__main__":
    try:
        sys.exit(main(sys.argv[1:]))
    finally:
        shutil.rmtree(fault_run.SCRATCH, ignore_errors=True)
