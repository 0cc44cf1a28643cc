"""The record lock on the profile, against a writer that updates it as instrumented programs do."""

import fcntl
import os
import re
import shutil
import struct
import subprocess
import threading
import time

import fault_run
import resources

LOCK_START = 16
FUNCTIONS = [f"f{i:03}" for i in range(200)]
COUNTER_AT = 80  # of a record's only counter
RECORD = 112


def lock(file, kind):
    fcntl.lockf(file, kind, 0, LOCK_START)


def is_locked(path):
    """Whether somebody holds a lock that keeps writers out."""
    with open(path, "r+b") as file:
        query = struct.pack("hhqqi4x", fcntl.F_WRLCK, os.SEEK_SET, LOCK_START, 0, 0)
        return struct.unpack("hhqqi4x", fcntl.fcntl(file, fcntl.F_GETLK, query))[0] != fcntl.F_UNLCK


def locking_box():
    inputs = {
        "a.c": b"int f;\n" * len(FUNCTIONS),
        "pgopti.dpi": resources.profile_of([("a.c", name, 1) for name in FUNCTIONS]),
        "pgopti.spi": "".join(f"a.c - {name} {i + 1} 1 C\n" for i, name in enumerate(FUNCTIONS)).encode(),
    }
    arguments = ("-nopmeter", "-txtbcvrgfull", "blocks.txt")
    return fault_run.Sandbox(fault_run.Scenario("lock", "", ".", arguments), inputs).prepare()


def processor_time(pid):
    fields = fault_run.read(f"/proc/{pid}/stat").rsplit(b")", 1)[1].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def check_waiting(row, quick):
    """The run waits while a writer holds the lock, needs no processor time for that, and then is as ever."""
    box = locking_box()
    for _ in range(2 if quick else 5):
        box.reset()
        problem = None
        with open(os.path.join(box.cwd, "pgopti.dpi"), "r+b") as writer:
            lock(writer, fcntl.LOCK_EX)

            def let_go():
                nonlocal problem
                time.sleep(1)
                used = processor_time(started.pid)
                if used > 0.05:
                    problem = f"used {used} s while it waited"
                if os.path.exists(os.path.join(box.cwd, "CodeCoverage")):
                    problem = "did not wait"
                lock(writer, fcntl.LOCK_UN)

            started = subprocess.Popen(box.command(), cwd=box.cwd, env=fault_run.ENVIRONMENT,
                                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            let_go()
            status, usage, hung = fault_run.wait(started, fault_run.TIMEOUT)
        outcome = fault_run.Outcome(status, b"", b"", usage.ru_maxrss * 1024, 1.0, 0.0, hung)
        problem = problem or box.judge(outcome) or ("status 1" if status else None)
        row.add("a writer holds the lock for 1 s", outcome, problem)
    return row


def update(path, updates, stop):
    """Sets all counters to one number after the other, under the lock, in many small writes."""
    with open(path, "r+b", buffering=0) as file:
        number = 1
        while not stop.is_set():
            number += 1
            lock(file, fcntl.LOCK_EX)
            for i in range(len(FUNCTIONS)):
                file.seek(528 + i * RECORD + COUNTER_AT)
                file.write(struct.pack("<Q", number))
            lock(file, fcntl.LOCK_UN)
            updates.append(number)
            time.sleep(0.0002)


def check_updates(row, quick):
    """While a writer updates the profile without a pause, every report shows the counts of one update."""
    box = locking_box()
    path = os.path.join(box.cwd, "pgopti.dpi")
    updates, stop = [], threading.Event()
    writer = threading.Thread(target=update, args=(path, updates, stop))
    writer.start()
    runs, wanted = (40, 200) if quick else (200, 1000)
    shown = set()
    try:
        while row.runs < runs or len(updates) < wanted:
            outcome = fault_run.run(box.command(), box.cwd)
            blocks = os.path.join(box.cwd, "blocks.txt")
            text = fault_run.read(blocks)
            counts = set(re.findall(rb"^function - \S+\t(\d+)$", text, re.M))
            problem = outcome.problem()
            if not problem and outcome.status != 0:
                problem = f"status {outcome.status}: {outcome.errors[-200:]!r}"
            if not problem and len(counts) != 1:
                problem = f"a torn read: counts {sorted(counts)[:4]}"
            shown |= counts
            row.add(f"run {row.runs}", outcome, problem)
    finally:
        stop.set()
        writer.join()
    row.note = f"{len(updates)} updates, {len(shown)} different reports"
    if len(shown) < 5:
        row.violations.append("the runs hardly met the writer")
    return row


# Runs that open the profile a second time: name of the first source, further arguments.
SECOND_DESCRIPTORS = (
    ("the profile is a source", "a.dpi", ()),
    ("the profile is a source with markers", "a.dpi", ("-onelinedsbl", "X")),
    ("the profile is the reference", "a.c", ("-ref", "a.dpi")),
    ("the profile is the list", "a.c", ("-comp", "a.dpi")),
)


def halted(box, moment):
    """Starts a run that halts for a second before it opens the last page, and asks at that moment."""
    log = os.path.join(fault_run.SCRATCH, "opened")
    trace = ["strace", "-o", log, "-e", "trace=openat"]
    box.run(command=[*trace, *box.command()])
    opened = [line for line in fault_run.read(log).split(b"\n") if line.startswith(b"openat(")]
    before_last = re.search(rb'"(.*?)"', opened[-2])[1].decode()
    box.reset()
    command = [*trace, "-e", f"inject=openat:delay_enter=1000000:when={len(opened)}", *box.command()]
    process = subprocess.Popen(command, cwd=box.cwd, env=fault_run.ENVIRONMENT,
                               stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    until = time.monotonic() + 10
    while not os.path.exists(os.path.join(box.cwd, before_last)) and time.monotonic() < until:
        time.sleep(0.005)
    time.sleep(0.2)
    answer = process.poll() is None and moment()
    return answer, fault_run.wait(process, fault_run.TIMEOUT)


def check_kept(row, quick):
    """The lock is held to the last page, also when other descriptors of the profile have been opened and closed."""
    if not shutil.which("strace"):
        row.note = "left out: no strace"
        return row
    for what, source, arguments in SECOND_DESCRIPTORS:
        inputs = {
            "a.c": b"int f;\n",
            "b.c": b"int g;\n",
            "a.dpi": resources.profile_of([(source, "f", 1), ("b.c", "g", 1)]),
            "pgopti.spi": f"{source} - f 1 1 C\nb.c - g 1 1 C\n".encode(),
        }
        scenario = fault_run.Scenario("kept", "", ".", ("-nopmeter", "-dpi", "a.dpi", *arguments))
        box = fault_run.Sandbox(scenario, inputs)
        locked, (status, usage, hung) = halted(box, lambda: is_locked(os.path.join(box.cwd, "a.dpi")))
        outcome = fault_run.Outcome(status, b"", b"", usage.ru_maxrss * 1024, 0.0, 0.0, hung)
        problem = outcome.problem() or (None if locked else "the lock was dropped") or ("status 1" if status else None)
        row.add(what, outcome, problem)
    return row


CHECKS = (
    ("lock: waiting without work", check_waiting),
    ("lock: updates while running", check_updates),
    ("lock: kept to the end", check_kept),
)
