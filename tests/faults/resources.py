"""What a run needs is missing: disk, streams, descriptors, or the run itself ends at once."""

import math
import os
import random
import resource
import struct
import subprocess
import time

import fault_run

TRIO = ("html", "exports", "import")


def check_small_disks(row, quick):
    """The disk is full after 0 to 20 twentieths of what the run writes."""
    if os.geteuid() != 0:
        row.note = "left out: needs root"
        return row
    for scenario in TRIO:
        box = fault_run.sandbox(scenario)
        page = resource.getpagesize()
        inputs = sum(math.ceil(len(data) / page) for data in box.inputs.values())
        outputs = sum(math.ceil(data[0] / page) for name, data in box.expected.items() if data != box.digests.get(name))
        for step in range(0, 21, 4 if quick else 1):
            folder = os.path.join(fault_run.SCRATCH, "disk")
            os.makedirs(folder, exist_ok=True)
            size = f"size={(inputs + outputs * step // 20 + (2 if step == 20 else 0)) * page}"
            subprocess.run(["mount", "-t", "tmpfs", "-o", size, "tmpfs", folder], check=True)
            try:
                small = fault_run.Sandbox(box.scenario, box.inputs, folder)
                small.expected, small.expected_output, small.usual_lines = (
                    box.expected, box.expected_output, box.usual_lines)
                outcome = fault_run.run(small.command(), small.cwd)
                row.add(f"{scenario} on a disk with {size}", outcome, small.judge(outcome))
            finally:
                subprocess.run(["umount", folder], check=True)
        if outcome.status != 0:
            row.violations.append(f"{scenario}: fails with room for everything")
    return row


# Arguments of runs one of whose outputs goes to the full device, by scenario.
FULL_OUTPUTS = (
    ("html", ("-txtbcvrgfull", "/dev/full")),
    ("html", ("-xmlbcvrgfull", "/dev/full")),
    ("exports", ("-txtfcvrg", "/dev/full")),
    ("exports", ("-xmlfcvrg", "/dev/full")),
    ("import", ("clang", "-dpi", "/dev/full", "flow.json")),
    ("import", ("clang", "-spi", "/dev/full", "flow.json")),
)
TALKING = (("html", ()), ("exports", ()), ("exports", ("-help",)), ("import", ("-help",)), ("import", ("-version",)))


def check_full_device(row, quick):
    for scenario, arguments in FULL_OUTPUTS:
        box = fault_run.sandbox(scenario)
        outcome = box.run(command=[box.command()[0], *arguments])
        problem = box.judge(outcome) or ("status 0" if outcome.status == 0 else None)
        row.add(f"{scenario} {' '.join(arguments)}", outcome, problem)
    for scenario, arguments in TALKING:
        for stream in ("output", "errors"):
            box = fault_run.sandbox(scenario)
            command = [box.command()[0], *arguments] if arguments else box.command()
            with open("/dev/full", "wb") as full:
                outcome = box.run(command=command, **{stream: full})
            problem = outcome.problem()
            said_nothing = stream == "errors" and scenario == "import"
            if not problem and outcome.status == 0 and not said_nothing:
                problem = "status 0"
            row.add(f"{scenario} {' '.join(arguments)}, {stream} to /dev/full", outcome, problem)
    return row


def check_file_size(row, quick):
    for scenario in TRIO:
        box = fault_run.sandbox(scenario)
        largest = max(size for size, _ in box.expected.values()) + 1
        sizes = {0, 1, 100, largest - 2, largest, *range(512, largest, 4096 if quick else 256)}
        for size in sorted(sizes):
            # The streams are files too here: they would be subject to the limit.
            reader, writer = os.pipe()
            outcome = box.run(limits={resource.RLIMIT_FSIZE: size}, errors=writer)
            os.close(writer)
            with open(reader, "rb") as stream:
                outcome.errors = stream.read()
            problem = box.judge(outcome, partial_streams=size < 99)
            row.add(f"{scenario}, files of at most {size} bytes", outcome, problem)
    return row


def check_closed_streams(row, quick):
    for scenario in TRIO:
        box = fault_run.sandbox(scenario)
        for closed in range(8):
            redirections = "".join(text for bit, text in ((1, " <&-"), (2, " >&-"), (4, " 2>&-")) if closed & bit)
            command = ["/bin/sh", "-c", f'exec "$@"{redirections}', "sh", *box.command()]
            outcome = box.run(command=command)
            problem = box.judge(outcome, silent=closed & 4, partial_streams=closed & 2)
            if not problem and outcome.status != 0:
                problem = "status 1"
            row.add(f"{scenario}{redirections}", outcome, problem)
    return row


def check_reader_gone(row, quick):
    for scenario, arguments in TALKING:
        box = fault_run.sandbox(scenario)
        command = [box.command()[0], *arguments] if arguments else box.command()
        reader, writer = os.pipe()
        os.close(reader)
        outcome = box.run(command=command, output=writer)
        os.close(writer)
        problem = outcome.problem() or ("status 0" if outcome.status == 0 else None)
        if not problem and b"cannot write standard output" not in outcome.errors:
            problem = "no message"
        row.add(f"{scenario} {' '.join(arguments)}, nobody reads", outcome, problem)
    return row


def profile_of(functions):
    """A profile of 64-bit records with one block each. `functions`: file, name and count, in key order."""
    size = 80 + 8 + 8 + 8 + 8
    strings = 528 + size * len(functions)
    records, texts = bytearray(), bytearray()
    for file, name, count in functions:
        file_at = strings + len(texts)
        texts += file.encode() + b"\0"
        name_at = strings + len(texts)
        texts += name.encode() + b"\0"
        records += struct.pack("<BBHIIIIIIIII", 0x50, 3, 0, 0, size, 1, 1, 0, 0, 0, 0, 0)
        records += struct.pack("<QQQQQ", file_at, name_at, 0, 0, 0)
        records += struct.pack("<QQIIII", count, name_at, 0, 0, 1, 1)
    return struct.pack("<IIII512x", 0xDC0B, 1, len(functions), 0) + records + texts


def many_sources(count):
    """A sandbox with `count` sources; every third has a function that was never called."""
    names = [f"s{i:05}.c" for i in range(count)]
    inputs = {name: b"int f() { return 1; }\nint g() { return 2; }\n" for name in names}
    inputs["pgopti.dpi"] = profile_of([(name, "f", 1) for name in names])
    lines = [f"{name} - f 1 1 C\n" + (f"{name} - g 2 1 C\n" if i % 3 == 0 else "") for i, name in enumerate(names)]
    inputs["pgopti.spi"] = "".join(lines).encode()
    return fault_run.Sandbox(fault_run.Scenario("many", "", ".", ("-counts",)), inputs).prepare()


def with_descriptors(count, box):
    return ["/bin/sh", "-c", f'ulimit -n {count}; exec "$@"', "sh", *box.command()]


def check_few_descriptors(row, quick):
    for scenario in TRIO:
        box = fault_run.sandbox(scenario)
        for count in range(4, 17):
            outcome = box.run(command=with_descriptors(count, box))
            # With less than the loader needs nothing begins.
            problem = None if outcome.status == 127 else box.judge(outcome)
            row.add(f"{scenario} with {count} descriptors", outcome, problem)
    box = many_sources(300 if quick else 4000)
    outcome = box.run(command=with_descriptors(16, box))
    problem = box.judge(outcome) or ("status 1" if outcome.status else None)
    row.add("many sources with 16 descriptors", outcome, problem)
    row.note = f"{len(box.inputs) - 2} sources"
    return row


def check_kill(row, quick):
    chance = random.Random(1)
    for box in (many_sources(300), fault_run.sandbox("import")):
        length = box.run().seconds
        for i in range(6 if quick else 25):
            box.reset()
            process = subprocess.Popen(box.command(), cwd=box.cwd, env=fault_run.ENVIRONMENT,
                                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            time.sleep(chance.random() * length)
            process.kill()
            process.wait()
            problem = None
            if box.scenario.tool == "vexcov-import":  # each of the two is whole at any moment
                for name in ("pgopti.dpi", "pgopti.spi"):
                    left = fault_run.digest(fault_run.read(os.path.join(box.cwd, name)))
                    if left not in (box.digests[name], box.expected[name]):
                        problem = f"{name} is half-written"
                for name in os.listdir(box.cwd):
                    if name.endswith(".tmp") or name.endswith("~"):
                        os.unlink(os.path.join(box.cwd, name))
            outcome = fault_run.run(box.command(), box.cwd)
            problem = problem or box.judge(outcome) or ("status 1" if outcome.status else None)
            row.add(f"{box.scenario.name}, rerun after kill {i}", outcome, problem)
    return row


CHECKS = (
    ("disk: small file systems", check_small_disks),
    ("disk: /dev/full", check_full_device),
    ("disk: file size limit", check_file_size),
    ("streams: closed", check_closed_streams),
    ("streams: reader gone", check_reader_gone),
    ("descriptors: few", check_few_descriptors),
    ("kill -9, then again", check_kill),
)
