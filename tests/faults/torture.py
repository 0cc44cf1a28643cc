#!/usr/bin/env python3
"""Runs the fault drivers and prints the table of figures; the status is 0 only without violations.

    torture.py [--quick] [WORD...]

With words only the checks whose names hold one of them. VEXCOV_BUILD names the build directory, VEXCOV_JOBS the
number of processes."""

import shutil
import sys
import time
from dataclasses import dataclass

import calls
import damage
import fault_run
import locking
import resources
import surroundings

CHECKS = {**damage.CHECKS, **calls.CHECKS, **resources.CHECKS, **locking.CHECKS, **surroundings.CHECKS}
SHOWN = 20  # violations of one check


@dataclass
class Row:
    """The figures of one check."""

    name: str
    runs: int = 0
    complete: int = 0  # exit status 0
    refused: int = 0  # exit status 1
    violations: int = 0
    peak: float = 0
    seconds: float = 0
    note: str = ""

    def add(self, what, outcome, problem):
        self.runs += 1
        self.complete += outcome.status == 0
        self.refused += outcome.status == 1
        self.peak = max(self.peak, outcome.peak / fault_run.MIB)
        if problem:
            self.violations += 1
            if self.violations <= SHOWN:
                print(f"VIOLATION {self.name}: {what}: {problem}", flush=True)

    def print(self):
        print(f"{self.name:<34}{self.runs:>8}{self.complete:>10}{self.refused:>10}{self.violations:>12}"
              f"{self.peak:>10.1f}{self.seconds:>8.1f}  {self.note}", flush=True)


def make(name, quick):
    row = Row(name)
    started = time.monotonic()
    for result in CHECKS[name](quick):
        if isinstance(result, str):
            row.note = result
        else:
            row.add(*result)
    row.seconds = time.monotonic() - started
    return row


def main(arguments):
    words = [word for word in arguments if word != "--quick"]
    names = [name for name in CHECKS if not words or any(word in name for word in words)]
    rows = [make(name, "--quick" in arguments) for name in names]
    print(f"{'check':<34}{'runs':>8}{'status 0':>10}{'status 1':>10}{'violations':>12}{'MiB <=':>10}{'s':>8}")
    for row in rows:
        row.print()
    violations = sum(row.violations for row in rows)
    print(f"{sum(row.runs for row in rows)} runs, {violations} violations")
    return 1 if violations or not rows else 0


if __name__ == "__main__":
    try:
        sys.exit(main(sys.argv[1:]))
    finally:
        shutil.rmtree(fault_run.SCRATCH, ignore_errors=True)
