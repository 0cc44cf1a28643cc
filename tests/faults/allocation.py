"""The k-th allocation fails, alone or with all that follow."""

import os
import subprocess

import fault_run

SHIM = os.path.join(fault_run.SCRATCH, "fail_allocation.so")
# Once, the k-th failing alone is overcome where memory is only wanted, not needed; a report must be whole then.
MODES = ("html", "components", "markers", "reference", "exports", "import")


def build_shim():
    source = os.path.join(os.path.dirname(os.path.abspath(__file__)), "fail_allocation.c")
    subprocess.run(["cc", "-O2", "-shared", "-fPIC", "-o", SHIM, source], check=True)


def disturbed(box, **settings):
    environment = {**fault_run.ENVIRONMENT, "LD_PRELOAD": SHIM, **settings}
    return box.run(environment=environment)


def count_allocations(box):
    name = os.path.join(fault_run.SCRATCH, "count")
    disturbed(box, FAULT_COUNT=name)
    return int(fault_run.read(name))


def try_allocation(job):
    scenario, k, forever = job
    box = fault_run.sandbox(scenario)
    settings = {"FAULT_FOREVER": "1"} if forever else {}
    outcome = disturbed(box, FAULT_ALLOCATION=str(k), **settings)
    problem = box.judge(outcome)
    if outcome.status == 127 and b"shared libraries" in outcome.errors:
        return None  # the loader's own memory: the program never began
    return f"{scenario}, allocation {k}{' and all later' if forever else ''}", outcome, problem


def check(forever):
    def check_allocations(row, quick):
        if not os.path.exists(SHIM):
            build_shim()
        jobs = []
        counts = []
        for scenario in MODES:
            count = count_allocations(fault_run.sandbox(scenario))
            counts.append(f"{scenario} {count}")
            jobs += [(scenario, k, forever) for k in range(1, count + 1, 7 if quick else 1)]
        row.note = ", ".join(counts)
        return fault_run.spread(row, try_allocation, jobs)

    return check_allocations


CHECKS = (
    ("allocation: the k-th", check(False)),
    ("allocation: from the k-th on", check(True)),
)
