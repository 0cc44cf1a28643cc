"""What surrounds a run must not show: locale, umask, time zone, build and machine state; and names made to swell."""

import ctypes
import os
import re
import shutil
import subprocess

import fault_run
import resources

REPORTS = ("html", "components", "markers", "reference", "exports", "import")
LOCALES = ("de_DE", "tr_TR")


def compare(what, scenario, **how):
    box = fault_run.sandbox(scenario)
    outcome = box.run(**how)
    return f"{scenario}, {what}", outcome, box.judge(outcome, 0)


def locales():
    """Settings of locales, which are made for that."""
    folder = os.path.join(fault_run.SCRATCH, "locales")
    os.makedirs(folder)
    for name in LOCALES:
        locale = name + ".UTF-8"
        subprocess.run(["localedef", "--no-archive", "-i", name, "-f", "UTF-8", os.path.join(folder, locale)],
                       check=True)
        yield locale, {"LOCPATH": folder, "LC_ALL": locale, "LANG": locale}


def settings(quick):
    named = [
        *((zone, {"TZ": zone}) for zone in ("Pacific/Kiritimati", "America/Caracas", "junk/zone")),
        *locales(),
        ("memory that is not zero", {"MALLOC_PERTURB_": "165"}),
        ("a large environment", {f"FILLER{i}": "x" * 1000 for i in range(60)}),
    ]
    for scenario in REPORTS:
        for what, environment in named:
            yield compare(what, scenario, environment=environment)
        for mask in (0o000, 0o027, 0o077):
            before = os.umask(mask)
            yield compare(f"umask {mask:o}", scenario)
            os.umask(before)


def repetition(quick):
    for scenario in REPORTS:
        for i in range(5 if quick else 20):
            yield compare(f"run {i}", scenario)


def builds(quick):
    """Builds other than the one under test, named in VEXCOV_BUILDS, divided by colons."""
    others = [build for build in os.environ.get("VEXCOV_BUILDS", "").split(":") if build]
    yield f"{len(others)} builds beside the one under test"
    for build in others:
        for scenario in REPORTS:
            box = fault_run.sandbox(scenario)
            outcome = box.run(box.command(build=os.path.abspath(build)))
            outcome.peak = 0  # sanitizers map more
            yield f"{scenario}, {build}", outcome, box.judge(outcome, 0)


def back(i):
    """The reference to the piece number i of a mangled name."""
    digits = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ"
    if i == 0:
        return "S_"
    i -= 1
    return f"S{digits[i]}_" if i < 36 else f"S{digits[i // 36]}{digits[i % 36]}_"


def doubling(count, step, first=0):
    """Parts of a mangled name, each of which names the one before it twice, in place of the question marks."""
    return "".join(step.replace("?", back(first + i)) for i in range(count))


HOSTILE_NAMES = {
    "2^20 template arguments": "_Z1f1A1tIS_S_E" + doubling(20, "S0_I??E", 2),
    "2^24 template arguments": "_Z1f1A1tIS_S_E" + doubling(24, "S0_I??E", 2),
    "2^40 template arguments": "_Z1f1A1tIS_S_E" + doubling(40, "S0_I??E", 2),
    "2^20 pointers to members": "_Z1f1A" + doubling(20, "M??"),
    "2^26 pointers to members": "_Z1f1A" + doubling(26, "M??"),
    "function types": "_Z1f1A" + doubling(40, "F??E"),
    "nested templates": "_Z1f" + "1tI" * 600 + "i" + "E" * 600,
    "deep pointers": "_Z1f" + "P" * 5000 + "i",
    "very deep pointers": "_Z1f" + "P" * 200000 + "i",
    "very deep templates": "_Z1f" + "1tI" * 60000 + "i" + "E" * 60000,
    "length beyond the end": "_Z4294967295f",
    "length out of range": "_Z99999999999999999999f",
    "expressions": "_Z1fIXplLi1E" + "plLi1E" * 300 + "Li1EEEvv",
    "many parameters": "_Z1f" + "i" * 30000,
    "unfinished": "_ZN",
    "a forward reference": "_Z1fS9_S8_",
    "packs": "_Z1fIJiiiEEvDp" + "DpT_" * 200,
}


def hostile_names(quick):
    for what, name in HOSTILE_NAMES.items():
        for mode, arguments in (
            ("html", ("-txtbcvrgfull", "b.txt", "-xmlbcvrgfull", "b.xml")),
            ("exports", ("-txtfcvrg", "f.txt", "-xmlfcvrg", "f.xml")),
        ):
            box = resources.box_of({"a.cpp": b"int f;\n"}, [("a.cpp", name, 1)], *arguments)
            outcome = box.run(limits=fault_run.HOSTILE)
            size = sum(size for name, (size, _) in fault_run.read_tree(box.root).items() if name not in box.inputs)
            problem = outcome.problem(0)
            if not problem and outcome.processor > 1:
                problem = f"takes {outcome.processor:.1f} s"
            if not problem and size > 40 * len(name) + (4 << 20):
                problem = f"writes {size // 1024} KiB"
            yield f"{what}, {mode}", outcome, problem
            shutil.rmtree(box.root)


# Ways in which ordinary names of less than 1 KiB, the longest that the demangler takes, become long ones, for any
# number of pieces.
LONG_NAMES = (
    lambda n: f"_Z1fRKN5space{LONG}E" + "S2_" * n,
    lambda n: "_Z1fIJ3boxISsiE" + "S1_" * n + "EEvDpOT_",
    lambda n: f"_Z1fI{LONG}Ev" + "T_RKS1_" * n,
    lambda n: f"_ZN{LONG}2inI{LONG}Li1EE1fE" + "S_RKS0_" * n,
    lambda n: f"_Z1f{n}{'n' * n}1tIS_S_E" + doubling(6, "S0_I??E", 2),
)
LONG = "40" + "name" * 10


def demangled(library, name):
    text = library.__cxa_demangle(name.encode(), None, None, None)
    return text.decode() if text else name


def ordinary_names(quick):
    """Names that are not hostile are shown as the C++ library's own demangler has them: all those in that library, and
    long ones whose C++ forms have 12 to 16 KiB."""
    library = ctypes.CDLL("libstdc++.so.6")
    library.__cxa_demangle.restype = ctypes.c_char_p
    path = re.search(r"\S*libstdc\+\+\.so\S*", fault_run.read("/proc/self/maps").decode())[0]
    names = {name.decode() for name in re.findall(rb"(?<=\0)_Z\w+(?=\0)", fault_run.read(path))}
    long_names = {make(n) for make in LONG_NAMES for n in range(1, 300)
                  if 12 << 10 <= len(demangled(library, make(n))) <= 16 << 10}
    yield f"{len(names)} names and {len(long_names)} long ones"
    for what, wanted in (("names of the C++ library", names), ("long names", long_names)):
        box = resources.box_of({}, [("a.cpp", name, 1) for name in sorted(wanted)], "-txtfcvrg", "f.txt")
        outcome = box.run()
        shown = re.findall('^"(.*)"\t', fault_run.read(os.path.join(box.cwd, "f.txt")).decode(), re.M)
        wanted = sorted(demangled(library, name) for name in wanted)
        different = [name for name in wanted if name not in set(shown)]
        problem = None if sorted(shown) == wanted else f"{len(different)} of {len(wanted)} differ: {different[:2]}"
        yield what, outcome, outcome.problem(0) or problem


CHECKS = {
    "same bytes: locale, zone, umask": settings,
    "same bytes: run after run": repetition,
    "same bytes: builds": builds,
    "names: hostile": hostile_names,
    "names: ordinary": ordinary_names,
}
