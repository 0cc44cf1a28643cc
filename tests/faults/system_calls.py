"""The k-th call of each kind fails, alone or with all that follow."""

import os
import shutil

import fault_run

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
RUNS = (("html", REPORT), ("components", REPORT), ("reference", REPORT), ("exports", READING), ("import", IMPORT))


def traced(box, call, fault):
    """Runs under strace; returns the outcome and the lines about the call."""
    log = os.path.join(fault_run.SCRATCH, f"strace-{os.getpid()}")
    command = ["strace", "-o", log, "-e", f"trace={call}", "-e", "signal=none"]
    if fault:
        command += ["-e", f"inject={call}:{fault}"]
    outcome = box.run(command=[*command, *box.command()])
    return outcome, fault_run.read(log).decode(errors="replace").splitlines()


def try_call(job):
    scenario, call, error, k, forever = job
    box = fault_run.sandbox(scenario)
    outcome, lines = traced(box, call, f"error={error}:when={k}{'+' if forever else ''}")
    if outcome.status == 127:
        return None  # the loader failed: the program never began
    # What stands between the program and its message cannot be asked for one.
    silent = call == "write" and (forever or any("write(2" in line and "INJECTED" in line for line in lines))
    problem = box.judge(outcome, silent=silent, debris=call == "unlink" or forever and call in ("rename", "openat"))
    return f"{scenario}, {call} {k}{' and all later' if forever else ''} {error}", outcome, problem


def check(forever):
    def check_calls(row, quick):
        if not shutil.which("strace"):
            row.note = "left out: no strace"
            return row
        jobs = []
        for scenario, calls in RUNS[:1] + RUNS[3:] if quick else RUNS:
            box = fault_run.sandbox(scenario)
            for call, errors in calls:
                count = sum(line.startswith(call + "(") for line in traced(box, call, None)[1])
                for error in errors[:1] if quick else errors:
                    if not (forever and error == "EINTR"):  # for ever interrupted is for ever waiting
                        jobs += [(scenario, call, error, k, forever) for k in range(1, count + 1)]
        return fault_run.spread(row, try_call, jobs)

    return check_calls


CHECKS = (
    ("system calls: the k-th", check(False)),
    ("system calls: from the k-th on", check(True)),
)
