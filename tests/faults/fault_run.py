"""What the fault drivers share: the small runs that are disturbed, running a program under limits, and the judgement
of a run.

The judgement is the same everywhere. Exit status 0: every file and standard output are those of the undisturbed run.
Exit status 1: there is a message. Anything else, a signal, a hang, a changed input or memory out of proportion is a
violation.

A check is a generator: it yields a triple for each run, what was done, the outcome and what is wrong with it or None,
and may yield a text, which is printed beside its figures."""

import functools
import gzip
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
import types
from dataclasses import dataclass

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
BUILD = os.path.abspath(os.environ.get("VEXCOV_BUILD", os.path.join(ROOT, "build", "release")))
JOBS = int(os.environ.get("VEXCOV_JOBS", os.cpu_count() or 1))
CASES = os.path.join(ROOT, "tests", "golden", "cases")
MIB = 1 << 20
TIMEOUT = 30  # seconds after which a run is a hang
PEAK = 96 * MIB  # no small run may need more
HOSTILE = {resource.RLIMIT_AS: 512 * MIB, resource.RLIMIT_CPU: 10, resource.RLIMIT_STACK: 256 << 10}
SCRATCH = tempfile.mkdtemp(prefix="vexcov-faults-", dir="/dev/shm" if os.access("/dev/shm", os.W_OK) else None)
ENVIRONMENT = {"PATH": "/usr/bin:/bin", "LC_ALL": "C", "TZ": "UTC"}


START_PAGE = "site/index.html"

# ---- the small runs ----


@dataclass(frozen=True)
class Scenario:
    name: str
    source: str | dict | types.FunctionType  # directory that holds the inputs, or their texts by name, or what makes these
    folder: str  # where in there the run takes place
    arguments: tuple
    tool: str = "vexcov"


def case(name, folder, *arguments):
    return os.path.join(CASES, name, "input"), folder, arguments


def read(path):
    with open(path, "rb") as file:
        return file.read()


def write(path, data):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "wb") as file:
        file.write(data)


def digest(data):
    return len(data), hashlib.sha256(data).digest()


def files_below(folder):
    """The path below a directory and the text of each file there."""
    for parent, _, names in os.walk(folder):
        for name in names:
            path = os.path.join(parent, name)
            yield os.path.relpath(path, folder), read(path)


def read_tree(folder):
    return {name: digest(data) for name, data in files_below(folder)}


def compiled_profile(text):
    scratch = os.path.join(SCRATCH, f"profile-{os.getpid()}")
    write(scratch, text if isinstance(text, bytes) else text.encode())
    subprocess.run([os.path.join(BUILD, "tests", "tools", "vexcov-profile-text"), scratch, scratch], check=True)
    return read(scratch)


def profile_of(functions):
    """A profile with one covered block each, of 112 bytes. `functions`: file and name, in key order."""
    return compiled_profile("header runs 1\n" + "".join(
        f"record 64\nfile {file}\nfunction {name}\nblocks 1:1=1\n" for file, name in functions))


def chosen(name, *files):
    """Some of the inputs of a golden case."""
    return {file: read(os.path.join(CASES, name, "input", file)) for file in files}


# Stands for gcov: writes the first document of a recorded run, or as much of it as GCOV_BYTES says, and ends as GCOV_END says.
GCOV = b"""#!/bin/sh
[ "$1" = --version ] && exec echo "gcov (GCC) 12.2.0"
head -n 1 demo.json | head -c "${GCOV_BYTES:-1000000}"
eval "${GCOV_END:-exit 0}"
"""
GCC = {**chosen("gcc-recorded", "demo.json", "demo.cpp", "other.cpp", "shape.h", "cases.inc", "squares.inc"),
       "obj/demo.gcno": b"oncg*22B\1\2\3\4sums\2\0\0\0/\0\1\0\0\0",
       "obj/demo.gcda": b"adcg*22B\1\2\3\4sums\0\0\0\0", "gcov": GCOV}


def compiled_objects():
    """What the compiler and a run leave of a program."""
    with tempfile.TemporaryDirectory(dir=SCRATCH) as folder:
        write(os.path.join(folder, "a.c"), b"int f(int n) {\n    return n ? 1 : 2;\n}\n"
                                           b"int main(int n) {\n    while (n < 9)\n        n += f(n);\n    return 0;\n}\n")
        subprocess.run(["gcc", "--coverage", "a.c", "-o", "a"], cwd=folder, check=True)
        subprocess.run(["./a"], cwd=folder, check=True)
        return {name: data for name, data in files_below(folder) if name != "a"}


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
        # A page that is written in several pieces.
        Scenario("large", {"a.c": b"int f; /* and a comment that makes it long */\n" * 6000,
                           "pgopti.spi": b"a.c - f 1 1 C\n", "pgopti.dpi": profile_of([("a.c", "f")])}, ".", ()),
        Scenario("check", *case("check-diff", ".", "-diff", "change.diff", "-ref", "old.dpi", "-max-uncovered", "3"),
                 "vexcov-check"),
        Scenario("formats", *case("exchange", ".", "-cobertura", "c.xml", "-split", "2K", "-lcov", "trace.info", "-json",
                                  "figures.json", "-github", "annotations", "-diff", "change.diff", "-sonar", "s.xml",
                               "-markdown", "summary.md", "-text", "table"), "vexcov-export"),
        Scenario("export", *case("exchange", ".", "json", "-nopartial"), "vexcov-export"),
        Scenario("floors", *case("check-floors", ".", "-baseline", "old.json", "-tolerance", "29", "-min-file",
                                 "blocks=0", "-format", "json"), "vexcov-check"),
        Scenario("show", *case("profile-show", ".", "show", "-json", "all.dpi"), "vexcov-profile"),
        Scenario("findings", *case("profile-check", ".", "check", "good.dpi"), "vexcov-profile"),
        Scenario("import", *case("import-recorded", ".", "clang", "-root", ".", "flow.json"), "vexcov-import"),
        Scenario("clang", chosen("import-clang-versions", "m.c", "h.h", "clang19/p", "clang19/1.profraw",
                                 "clang19/2.profdata"), ".",
                 ("clang", "clang19/p", "clang19/1.profraw", "clang19/2.profdata"), "vexcov-import"),
        Scenario("archive", chosen("import-clang-programs", "library.a", "joined.profraw"), ".",
                 ("clang", "library.a", "joined.profraw"), "vexcov-import"),
        Scenario("gcov", GCC, ".", ("gcc", "-gcov", "./gcov", "-root", ".", "obj"), "vexcov-import"),
        Scenario("documents", {**GCC, "demo.json.gz": gzip.compress(GCC["demo.json"], mtime=0)}, ".",
                 ("gcc", "-root", ".", "demo.json", "demo.json.gz"), "vexcov-import"),
        Scenario("objects", compiled_objects, ".", ("gcc", "-root", ".", "."), "vexcov-import"),
        Scenario("traces", chosen("lcov-lines", "flow.c", "v1.info", "v2.info", "v1.info.gz"), ".",
                 ("lcov", "v1.info", "v2.info", "v1.info.gz"), "vexcov-import"),
        Scenario("site", *case("site", ".", "-o", "site", "-diff", "change.diff", "-css", "own.css"), "vexcov-site"),
        Scenario("merge", *case("profile-merge", ".", "merge", "-o", "kept", "one.dpi", "two.dpi"), "vexcov-profile"),
    )
}


class Sandbox:
    """A scratch copy of a scenario's inputs, and what the undisturbed run makes of them."""

    def __init__(self, scenario):
        self.scenario = scenario
        self.inputs = self.gather(scenario)
        self.digests = {name: digest(data) for name, data in self.inputs.items()}
        self.expected = self.expected_output = None
        self.usual_lines = set()
        self.move(SCRATCH)

    def move(self, parent):
        """Makes another directory the one in which runs take place."""
        self.root = tempfile.mkdtemp(prefix=self.scenario.name + "-", dir=parent)
        self.cwd = os.path.join(self.root, self.scenario.folder)
        self.reset()

    def gather(self, scenario):
        source = scenario.source() if callable(scenario.source) else scenario.source
        inputs = {}
        for name, data in source.items() if isinstance(source, dict) else files_below(source):
            if name.endswith(".dpitext"):
                name, data = name[: -len("text")], compiled_profile(data)
            inputs[name] = data
        if scenario.tool == "vexcov-import":  # an older pair is there to be replaced
            inputs["pgopti.dpi"], inputs["pgopti.spi"] = b"\x0b\xdc" + bytes(526), b"old.c - old 1 1 I\n"
        if scenario.tool == "vexcov-site":  # and the start page of an older site
            inputs[START_PAGE] = b"<html>old</html>"
        return inputs

    def command(self, *arguments, build=BUILD):
        """The scenario's command, or one with other arguments."""
        return [os.path.join(build, self.scenario.tool), *(arguments or self.scenario.arguments)]

    def reset(self, changed=()):
        """Leaves nothing there but the inputs, some of them changed."""
        shutil.rmtree(self.root)
        for name, data in {**self.inputs, **dict(changed)}.items():
            path = os.path.join(self.root, name)
            write(path, data)
            if data.startswith(b"#!"):
                os.chmod(path, 0o755)
            os.utime(path, (1700000000, 1700000000))  # no source is newer than its profile

    def prepare(self):
        """Makes the undisturbed run."""
        outcome = self.run()
        self.expected, self.expected_output = read_tree(self.root), outcome.output
        if outcome.status != 0 or not (self.sizes() or self.expected_output):
            sys.exit(f"{self.scenario.name}: the undisturbed run fails: {outcome}")
        self.usual_lines = set(outcome.lines())
        return self

    def sizes(self):
        """The sizes of the files that the undisturbed run writes."""
        return [data[0] for name, data in self.expected.items() if data != self.digests.get(name)]

    def run(self, command=None, changed=(), **how):
        self.reset(changed)
        return run(command or self.command(), self.cwd, **how)

    def judge(self, outcome, status=None, silent=False, any_output=False, debris=False, changed=(), judge_output=None,
              found=False):
        """What is wrong with a run in this sandbox, or None. `status`: the only one that is right; `found`: status 2, a
        finding or a floor that is not held, is an answer like 0; `silent`: its
        messages could not be seen; `any_output`: nor could standard output; `debris`: it could not clear temporary
        files away; `changed`: inputs that were others; `judge_output`: judges what a good run has written."""
        if not (found and outcome.status == 2) and outcome.problem(status):
            return outcome.problem(status)
        tree = {name: data for name, data in read_tree(self.root).items() if not (debris and ".tmp" in name)}
        before = {**self.digests, **{name: digest(data) for name, data in dict(changed).items()}}
        lost = [name for name, data in before.items() if tree.get(name) != data and name != START_PAGE]
        if outcome.status == 1 and not (silent or set(outcome.lines()) - self.usual_lines):
            return "status 1 without a message"
        if self.scenario.tool in ("vexcov", "vexcov-site") and lost:
            return "changed the input " + lost[0]
        if outcome.status == 1 and self.scenario.tool == "vexcov-site":
            return None if self.is_told_from_whole(tree, before) else "a part of a site has a start page"
        if outcome.status == 1:  # importer and merge leave the pair as it was or as it should be, and nothing beside it
            whole = self.scenario.tool == "vexcov" or debris or tree in (before, self.expected)
            return None if whole else "the pair of profiles is half-written"
        if judge_output:
            return judge_output(tree)
        wrong = sorted(n for n in self.expected.keys() | tree.keys() if self.expected.get(n) != tree.get(n))
        if wrong == [START_PAGE] and set(outcome.lines()) - self.usual_lines:
            wrong = []  # it shows what the run warned of
        if wrong:
            return "status 0, but different: " + ", ".join(wrong[:4])
        return None if any_output or outcome.output == self.expected_output else "status 0, but lost output"


    def is_told_from_whole(self, tree, found):
        """Whether a site is whole, is as it was, or has no start page."""
        return tree in (found, self.expected) or not any(name.startswith(START_PAGE) for name in tree)


@functools.lru_cache(None)
def sandbox_of(name, _process):
    return Sandbox(SCENARIOS[name]).prepare()


def sandbox(name):
    """This process's sandbox of a scenario, with the undisturbed run made."""
    return sandbox_of(name, os.getpid())


# ---- running ----


@dataclass
class Outcome:
    status: int  # negative: ended by a signal
    peak: int  # bytes of memory, or those of the driver when it needs more
    processor: float  # seconds
    hung: bool
    output: bytes = b""
    errors: bytes = b""
    seconds: float = 0.0

    def lines(self):
        """The lines of both streams, without the progress meter."""
        text = re.sub(rb"(Progress: )?(\d+%( \.\. )?)+", b"\n", self.output) + b"\n" + self.errors
        return [line for line in text.split(b"\n") if line.strip()]

    def problem(self, status=None):
        """What is wrong with the run whatever it has written. `status`: the only one that is right."""
        if self.hung:
            return "hangs"
        if self.status < 0:
            return f"ended by signal {-self.status}: {self.errors[-200:]!r}"
        if self.status > 1 or status not in (None, self.status):
            return f"status {self.status}: {self.errors[-200:]!r}"
        return f"needs {self.peak // MIB} MiB" if self.peak > PEAK else None


def start(command, cwd, environment=(), output=subprocess.DEVNULL, errors=subprocess.DEVNULL, limits=()):
    def prepare():
        for which in limits:
            resource.setrlimit(which, (limits[which], limits[which]))

    return subprocess.Popen(command, cwd=cwd, env={**ENVIRONMENT, **dict(environment)}, stdin=subprocess.DEVNULL,
                            stdout=output, stderr=errors, start_new_session=True,
                            preexec_fn=prepare if limits else None)


def finish(process):
    """Waits for the end of a process; kills it and its children when that takes too long."""
    killed = []

    def kill(*_):
        killed.append(True)
        os.killpg(process.pid, signal.SIGKILL)

    before = signal.signal(signal.SIGALRM, kill)
    signal.setitimer(signal.ITIMER_REAL, TIMEOUT)
    _, status, usage = os.wait4(process.pid, 0)
    signal.setitimer(signal.ITIMER_REAL, 0)
    signal.signal(signal.SIGALRM, before)
    process.returncode = os.waitstatus_to_exitcode(status)
    return Outcome(process.returncode, usage.ru_maxrss * 1024, usage.ru_utime + usage.ru_stime, bool(killed))


def run(command, cwd, output=None, errors=None, **how):
    """Runs a command to its end."""
    with tempfile.TemporaryFile(dir=SCRATCH) as out, tempfile.TemporaryFile(dir=SCRATCH) as err:
        started = time.monotonic()
        outcome = finish(start(command, cwd, output=output or out, errors=errors or err, **how))
        outcome.seconds = time.monotonic() - started
        out.seek(0)
        err.seek(0)
        outcome.output, outcome.errors = out.read(), err.read()
        return outcome


def spread(function, items):
    """The results of function(item) for every item, without the empty ones; several processes share the work."""
    with multiprocessing.Pool(JOBS) as pool:
        yield from filter(None, pool.imap_unordered(function, list(items), chunksize=8))
