#!/usr/bin/env python3
"""Runs the fault drivers and prints the table of figures; the status is 0 only without violations.

    torture.py [--quick | --write] [WORD...]

With words only the checks whose names hold one of them. With --write the table is put into docs/reliability.md, too;
that takes all checks in full. VEXCOV_BUILD names the build directory, VEXCOV_JOBS the
number of processes."""

import os
import shutil
import subprocess
import sys
import time

import calls
import damage
import fault_run
import locking
import resources
import surroundings

CHECKS = {**damage.CHECKS, **calls.CHECKS, **resources.CHECKS, **locking.CHECKS, **surroundings.CHECKS}
# The checks as the document tells of them, in its order.
DISTURBANCES = {
    "damage: mutations": "1 to 4 damages in a profile, static profile, list, source or any other input: bits, bytes, "
                         "words, pieces",
    "damage: every truncation": "four profiles, eight inputs of the importer and five of the others cut at every length",
    "damage: every field": "every field of a profile, both widths, set to 0, 1, ± 1, 2^31 - 1, 2^31, 2^32 - 1, the "
                           "file's size ± 1, ...",
    "allocation: the k-th": "the k-th allocation fails, every k of a run of each kind",
    "allocation: from the k-th on": "all allocations from the k-th on fail",
    "system calls: the k-th": "the k-th `openat`, `newfstatat`, `fstat`, `read`, `pread64`, `lseek`, `write`, `close`, "
                              "`fcntl`, `mkdir`, `fsync`, `rename`, `link`, `unlink`, `pipe2`, `poll`, `clone3`, "
                              "`wait4` or `getdents64` fails, every k of a run of each kind",
    "system calls: from the k-th on": "all such calls from the k-th on fail",
    "disk: small file systems": "a disk with room for 0 to 20 twentieths of the output",
    "disk: an export to /dev/full": "an export is `/dev/full`",
    "disk: file size limit": "a limit on the size of files",
    "gcov: ended at any length": "gcov ends early, with any status or by a signal, after any part of its document",
    "streams: closed": "standard streams closed, all 8 combinations: no file takes their place",
    "streams: full, or no reader": "a standard stream is `/dev/full`, or nobody reads standard output",
    "descriptors: few": "4 to 16 descriptors; 16 with 4,000 sources",
    "kill -9, then again": "`kill -9` at a random moment; the run after it counts",
    "lock: waiting without work": "a writer holds the profile's lock, or one byte of it, for 1 s; the header is outside "
                                  "the lock",
    "lock: updates while running": "a writer makes 1,000 updates meanwhile; each report shows one of them whole",
    "lock: kept to the end": "the profile is also a source, the reference or the list: is the lock kept to the last "
                             "page?",
    "same bytes: locale, zone, umask": "locales de_DE and tr_TR, time zones, umasks, memory that is not zero: the same "
                                       "bytes",
    "same bytes: run after run": "run after run: the same bytes",
    "same bytes: builds": "builds with another compiler, without optimisation or with sanitizers: the same bytes",
    "names: hostile": "mangled names that stand for gigabytes, or nest 200,000 deep",
    "names: ordinary": "the names of the C++ library, and some of 12 to 16 KiB, as the library's own demangler has them",
}

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


def write_figures(rows):
    """Puts the rows, by check, into the document."""
    root = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..")
    lines = ["| disturbance | runs | status 0 | status 1 | violations |", "|---|--:|--:|--:|--:|"]
    for name, text in DISTURBANCES.items():
        lines.append(f"| {text} | " + " | ".join(f"{figure:,}" for figure in rows[name][:4]) + " |")
    sums = (sum(row[i] for row in rows.values()) for i in range(4))
    lines.append("| **all** | " + " | ".join(f"**{figure:,}**" for figure in sums) + " |")
    lines += ["", f"No run needed more than {max(row[4] for row in rows.values())} MiB, its driver included."]
    subprocess.run([os.path.join(root, "scripts", "write-figures"), "faults",
                    os.path.join(root, "docs", "reliability.md")], input="\n".join(lines), text=True, check=True)


def main(arguments):
    words = [word for word in arguments if word not in ("--quick", "--write")]
    if "--write" in arguments and (words or "--quick" in arguments or CHECKS.keys() != DISTURBANCES.keys()):
        sys.exit("torture: only a table of all checks, in full, can be written, and each needs its text")
    names = [name for name in CHECKS if not words or any(word in name for word in words)]
    rows = [figures_of(name, "--quick" in arguments) for name in names]
    print(LAYOUT.format("check", "runs", "status 0", "status 1", "violations", "MiB <=", "s", ""))
    for name, row in zip(names, rows):
        print(LAYOUT.format(name, *row))
    if "--write" in arguments:
        write_figures(dict(zip(names, rows)))
    runs, complete, refused, violations = (sum(row[i] for row in rows) for i in range(4))
    print(LAYOUT.format("all", runs, complete, refused, violations, "", "", ""))
    return 1 if violations or not runs else 0


if __name__ == "__main__":
    try:
        sys.exit(main(sys.argv[1:]))
    finally:
        shutil.rmtree(fault_run.SCRATCH, ignore_errors=True)
