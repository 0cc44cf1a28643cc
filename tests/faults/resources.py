"""What a run needs is missing: disk, streams, descriptors, or the run itself ends at once."""

import copy
import os
import random
import resource
import subprocess
import time

import fault_run

SEVERAL = ("html", "exports", "import", "clang", "gcov", "traces", "check", "formats", "export", "merge", "show", "findings",
           "site")


COMPANIONS = ("vexcov-check", "vexcov-export", "vexcov-profile")


def small_disks(quick):
    """The disk is full after 0 to 20 twentieths of what the run writes."""
    if os.geteuid() != 0:
        yield "left out: needs root"
        return
    folder = os.path.join(fault_run.SCRATCH, "disk")
    os.makedirs(folder, exist_ok=True)
    page = resource.getpagesize()
    for scenario in SEVERAL:
        box = fault_run.sandbox(scenario)
        if not box.sizes():
            continue
        inputs = sum(-(-len(data) // page) for data in box.inputs.values())
        outputs = sum(-(-size // page) for size in box.sizes())
        for step in range(0, 21, 4 if quick else 1):
            # A merge keeps what it collects on the disk, too.
            size = f"size={(inputs + (outputs * 3 if step == 20 else outputs * step // 20) + 2 * (step == 20)) * page}"
            subprocess.run(["mount", "-t", "tmpfs", "tmpfs", folder], check=True)
            try:
                small = copy.copy(box)
                small.move(folder)
                small.prepare()
                small.reset()
                subprocess.run(["mount", "-o", "remount," + size, folder], check=True)
                outcome = small.run()
                yield f"{scenario} on a disk with {size}", outcome, small.judge(outcome, 0 if step == 20 else None)
            finally:
                subprocess.run(["umount", folder], check=True)


# Arguments of runs one of whose outputs goes to the full device, by scenario.
FULL_OUTPUTS = (
    ("html", "-txtbcvrgfull", "/dev/full"),
    ("html", "-xmlbcvrgfull", "/dev/full"),
    ("exports", "-txtfcvrg", "/dev/full"),
    ("exports", "-xmlfcvrg", "/dev/full"),
    ("import", "clang", "-dpi", "/dev/full", "flow.json"),
    ("import", "clang", "-spi", "/dev/full", "flow.json"),
    ("formats", "lcov", "-o", "/dev/full"),
    ("formats", "-json", "figures.json", "-markdown", "/dev/full"),
)
TALKING = (("html",), ("exports",), ("check",), ("export",), ("formats", "text"), ("formats", "markdown"),
           ("formats", "github"), ("formats", "cobertura"), ("formats", "lcov"), ("formats", "sonar"), ("floors",),
           ("show",), ("show", "show", "all.dpi"), ("findings",), ("exports", "-help"), ("import", "-help"),
           ("import", "-version"), ("export", "-help"), ("check", "-help"), ("show", "-version"), ("site", "-help"))
SILENT = ("import", "check", "floors", "show", "findings", "site")  # on standard error


def full_exports(quick):
    for scenario, *arguments in FULL_OUTPUTS:
        box = fault_run.sandbox(scenario)
        outcome = box.run(box.command(*arguments))
        yield f"{scenario} {' '.join(arguments)}", outcome, box.judge(outcome, 1)


def lost_streams(quick):
    """A stream is /dev/full, or nobody reads standard output."""
    reader, unread = os.pipe()
    os.close(reader)
    with open("/dev/full", "wb") as full:
        for what, stream, taker in (("a full output", "output", full), ("full errors", "errors", full),
                                    ("no reader", "output", unread)):
            for scenario, *arguments in TALKING:
                box = fault_run.sandbox(scenario)
                outcome = box.run(box.command(*arguments), **{stream: taker})
                has_told = stream == "errors" or b"cannot write standard output" in outcome.errors
                says_nothing = stream == "errors" and (scenario in SILENT or (scenario == "export" and arguments))
                yield f"{scenario} {' '.join(arguments)} with {what}", outcome, (
                    outcome.problem(0 if says_nothing else 1) or (None if has_told else "no message"))
    os.close(unread)


def file_size(quick):
    for scenario in SEVERAL:
        box = fault_run.sandbox(scenario)
        largest = max([len(box.expected_output), *box.sizes()])
        # The parts of a split export are collected in one temporary file before they are written.
        enough = sum(box.sizes()) if scenario == "formats" else largest
        for size in sorted({0, 1, 100, largest - 1, enough, *range(512, largest, 4096 if quick else 256)}):
            # Standard output is a file too here, but not the stream that tells of it.
            reader, writer = os.pipe()
            outcome = box.run(limits={resource.RLIMIT_FSIZE: size}, errors=writer)
            os.close(writer)
            with open(reader, "rb") as stream:
                outcome.errors = stream.read()
            yield f"{scenario}, files of at most {size} bytes", outcome, box.judge(outcome, int(size < enough))


def closed_streams(quick):
    """The run is as ever, and no file is opened in the place of a stream."""
    log = os.path.join(fault_run.SCRATCH, "opened")
    for scenario in SEVERAL:
        box = fault_run.sandbox(scenario)
        for closed in range(8):
            redirections = "".join(text for bit, text in ((1, " <&-"), (2, " >&-"), (4, " 2>&-")) if closed & bit)
            command = ["/bin/sh", "-c", f'exec "$@"{redirections}', "sh"]
            outcome = box.run(["strace", "-o", log, "-e", "trace=openat", *command, *box.command()])
            opened = fault_run.read(log).splitlines()
            # What a companion says on standard output is its result, and must not get lost.
            lost = closed & 2 and box.scenario.tool in COMPANIONS and box.expected_output
            problem = box.judge(outcome, 1 if lost else 0, any_output=closed & 2, silent=closed & 4)
            if any(b"O_CREAT" in line and line.endswith((b"= 0", b"= 1", b"= 2")) for line in opened):
                problem = "a file is opened in the place of a stream"
            yield f"{scenario}{redirections}", outcome, problem


def box_of(texts, functions, *arguments, more_lines=""):
    """A sandbox with sources of these texts by name, and one covered block in each of the functions."""
    inputs = {**texts, "a.dpi": fault_run.profile_of([(file, name) for file, name, _ in functions])}
    lines = (f"{file} - {name} {line} 1 C\n" for file, name, line in functions)
    inputs["pgopti.spi"] = ("".join(lines) + more_lines).encode()
    return fault_run.Sandbox(fault_run.Scenario("made", inputs, ".", ("-nopmeter", "-dpi", "a.dpi", *arguments)))


def many_sources(count):
    """A sandbox with `count` sources; every third has a function that was never called."""
    names = [f"s{i:05}.c" for i in range(count)]
    return box_of({name: b"int f() { return 1; }\nint g() { return 2; }\n" for name in names},
                  [(name, "f", 1) for name in names], "-counts",
                  more_lines="".join(f"{name} - g 2 1 C\n" for name in names[::3])).prepare()


def few_descriptors(quick):
    for scenario in SEVERAL:
        box = fault_run.sandbox(scenario)
        for count in range(4, 17):
            outcome = box.run(limits={resource.RLIMIT_NOFILE: count})
            # With less than the loader needs nothing begins.
            yield f"{scenario} with {count} descriptors", outcome, outcome.status != 127 and box.judge(outcome)
    box = many_sources(300 if quick else 4000)
    yield f"{len(box.inputs) - 2} sources"
    outcome = box.run(limits={resource.RLIMIT_NOFILE: 16})
    yield "many sources with 16 descriptors", outcome, box.judge(outcome, 0)


def kill(quick):
    chance = random.Random(1)
    for box in (many_sources(300), *map(fault_run.sandbox, ("import", "clang", "gcov", "formats", "merge", "site"))):
        length = min(box.run().seconds for _ in range(5))
        for i in range(6 if quick else 25):
            status = 0
            while status == 0:  # until it was killed before its end
                box.reset()
                process = fault_run.start(box.command(), box.cwd)
                time.sleep(chance.random() * length)
                process.kill()
                status = process.wait()
            problem = None
            if box.scenario.tool not in ("vexcov", "vexcov-site"):  # each file is whole at any moment
                left = fault_run.read_tree(box.root)
                for name, expected in box.expected.items():
                    if left.get(name) not in (box.digests.get(name), expected):
                        problem = f"{name} is half-written"
                for name in os.listdir(box.cwd):
                    if name.endswith((".tmp", "~")):
                        os.unlink(os.path.join(box.cwd, name))
            elif box.scenario.tool == "vexcov-site":
                found = {name: left for name, left in fault_run.read_tree(box.root).items() if ".tmp" not in name}
                if not box.is_told_from_whole(found, box.digests):
                    problem = "a part of a site has a start page"
            else:  # whatever is left of a page is replaced
                for name in box.expected.keys() - box.inputs.keys():
                    fault_run.write(os.path.join(box.root, name), b"<html>")
            outcome = fault_run.run(box.command(), box.cwd)
            yield f"{box.scenario.name}, rerun after kill {i}", outcome, problem or box.judge(outcome, 0)


def dying_gcov(quick):
    """gcov writes a part of its document, of every length, and ends well, with a fault, or is killed."""
    box = fault_run.sandbox("gcov")
    whole = box.inputs["demo.json"].index(b"\n") + 1
    for length in (*range(0, whole - 1, 997 if quick else 61), whole - 1, whole):
        for end in ("exit 0", "exit 2", "kill -9 $$", "sleep 1 & kill -11 $$"):
            outcome = box.run(environment={"GCOV_BYTES": str(length), "GCOV_END": end})
            # A whole document is whole however gcov ends, but for a signal.
            right = 0 if length >= whole - 1 and end.startswith("exit") else 1
            yield f"gcov writes {length} bytes, {end}", outcome, box.judge(outcome, right)


CHECKS = {
    "gcov: ended at any length": dying_gcov,
    "disk: small file systems": small_disks,
    "disk: an export to /dev/full": full_exports,
    "disk: file size limit": file_size,
    "streams: closed": closed_streams,
    "streams: full, or no reader": lost_streams,
    "descriptors: few": few_descriptors,
    "kill -9, then again": kill,
}
