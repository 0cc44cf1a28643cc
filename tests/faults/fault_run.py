"""What the fault drivers share: the small runs that are disturbed, running a program under limits, the judgement of
a run, and the table of figures.

The judgement is the same everywhere. Exit status 0: every file and standard output are those of the undisturbed run.
Exit status 1: there is a message. Anything else, a signal, a hang, a changed input or memory out of proportion is a
violation."""

import hashlib
import multiprocessing
import os
import re
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import time
from dataclasses import dataclass, field

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
BUILD = os.path.abspath(os.environ.get("VEXCOV_BUILD", os.path.join(ROOT, "build", "release")))
JOBS = int(os.environ.get("VEXCOV_JOBS", os.cpu_count() or 1))
CASES = os.path.join(ROOT, "tests", "golden", "cases")
IMPORTS = os.path.join(ROOT, "tests", "data", "import")
MIB = 1 << 20
TIMEOUT = 30  # seconds after which a run is a hang
PEAK = 96 * MIB  # no small run may need more
SCRATCH = tempfile.mkdtemp(prefix="vexcov-faults-", dir="/dev/shm" if os.access("/dev/shm", os.W_OK) else None)
ENVIRONMENT = {"PATH": "/usr/bin:/bin", "LC_ALL": "C", "TZ": "UTC"}


def program(name, build=None):
    folder = os.path.join(build or BUILD, "tests") if name == "vexcov-profile-text" else build or BUILD
    return os.path.join(folder, name)


# ---- the small runs ----


@dataclass(frozen=True)
class Scenario:
    name: str
    source: str  # directory that holds the inputs
    folder: str  # where in there the run takes place
    arguments: tuple
    tool: str = "vexcov"


def case(name, folder, *arguments):
    return os.path.join(CASES, name, "input"), folder, arguments


SCENARIOS = {
    s.name: s
    for s in (
        Scenario("html", *case("block-exports", ".", "-counts", "-nopartial", "-onelinedsbl", "OFF", "-prj", "Blocks",
                               "-txtbcvrgfull", "blocks.txt", "-xmlbcvrgfull", "blocks.xml")),
        Scenario("components", *case("component-list", ".", "-comp", "list.txt")),
        Scenario("markers", *case("markers", ".", "-onelinedsbl", "NEVER", "-beginblkdsbl", "BEGIN", "-endblkdsbl",
                                  "END", "-counts")),
        Scenario("reference", *case("differential", ".", "-ref", "old.dpi", "-dpi", "new.dpi")),
        Scenario("narrow", *case("widths", "narrow", "-counts", "-spi", "../pgopti.spi")),
        Scenario("wide", *case("widths", "wide", "-counts", "-spi", "../pgopti.spi")),
        Scenario("exports", *case("function-exports", "full", "-txtfcvrg", "out.txt", "-xmlfcvrg", "out.xml")),
        Scenario("import", IMPORTS, ".", ("clang", "-root", ".", "flow.json"), "vexcov-import"),
    )
}


def read(path):
    with open(path, "rb") as file:
        return file.read()


def write(path, data):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "wb") as file:
        file.write(data)


def files_below(folder):
    """The paths of all files below a directory, relative to it."""
    return [os.path.relpath(os.path.join(parent, name), folder)
            for parent, _, names in os.walk(folder) for name in names]


def digest(data):
    return len(data), hashlib.sha256(data).digest()


def read_tree(folder):
    """The digest of every file below a directory, by relative path."""
    return {name: digest(read(os.path.join(folder, name))) for name in files_below(folder)}


def compile_profile(text, target):
    source = target + ".text"
    write(source, text)
    subprocess.run([program("vexcov-profile-text"), source, target], check=True)
    os.unlink(source)


class Sandbox:
    """A scratch copy of a scenario's inputs, and what the undisturbed run makes of them."""

    def __init__(self, scenario, inputs=None, parent=SCRATCH):
        self.scenario = scenario
        self.root = tempfile.mkdtemp(prefix=scenario.name + "-", dir=parent)
        self.inputs = self.place(scenario.source) if inputs is None else inputs
        for name, data in self.inputs.items():
            write(os.path.join(self.root, name), data)
        self.digests = {name: digest(data) for name, data in self.inputs.items()}
        self.cwd = os.path.join(self.root, scenario.folder)
        self.expected = self.expected_output = self.usual_lines = None

    def place(self, source):
        inputs = {}
        for name in files_below(source):
            data = read(os.path.join(source, name))
            target = os.path.join(self.root, name)
            if name.endswith(".dpitext"):
                compile_profile(data, target[: -len("text")])
                name, data = name[: -len("text")], read(target[: -len("text")])
            inputs[name] = data
        if self.scenario.tool == "vexcov-import":  # an older pair is there to be replaced
            inputs["pgopti.dpi"], inputs["pgopti.spi"] = b"\x0b\xdc" + bytes(526), b"old.c - old 1 1 I\n"
        return inputs

    def command(self, build=None):
        return [program(self.scenario.tool, build), *self.scenario.arguments]

    def reset(self):
        """Removes what runs have left and puts back what they have changed."""
        for name in os.listdir(self.root):
            path = os.path.join(self.root, name)
            if os.path.isdir(path) and not any(i.startswith(name + "/") for i in self.inputs):
                shutil.rmtree(path)
        for name in files_below(self.root):
            if name not in self.inputs:
                os.unlink(os.path.join(self.root, name))
            elif digest(read(os.path.join(self.root, name))) != self.digests[name]:
                write(os.path.join(self.root, name), self.inputs[name])
        shutil.rmtree(os.path.join(self.cwd, "CodeCoverage"), ignore_errors=True)

    def prepare(self):
        """Makes the undisturbed run once."""
        if self.expected is None:
            outcome = self.run()
            if outcome.status != 0:
                sys.exit(f"{self.scenario.name}: the undisturbed run fails: {outcome}")
            self.expected, self.expected_output = read_tree(self.root), outcome.output
            self.usual_lines = set(outcome.lines())
        return self

    def run(self, **how):
        self.reset()
        return run(how.pop("command", None) or self.command(), self.cwd, **how)

    def judge(self, outcome, silent=False, partial_streams=False, debris=False):
        """What is wrong with a run in this sandbox, or None. `silent`: its messages could not be seen; `debris`: it
        could not clear temporary files away."""
        problem = outcome.problem()
        if problem:
            return problem
        tree = read_tree(self.root)
        if debris:
            tree = {name: data for name, data in tree.items() if ".tmp" not in name}
        if outcome.status == 0:
            wrong = sorted(n for n in self.expected.keys() | tree.keys() if self.expected.get(n) != tree.get(n))
            if wrong:
                return "status 0, but different: " + ", ".join(wrong[:4])
            if outcome.output != self.expected_output and not partial_streams:
                return "status 0, but standard output differs"
            return None
        if not silent and not set(outcome.lines()) - self.usual_lines:
            return "status 1 without a message"
        return self.judge_inputs(tree, debris)

    def judge_inputs(self, tree, debris):
        if self.scenario.tool == "vexcov-import":  # the pair as it was or as it should be, and nothing beside it
            return None if debris or tree in (self.digests, self.expected) else "the pair of profiles is half-written"
        changed = [name for name, data in self.digests.items() if tree.get(name) != data]
        return "changed the input " + changed[0] if changed else None


SANDBOXES = {}


def sandbox(name):
    """This process's sandbox of a scenario, with the undisturbed run made."""
    key = name, os.getpid()
    if key not in SANDBOXES:
        SANDBOXES[key] = Sandbox(SCENARIOS[name]).prepare()
    return SANDBOXES[key]


# ---- running ----


@dataclass
class Outcome:
    status: int  # negative: ended by a signal
    output: bytes
    errors: bytes
    peak: int  # bytes of memory, or those of the driver when it needs more
    seconds: float
    processor: float
    hung: bool = False

    def lines(self):
        """The lines of both streams, without the progress meter."""
        text = re.sub(rb"(Progress: )?(\d+%( \.\. )?)+", b"\n", self.output) + b"\n" + self.errors
        return [line for line in text.split(b"\n") if line.strip()]

    def problem(self):
        if self.hung:
            return f"hangs ({self.seconds:.0f} s)"
        if self.status < 0:
            return f"ended by signal {-self.status}: {self.errors[-200:]!r}"
        if self.status > 1:
            return f"status {self.status}: {self.errors[-200:]!r}"
        return f"needs {self.peak // MIB} MiB" if self.peak > PEAK else None


HOSTILE = {
    resource.RLIMIT_AS: 512 * MIB,
    resource.RLIMIT_STACK: 256 << 10,
}


def run(command, cwd, limits=None, environment=None, output=None, errors=None, stdin=None, cpu=None, pass_fds=()):
    """Runs a command to its end. `limits`: soft limits by resource; `cpu`: seconds of processor time."""
    old = {which: resource.getrlimit(which) for which in limits or {}}
    with tempfile.TemporaryFile(dir=SCRATCH) as out, tempfile.TemporaryFile(dir=SCRATCH) as err:
        started = time.monotonic()
        try:
            for which, value in (limits or {}).items():
                resource.setrlimit(which, (value, old[which][1]))
            process = subprocess.Popen(command, cwd=cwd, env=environment or ENVIRONMENT, pass_fds=pass_fds,
                                       stdin=subprocess.DEVNULL if stdin is None else stdin,
                                       stdout=out if output is None else output,
                                       stderr=err if errors is None else errors)
        finally:
            for which, value in old.items():
                resource.setrlimit(which, value)
        if cpu:
            resource.prlimit(process.pid, resource.RLIMIT_CPU, (cpu, cpu))
        status, usage, hung = wait(process, TIMEOUT)
        seconds = time.monotonic() - started
        out.seek(0)
        err.seek(0)
        return Outcome(status, out.read(), err.read(), usage.ru_maxrss * 1024, seconds,
                       usage.ru_utime + usage.ru_stime, hung)


def wait(process, timeout):
    """Waits for the end of a process and kills it when that takes too long: status, usage, killed."""
    killed = []

    def kill(*_):
        killed.append(True)
        process.kill()

    before = signal.signal(signal.SIGALRM, kill)
    signal.setitimer(signal.ITIMER_REAL, timeout)
    _, status, usage = os.wait4(process.pid, 0)
    signal.setitimer(signal.ITIMER_REAL, 0)
    signal.signal(signal.SIGALRM, before)
    process.returncode = os.waitstatus_to_exitcode(status)
    return process.returncode, usage, bool(killed)


# ---- figures ----


@dataclass
class Row:
    """The figures of one check."""

    name: str
    runs: int = 0
    complete: int = 0  # exit status 0
    refused: int = 0  # exit status 1
    peak: int = 0
    seconds: float = 0.0
    violations: list = field(default_factory=list)
    note: str = ""

    def add(self, what, outcome, problem):
        self.runs += 1
        self.complete += outcome.status == 0
        self.refused += outcome.status == 1
        self.peak = max(self.peak, outcome.peak)
        if problem:
            self.violations.append(f"{what}: {problem}")


def spread(row, function, items):
    """Adds function(item), a triple (what, outcome, problem), for every item; several processes share the work."""
    with multiprocessing.Pool(JOBS) as pool:
        for result in pool.imap_unordered(function, items, chunksize=8):
            if result:
                row.add(*result)
    return row


def print_table(rows):
    print(f"{'check':<34}{'runs':>8}{'status 0':>10}{'status 1':>10}{'violations':>12}{'MiB <=':>10}{'s':>8}")
    for row in rows:
        print(f"{row.name:<34}{row.runs:>8}{row.complete:>10}{row.refused:>10}{len(row.violations):>12}"
              f"{row.peak / MIB:>10.1f}{row.seconds:>8.1f}  {row.note}")
    total = sum(row.runs for row in rows)
    violations = sum(len(row.violations) for row in rows)
    print(f"{total} runs, {violations} violations")
    return violations
