"""Damaged inputs: nothing that stands in a file may crash, hang or bloat a run, and a run that ends well leaves a
whole report."""

import functools
import json
import os
import random
import re
import struct

import fault_run

PROFILES = (("narrow", "narrow/pgopti.dpi"), ("wide", "wide/pgopti.dpi"), ("html", "pgopti.dpi"),
            ("reference", "new.dpi"))
CUT = PROFILES + (("clang", "clang19/p"), ("clang", "clang19/1.profraw"), ("clang", "clang19/2.profdata"),
                  ("archive", "library.a"), ("documents", "demo.json.gz"), ("traces", "v2.info"), ("objects", "a.gcno"),
                  ("objects", "a.gcda"), ("check", "change.diff"), ("floors", "old.json"), ("formats", "pgopti.dpi"),
                  ("merge", "one.dpi"), ("show", "all.dpi"))
# Scenario, input file, number of mutations, words that are spliced in.
MUTATED = (
    ("narrow", "narrow/pgopti.dpi", 2000, ()),
    ("wide", "wide/pgopti.dpi", 2000, ()),
    ("reference", "old.dpi", 1000, ()),
    ("exports", "full/pgopti.dpi", 1000, ()),
    ("html", "pgopti.spi", 2000, (b"V1 ", b"-1", b"99999999999", b" ", b"\n", b"\0", b"_Z")),
    ("wide", "pgopti.spi", 1000, (b"V1 1 1 1\n", b"4294967296", b"C")),
    ("components", "list.txt", 1000, (b'"', b"~", b"\n", b"ONE_LINE_NOTFEASIBLE:", b"BEGIN_NOTFEASIBLE:", b"\0")),
    ("markers", "scanner.c", 1500, (b"/*", b"*/", b"//", b'"', b"'", b"\\", b"{", b"}", b"NEVER", b"BEGIN", b"END")),
    ("html", "order.c", 1000, (b"\t", b"\r\n", b"\0", b"<", b"&", b" " * 300, b"\n" * 50)),
    ("import", "flow.json", 3000, (b"[", b"]", b"{", b"}", b'"', b",", b"-1", b"1e999", b"18446744073709551616",
                                   b"\\ud800", b"null", b"[" * 2000)),
    ("clang", "clang19/p", 2000, ()),
    ("clang", "clang19/1.profraw", 2000, ()),
    ("clang", "clang19/2.profdata", 2000, ()),
    ("archive", "library.a", 1000, (b"`\n", b"/", b"999999999 ")),
    ("documents", "demo.json", 2000, (b"[", b"]", b"{", b"}", b'"', b",", b"-1", b"18446744073709551616", b"\0")),
    ("documents", "demo.json.gz", 500, ()),
    ("traces", "v1.info", 2000, (b"SF:", b"DA:", b"FN:1,2,", b"end_of_record\n", b",", b"-1", b"99999999999", b"\n", b"\0")),
    ("traces", "v1.info.gz", 500, ()),
    ("objects", "a.gcno", 300, ()),
    ("objects", "a.gcda", 300, ()),
    ("check", "change.diff", 2000, (b"@@ -1,2 +3,4 @@\n", b"--- ", b"+++ ", b"diff --git ", b'"', b"\\", b"\n+", b"\n-", b"-1")),
    ("check", "old.dpi", 500, ()),
    ("floors", "old.json", 1500, (b"[", b"]", b"{", b"}", b'"', b",", b"-1", b"1e999", b"9223372036854775807")),
    ("floors", "pgopti.spi", 500, (b"-1", b"99999999999", b" ", b"\n", b"_Z")),
    ("formats", "pgopti.dpi", 1000, ()),
    ("formats", "pgopti.spi", 500, (b"-1", b"99999999999", b" ", b"\n", b"_Z", b"&", b"\xff")),
    ("formats", "src/shop.c", 500, (b"{", b"}", b"\n", b"/*", b"\0")),
    ("merge", "one.dpi", 1500, ()),
    ("merge", "one.spi", 500, (b"-1", b"99999999999", b" ", b"\n")),
    ("show", "all.dpi", 1500, ()),
    ("findings", "good.dpi", 500, ()),
    ("findings", "good.spi", 500, (b"-1", b"99999999999", b" ", b"\n", b"../", b"_")),
    ("import", "flow.cpp", 500, (b"{", b"}", b"\n", b"/*", b"\0")),
)

# Header fields of the file and of a record in both layouts: (offset, size). Behind them stand words of 4 bytes.
FILE_FIELDS = [(0, 4), (4, 4), (8, 4), (12, 4), (16, 4)]
RECORD_FIELDS = {
    "narrow/pgopti.dpi": (60, 4, [(0, 1), (1, 1), *((o, 4) for o in range(0, 40, 4)), (40, 8), (48, 8), (56, 4)]),
    "wide/pgopti.dpi": (80, 8, [(0, 1), (1, 1), *((o, 4) for o in range(0, 40, 4)),
                                *((o, 8) for o in range(40, 80, 8))]),
}


def is_whole_text(name, text):
    """What is missing in what a companion writes, or None."""
    try:
        if name.endswith(".json"):
            json.loads(text)
    except ValueError as error:
        return f"{name} is no JSON: {error}"
    endings = {".xml": b"</coverage>\n", ".info": b"end_of_record\n"}
    ending = endings.get(os.path.splitext(name)[1])
    return f"{name} is cut off" if text and ending and not text.endswith(ending) else None


def is_whole_result(box, outcome):
    """The same of a run of vexcov-check, vexcov-export or vexcov-profile."""
    problems = [is_whole_text(name, fault_run.read(os.path.join(box.root, name)))
                for name in fault_run.read_tree(box.root).keys() - box.inputs.keys()]
    if box.scenario.name in ("export", "floors", "show"):
        problems.append(is_whole_text("output.json", outcome.output))
    elif box.scenario.name == "check" and not outcome.output.split(b"\n")[-2:][0].startswith(b"vexcov-check: "):
        problems.append("no last line")
    elif box.scenario.name == "merge":  # the sum can be read
        problems.append(fault_run.run([os.path.join(fault_run.BUILD, "vexcov-profile"), "show", "kept.dpi"],
                                      box.cwd).problem(0))
    return next(filter(None, problems), None)


def is_whole(box, data, outcome):
    """What is missing in the output of a run that ended well, or None. The listing of an empty source has no foot."""
    if box.scenario.tool == "vexcov-import":  # the pair can be read
        return fault_run.run([os.path.join(fault_run.BUILD, "vexcov"), "-nopmeter"], box.cwd).problem(0)
    if box.scenario.tool != "vexcov":
        return is_whole_result(box, outcome)
    for name in os.listdir(box.cwd):
        if name.endswith(".xml") and not fault_run.read(os.path.join(box.cwd, name)).endswith(b"</PROJECT>\n"):
            return name + " is cut off"
    folder = os.path.join(box.cwd, "CodeCoverage")
    if not os.path.isdir(folder):
        return None if "-txtfcvrg" in box.scenario.arguments else "no report"
    if not os.path.exists(os.path.join(box.cwd, "CODE_COVERAGE.HTML")):
        return "no root page"
    pages = {name for name in os.listdir(folder) if name.endswith(".HTML")}
    for page in pages:
        text = fault_run.read(os.path.join(folder, page))
        if not text.rstrip().endswith(b"</html>") and (data or not page.endswith("_SRC.HTML")):
            return page + " is cut off"
        # Whatever stands in a source is escaped, so every link is one of the report's own.
        for link in set(re.findall(rb'(?:href|src)="([A-Z0-9_]+\.HTML)', text)):
            if link.decode() not in pages and link != b"CODE_COVERAGE.HTML":
                return f"{page} refers to {link.decode()}, which is not there"
    return None


def try_input(job):
    scenario, name, damaged, what = job
    box = fault_run.sandbox(scenario)
    data = damaged(box.inputs[name])
    changed = {name: data}
    outcome = box.run(changed=changed, limits=fault_run.HOSTILE)
    if scenario == "objects":
        outcome.peak = 0  # that of gcov, which believes its notes

    def judge_output(tree):
        problem = is_whole(box, data, outcome)
        again = box.run(changed=changed, environment={"MALLOC_PERTURB_": "165"})
        same = (again.status, again.output, fault_run.read_tree(box.root)) == (outcome.status, outcome.output, tree)
        return problem or (None if same else "a second run, without limits, makes something else of it")

    problem = box.judge(outcome, changed=changed, judge_output=judge_output,
                        found=box.scenario.tool in ("vexcov-check", "vexcov-profile"))
    if b"memory" in b"\n".join(outcome.lines()):
        problem = "runs out of memory"
    return f"{scenario}, {name}, {what}", outcome, problem


def mutate(words, seed, data):
    """One to four damages: a bit, a byte, a word of 4 bytes, a spliced word, a doubled or lost piece, the end lost."""
    bytes_, chance = bytearray(data), random.Random(seed)
    for _ in range(chance.randint(1, 4)):
        if not bytes_:
            break
        at = chance.randrange(len(bytes_))
        kind = chance.randrange(7)
        if kind == 0:
            bytes_[at] ^= 1 << chance.randrange(8)
        elif kind == 1:
            bytes_[at] = chance.choice((0, 1, 0x7F, 0x80, 0xFF, chance.randrange(256)))
        elif kind == 2:
            bytes_[at : at + 4] = struct.pack("<I", chance.choice((0, 1, len(data), 0x7FFFFFFF, 0xFFFFFFFF)))
        elif kind == 3 and words:
            bytes_[at:at] = chance.choice(words)
        elif kind == 4:
            bytes_[at:at] = bytes_[at : at + chance.randint(1, 64)]
        elif kind == 5:
            del bytes_[at : at + chance.randint(1, 16)]
        elif chance.randrange(4) == 0:
            del bytes_[at:]
    return bytes(bytes_)


def cut(length, data):
    return data[:length]


def replace(at, piece, data):
    return data[:at] + piece + data[at + len(piece) :]


# Scenario, input file, what makes the damaged file of the sound one, and its name. The thousands of damaged files are
# made where they are used: what this process holds counts as memory of the programs that it starts.


def mutations(quick):
    for scenario, name, count, words in MUTATED:
        for i in range(count // (10 if quick else 1)):
            seed = f"{scenario}/{name}/{i}"
            yield scenario, name, functools.partial(mutate, words, seed), f"mutation {seed}"


def truncations(quick):
    for scenario, name in CUT:
        original = fault_run.sandbox(scenario).inputs[name]
        for length in range(0, len(original), 7 if quick else 1):
            yield scenario, name, functools.partial(cut, length), f"first {length} bytes"


def fields_of(name, data):
    """Offset and size of every field of the file and its records."""
    header, size_at, fields = RECORD_FIELDS[name]
    yield from FILE_FIELDS
    start = 528
    for _ in range(struct.unpack_from("<I", data, 8)[0]):
        size = struct.unpack_from("<I", data, start + size_at)[0]
        yield from ((start + offset, width) for offset, width in fields)
        yield from ((start + offset, width) for width in (4, 8) for offset in range(header, size, width))
        start += size


def fields(quick):
    for scenario, name in PROFILES[:2]:
        data = fault_run.sandbox(scenario).inputs[name]
        for i, (at, width) in enumerate(fields_of(name, data)):
            value = int.from_bytes(data[at : at + width], "little")
            values = {0, 1, value - 1, value + 1, 2**31 - 1, 2**31, 2**32 - 1, len(data) - 1, len(data), len(data) + 1,
                      *((2**63 - 1, 2**63, 2**64 - 1) if width == 8 else ())}
            values = sorted(v for v in values if 0 <= v < 256**width and v != value)
            for new in values[i % 2 :: 2] if quick else values:
                changed = functools.partial(replace, at, new.to_bytes(width, "little"))
                yield scenario, name, changed, f"{new} in {width} bytes at {at}"


CHECKS = {
    "damage: mutations": lambda quick: fault_run.spread(try_input, mutations(quick)),
    "damage: every truncation": lambda quick: fault_run.spread(try_input, truncations(quick)),
    "damage: every field": lambda quick: fault_run.spread(try_input, fields(quick)),
}
