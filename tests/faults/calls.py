"""The k-th allocation or system call of each kind fails, alone or with all that follow."""

import os
import re
import subprocess

import fault_run

SHIM = os.path.join(fault_run.SCRATCH, "fail_allocation.so")
# The k-th failing alone is overcome where memory is only wanted, not needed; a report must be whole then.
ALLOCATING = ("html", "components", "markers", "reference", "exports", "check", "formats", "export", "floors",
              "show", "findings", "import", "clang", "gcov", "documents", "traces", "merge", "site")

# System call and the errors it is made to fail with.
READING = (
    ("openat", ("EIO", "EMFILE", "ENOMEM")),
    ("newfstatat", ("EIO", "ENOMEM")),
    ("read", ("EIO", "EINTR")),
    ("lseek", ("EIO",)),
    ("write", ("ENOSPC", "EIO", "EINTR")),
    ("close", ("EIO", "ENOSPC")),
    ("fcntl", ("EIO", "ENOLCK", "EINTR")),
)
REPORT = READING + (("mkdir", ("ENOSPC", "EACCES")),)
IMPORT = READING + tuple((call, ("EIO",)) for call in ("fsync", "rename", "link", "unlink"))
SITE = REPORT + tuple((call, ("EIO",)) for call in ("rename", "unlink"))
BINARY = tuple((call, ("EIO",)) for call in ("pread64", "fstat"))
CHILDREN = (("pipe2", ("EMFILE", "ENFILE")), ("getdents64", ("EIO",)), ("poll", ("EINTR", "ENOMEM")),
            ("clone3", ("EAGAIN", "ENOMEM")), ("wait4", ("EINTR",)))
# A close that fails has closed all the same. One that is made to fail has not, and gcov's end of a pipe stays open.
GCOV = tuple(call for call in IMPORT + BINARY + CHILDREN if call[0] != "close")
WRITING = (("write", ("ENOSPC",)),)
CALLING = (("html", REPORT), ("exports", READING), ("import", IMPORT), ("large", WRITING),
           ("components", REPORT), ("reference", REPORT), ("clang", IMPORT + BINARY), ("gcov", GCOV),
           ("traces", IMPORT), ("check", READING), ("formats", IMPORT + BINARY), ("merge", IMPORT), ("site", SITE),
           ("export", READING + BINARY), ("floors", READING), ("show", READING), ("findings", READING))


def preloaded(box, **settings):
    return box.run(environment={"LD_PRELOAD": SHIM, "FAULT_PROGRAM": box.scenario.tool, **settings})


def try_allocation(job):
    scenario, k, forever = job
    box = fault_run.sandbox(scenario)
    outcome = preloaded(box, FAULT_FIRST=str(k), FAULT_LAST=str(10**9 if forever else k))
    if outcome.status == 127 and b"shared libraries" in outcome.errors:
        return None  # the loader's own memory: the program never began
    return f"{scenario}, allocation {k}{' and all later' if forever else ''}", outcome, box.judge(outcome)


def allocations(forever, quick):
    source = os.path.join(os.path.dirname(os.path.abspath(__file__)), "fail_allocation.c")
    subprocess.run(["cc", "-O2", "-shared", "-fPIC", "-o", SHIM, source], check=True)
    counts, name = {}, os.path.join(fault_run.SCRATCH, "count")
    for scenario in ALLOCATING:
        preloaded(fault_run.sandbox(scenario), FAULT_COUNT=name)
        counts[scenario] = int(fault_run.read(name))
    yield ", ".join(f"{scenario} {count}" for scenario, count in counts.items())
    yield from fault_run.spread(try_allocation, [(scenario, k, forever) for scenario, count in counts.items()
                                                 for k in range(1, count + 1, 7 if quick else 1)])


def traced(box, call, fault=None):
    """Runs under strace; returns the outcome and the lines about the call."""
    log = os.path.join(fault_run.SCRATCH, f"strace-{os.getpid()}")
    command = ["strace", "-y", "-o", log, "-e", f"trace={call}", "-e", "signal=none"]
    if fault:
        command += ["-e", f"inject={call}:{fault}"]
    outcome = box.run([*command, *box.command()])
    return outcome, fault_run.read(log).decode(errors="replace").splitlines()


def is_loss(line, box):
    """Whether a call that reads an input or brings an output to the disk has failed. What it should have moved may have
    been moved before, so the files do not show that."""
    call = re.match(r"(close|fsync|read|pread64)\((\d+)<(.*?)>.* = -1 (?!EINTR)", line)
    if not call:
        return False
    name = os.path.relpath(call[3].encode().decode("unicode_escape"), box.root)  # strace escapes quotes
    if re.match(r"vexcov-\w{6}\.tmp", name):  # a temporary file without a name, which was read before it is closed
        return False
    return call[2] == "1" or not name.startswith("..") and (name in box.inputs) == ("read" in call[1])


def try_call(job):
    scenario, call, error, k, forever = job
    box = fault_run.sandbox(scenario)
    outcome, lines = traced(box, call, f"error={error}:when={k}{'+' if forever else ''}")
    if outcome.status == 127:
        return None  # the loader failed: the program never began
    # What stands between the program and its message cannot be asked for one.
    injected = [line for line in lines if "INJECTED" in line]
    silent = call == "write" and (forever or any("write(2" in line for line in injected))
    problem = box.judge(outcome, silent=silent, debris=call == "unlink" or forever and call in ("rename", "openat"))
    if not problem and outcome.status == 0 and any(is_loss(line, box) for line in injected):
        problem = "status 0, but something may be lost"
    return f"{scenario}, {call} {k}{' and all later' if forever else ''} {error}", outcome, problem


def system_calls(forever, quick):
    jobs = []
    for scenario, calls in CALLING[:5] if quick else CALLING:
        for call, errors in calls:
            count = sum(line.startswith(call + "(") for line in traced(fault_run.sandbox(scenario), call)[1])
            jobs += [(scenario, call, error, k, forever) for error in (errors[:1] if quick else errors)
                     if not (forever and error == "EINTR")  # for ever interrupted is for ever waiting
                     for k in range(1, count + 1)]
    yield from fault_run.spread(try_call, jobs)


CHECKS = {
    "allocation: the k-th": lambda quick: allocations(False, quick),
    "allocation: from the k-th on": lambda quick: allocations(True, quick),
    "system calls: the k-th": lambda quick: system_calls(False, quick),
    "system calls: from the k-th on": lambda quick: system_calls(True, quick),
}
