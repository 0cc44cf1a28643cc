"""What the measuring scripts share: building, running under GNU time, and the tables they print."""

import atexit
import contextlib
import io
import os
import re
import resource
import shutil
import statistics
import subprocess
import sys
import tempfile
import time
import types

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
# VEXCOV_BUILD names a finished build with the benchmarks to be measured instead.
BUILT = os.environ.get("VEXCOV_BUILD")
BUILD = os.path.abspath(BUILT or os.path.join(ROOT, "build", "bench"))
VEXCOV = os.path.join(BUILD, "vexcov")
IMPORT = os.path.join(BUILD, "vexcov-import")
EXPORT = os.path.join(BUILD, "vexcov-export")
SITE = os.path.join(BUILD, "vexcov-site")
WRITE_FIGURES = os.path.join(ROOT, "scripts", "write-figures")
GENERATE = os.path.join(BUILD, "bench", "generate_tree")


# Whether the tables are to be put into bench/README.md or another page, too.
WRITE = "--write" in sys.argv[1:]
if WRITE:
    sys.argv.remove("--write")


def work_folder():
    """Where measured programs read and write: in memory where there is room, so that no figure depends on the disk
    and on what it still has to write from the run before."""
    folder = os.path.join(BUILD, "trees")
    if os.path.isdir("/dev/shm") and os.access("/dev/shm", os.W_OK):
        space = os.statvfs("/dev/shm")
        if space.f_bavail * space.f_frsize >= 2 << 30:
            folder = tempfile.mkdtemp(prefix="vexcov-bench-", dir="/dev/shm")
    atexit.register(shutil.rmtree, folder, ignore_errors=True)
    return folder


WORK = work_folder()


def must(command, **options):
    """Runs a command silently; shows what it printed and ends the script when it fails."""
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, **options)
    if done.returncode != 0:
        sys.stderr.buffer.write(done.stdout)
        sys.exit(f"{os.path.basename(sys.argv[0])}: failed with status {done.returncode}: {command}")
    return done.stdout.decode(errors="replace")


def prepare():
    """Installs what measuring needs and builds the optimised programs in build/bench, unless there is a build."""
    if BUILT:
        return
    must([os.path.join(ROOT, "scripts", "install-deps"), "bench"])
    must(["cmake", "--preset", "bench"], cwd=ROOT)
    must(["cmake", "--build", "--preset", "bench"], cwd=ROOT)


def scratch(name):
    """An empty folder to measure in; gone when the script ends."""
    folder = os.path.join(WORK, name)
    shutil.rmtree(folder, ignore_errors=True)
    os.makedirs(folder)
    return folder


def generate(name, **sizes):
    """Writes a generated tree; the sizes are generate_tree's options. Returns its folder."""
    folder = scratch(name)
    options = []
    for size, value in sizes.items():
        options += ["-" + size.replace("_", "-"), str(value)]
    must([GENERATE, folder] + options)
    return folder


class Run:
    """One run of a command: user, system and elapsed seconds, and peak memory in MiB."""

    def __init__(self, command, cwd, stdout=subprocess.DEVNULL):
        with tempfile.NamedTemporaryFile("r") as memory:
            # Memory as GNU time sees it: the interpreter's own is not counted then.
            before, started = resource.getrusage(resource.RUSAGE_CHILDREN), time.monotonic()
            done = subprocess.run(["/usr/bin/time", "-o", memory.name, "-f", "%M"] + command, cwd=cwd,
                                  stdout=stdout, stderr=subprocess.PIPE)
            self.elapsed, after = time.monotonic() - started, resource.getrusage(resource.RUSAGE_CHILDREN)
            if done.returncode != 0:
                sys.stderr.buffer.write(done.stderr)
                sys.exit(f"{os.path.basename(sys.argv[0])}: failed with status {done.returncode}: {command}")
            self.memory = int(memory.read()) / 1024
        self.user, self.system = after.ru_utime - before.ru_utime, after.ru_stime - before.ru_stime
        self.processor = self.user + self.system


def best(runs):
    """The run least disturbed by the rest of the machine. Processor time is compared, not elapsed time, which depends
    on what else runs."""
    return min(runs, key=lambda run: run.processor)


def report(folder, *options):
    """Makes the report of a tree anew and measures it."""
    for made in ("CodeCoverage", "CODE_COVERAGE.HTML"):
        path = os.path.join(folder, made)
        if os.path.isdir(path):
            shutil.rmtree(path)
        elif os.path.exists(path):
            os.remove(path)
    return Run([VEXCOV, "-nopmeter", *options], folder)


class Task:
    """A command that is measured several times. Its outputs are removed before each run; those that end with "/" are
    made anew as empty folders."""

    def __init__(self, title, command, folder, outputs, stdout=None):
        self.title, self.command, self.folder, self.stdout = title, command, folder, stdout
        self.outputs = outputs + ([stdout] if stdout else [])
        self.runs, self.files, self.size = [], 0, 0

    def run(self):
        for output in self.outputs:
            path = os.path.join(self.folder, output)
            if os.path.isdir(path):
                shutil.rmtree(path)
            elif os.path.exists(path):
                os.remove(path)
            if output.endswith("/"):
                os.mkdir(path)
        with open(os.path.join(self.folder, self.stdout) if self.stdout else os.devnull, "wb") as stdout:
            self.runs.append(Run(self.command, self.folder, stdout))
        self.files, self.size = written([os.path.join(self.folder, output) for output in self.outputs])


def written(paths):
    """Number of files below the paths, and their bytes."""
    files = []
    for path in paths:
        below = [os.path.join(folder, name) for folder, _, names in os.walk(path) for name in names]
        files += below if os.path.isdir(path) else [path]
    return len(files), sum(os.path.getsize(path) for path in files)


def in_turn(tasks, rounds):
    """Runs every task once a round, so that a slow moment of the machine meets all of them."""
    for _ in range(rounds):
        for task in tasks:
            task.run()


def median(*tasks):
    """Medians over the rounds of elapsed and processor time and of memory. Of several tasks, the times of a round are
    added up."""
    rounds = list(zip(*(task.runs for task in tasks)))
    return types.SimpleNamespace(
        elapsed=statistics.median(sum(run.elapsed for run in runs) for runs in rounds),
        processor=statistics.median(sum(run.processor for run in runs) for runs in rounds),
        memory=statistics.median(max(run.memory for run in runs) for runs in rounds))


def instructions(command, cwd):
    """Instructions that a command executes, counted by callgrind."""
    text = must(["valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null"] + command, cwd=cwd)
    return int(re.search(r"Collected : (\d+)", text).group(1))


def table(head, rows):
    """Prints a table in Markdown, with the columns lined up: the first to the left, the others to the right."""
    widths = [max(len(row[i]) for row in [head] + rows) for i in range(len(head))]

    def line(row):
        cells = [row[0].ljust(widths[0])] + [cell.rjust(width) for cell, width in zip(row[1:], widths[1:])]
        print("| " + " | ".join(cells) + " |")

    line(head)
    print("|" + "|".join(["-" * (widths[0] + 2)] + ["-" * (width + 1) + ":" for width in widths[1:]]) + "|")
    for row in rows:
        line(row)


@contextlib.contextmanager
def figures(name, document="bench/README.md"):
    """What is printed meanwhile are the figures of that name in the document, which become these with --write."""
    text = io.StringIO()
    with contextlib.redirect_stdout(text):
        yield
    print(text.getvalue(), flush=True)
    if WRITE:
        subprocess.run([WRITE_FIGURES, name, os.path.join(ROOT, document)], input=text.getvalue(),
                       text=True, check=True)
