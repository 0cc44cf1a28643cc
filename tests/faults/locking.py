"""The record lock on the profile, against a writer that updates it as instrumented programs do."""

import fcntl
import os
import re
import struct
import threading
import time

import fault_run
import resources

LOCK_START = 16
FUNCTIONS = [("a.c", f"f{i:03}", i + 1) for i in range(200)]
COUNTER_AT = 80  # of a record's only counter
RECORD = 112


def lock(file, kind, start=LOCK_START, length=0):
    fcntl.lockf(file, kind, length, start)


def is_locked(path):
    """Whether somebody holds a lock that keeps writers out."""
    with open(path, "r+b") as file:
        query = struct.pack("hhqqi4x", fcntl.F_WRLCK, os.SEEK_SET, LOCK_START, 0, 0)
        return struct.unpack("hhqqi4x", fcntl.fcntl(file, fcntl.F_GETLK, query))[0] != fcntl.F_UNLCK


def locking_box():
    """A sandbox whose reports show the counts of 200 functions, and the path of the profile."""
    box = resources.box_of({"a.c": b"int f;\n" * len(FUNCTIONS)}, FUNCTIONS, "-counts", "-txtbcvrgfull", "blocks.txt")
    return box.prepare(), os.path.join(box.cwd, "a.dpi")


def processor_time(process):
    fields = fault_run.read(f"/proc/{process.pid}/stat").rsplit(b")", 1)[1].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


# Parts of the profile that a writer locks, as first byte and length, and whether the run waits then.
PARTS = ((LOCK_START, 0, True), (1000, 1, True), (1 << 30, 1, True), (0, LOCK_START, False))


def waiting(quick):
    """The run waits while a writer holds the lock, needs no processor time for that, and then is as ever."""
    box, profile = locking_box()
    for start, length, waits in PARTS * (1 if quick else 2):
        box.reset()
        with open(profile, "r+b") as writer:
            lock(writer, fcntl.LOCK_EX, start, length)
            process = fault_run.start(box.command(), box.cwd)
            time.sleep(1)
            used = processor_time(process)
            waited = not os.path.exists(os.path.join(box.cwd, "CodeCoverage"))
            lock(writer, fcntl.LOCK_UN)
            outcome = fault_run.finish(process)
        problem = f"used {used} s while it waited" if used > 0.05 else None
        if waited != waits:
            problem = "waited" if waited else "did not wait"
        yield f"{length} bytes from {start} on locked for 1 s", outcome, problem or box.judge(
            outcome, 0, any_output=True)


def update(path, updates, stop):
    """Sets all counters to one number after the other, under the lock, in many small writes."""
    with open(path, "r+b", buffering=0) as file:
        while not stop.is_set():
            number = len(updates) + 2
            lock(file, fcntl.LOCK_EX)
            for i in range(len(FUNCTIONS)):
                file.seek(528 + i * RECORD + COUNTER_AT)
                file.write(struct.pack("<Q", number))
            lock(file, fcntl.LOCK_UN)
            updates.append(number)
            time.sleep(0.0002)


def updates_meanwhile(quick):
    """While a writer updates the profile without a pause, every report shows the counts of one update."""
    box, profile = locking_box()
    updates, stop = [], threading.Event()
    writer = threading.Thread(target=update, args=(profile, updates, stop))
    writer.start()
    least, wanted = (40, 200) if quick else (200, 1000)
    runs, shown = 0, set()
    try:
        while runs < least or len(updates) < wanted:
            outcome = fault_run.run(box.command(), box.cwd)
            text = fault_run.read(os.path.join(box.cwd, "blocks.txt"))
            counts = set(re.findall(rb"^function - \S+\t(\d+)$", text, re.M))
            runs, shown = runs + 1, shown | counts
            problem = outcome.problem(0)
            if not problem and len(counts) != 1:
                problem = f"a torn read: counts {sorted(counts)[:4]}"
            if not problem and runs == least and len(shown) < 5:
                problem = "the runs hardly met the writer"
            yield f"run {runs}", outcome, problem
    finally:
        stop.set()
        writer.join()
    yield f"{len(updates)} updates, {len(shown)} different reports"


# Runs that open the profile a second time: name of the first source, further arguments.
SECOND_DESCRIPTORS = (
    ("the profile is a source", "a.dpi"),
    ("the profile is a source with markers", "a.dpi", "-onelinedsbl", "X"),
    ("the profile is the reference", "a.c", "-ref", "a.dpi"),
    ("the profile is the list", "a.c", "-comp", "a.dpi"),
)


def kept_to_the_end(quick):
    """The lock is held to the last page, also when other descriptors of the profile have been opened and closed."""
    log = os.path.join(fault_run.SCRATCH, "opened")
    trace = ["strace", "-o", log, "-e", "trace=openat"]
    for what, source, *arguments in SECOND_DESCRIPTORS:
        sources = {"a.c": b"int f;\n", "b.c": b"int g;\n"}
        box = resources.box_of(sources, [(source, "f", 1), ("b.c", "g", 1)], *arguments)
        box.run([*trace, *box.command()])
        opened = [line for line in fault_run.read(log).split(b"\n") if line.startswith(b"openat(")]
        before_last = os.path.join(box.cwd, re.search(rb'"(.*?)"', opened[-2])[1].decode())
        box.reset()
        # Halts for a second before it opens the last page.
        delay = f"inject=openat:delay_enter=1000000:when={len(opened)}"
        process = fault_run.start([*trace, "-e", delay, *box.command()], box.cwd)
        until = time.monotonic() + 10
        while not os.path.exists(before_last) and time.monotonic() < until:
            time.sleep(0.005)
        time.sleep(0.2)
        kept = process.poll() is None and is_locked(os.path.join(box.cwd, "a.dpi"))
        outcome = fault_run.finish(process)
        yield what, outcome, outcome.problem(0) or (None if kept else "the lock was dropped")


CHECKS = {
    "lock: waiting without work": waiting,
    "lock: updates while running": updates_meanwhile,
    "lock: kept to the end": kept_to_the_end,
}
