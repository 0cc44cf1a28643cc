"""What surrounds a run must not show: locale, umask, time zone, build and machine state; and names made to swell."""

import os
import shutil
import subprocess

import fault_run
import resources

REPORTS = ("html", "components", "markers", "reference", "exports", "import")
LOCALES = ("de_DE", "tr_TR")


def compare(row, what, scenario, **how):
    box = fault_run.sandbox(scenario)
    outcome = box.run(**how)
    row.add(f"{scenario}, {what}", outcome, box.judge(outcome) or ("status 1" if outcome.status == 1 else None))


def check_settings(row, quick):
    folder = os.path.join(fault_run.SCRATCH, "locales")
    os.makedirs(folder, exist_ok=True)
    settings = [{"TZ": zone} for zone in ("Pacific/Kiritimati", "America/Caracas", "junk/zone")]
    if shutil.which("localedef") and os.path.isdir("/usr/share/i18n/locales"):
        for name in LOCALES:
            target = os.path.join(folder, name + ".UTF-8")
            subprocess.run(["localedef", "--no-archive", "-i", name, "-f", "UTF-8", target], check=True)
            settings.append({"LOCPATH": folder, "LC_ALL": name + ".UTF-8", "LANG": name + ".UTF-8"})
    else:
        row.note = "without locales: no localedef"
    settings.append({"MALLOC_PERTURB_": "165"})
    settings.append({f"FILLER{i}": "x" * 1000 for i in range(60)})
    for scenario in REPORTS:
        for setting in settings:
            name = " ".join(f"{key}={value}" for key, value in list(setting.items())[:2])[:60]
            compare(row, name, scenario, environment={**fault_run.ENVIRONMENT, **setting})
        for mask in (0o000, 0o027, 0o077):
            before = os.umask(mask)
            compare(row, f"umask {mask:o}", scenario)
            os.umask(before)
    return row


def check_repetition(row, quick):
    for scenario in REPORTS:
        for i in range(5 if quick else 20):
            compare(row, f"run {i}", scenario)
    return row


def check_builds(row, quick):
    """Builds other than the one under test, named in VEXCOV_BUILDS, divided by colons."""
    builds = [build for build in os.environ.get("VEXCOV_BUILDS", "").split(":") if build]
    for build in builds:
        for scenario in REPORTS:
            box = fault_run.sandbox(scenario)
            outcome = box.run(command=box.command(os.path.abspath(build)))
            outcome.peak = 0  # sanitizers map more
            compare_with = box.judge(outcome) or ("status 1" if outcome.status == 1 else None)
            row.add(f"{scenario}, {build}", outcome, compare_with)
    row.note = f"{len(builds)} builds beside the one under test"
    return row


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


def check_names(row, quick):
    for what, name in HOSTILE_NAMES.items():
        inputs = {
            "a.cpp": b"int f;\n",
            "pgopti.dpi": resources.profile_of([("a.cpp", name, 1)]),
            "pgopti.spi": f"a.cpp - {name} 1 1 C\n".encode(),
        }
        for mode, arguments in (
            ("html", ("-txtbcvrgfull", "b.txt", "-xmlbcvrgfull", "b.xml")),
            ("exports", ("-txtfcvrg", "f.txt", "-xmlfcvrg", "f.xml")),
        ):
            box = fault_run.Sandbox(fault_run.Scenario("names", "", ".", arguments), inputs)
            outcome = box.run(limits=fault_run.HOSTILE, cpu=10)
            written = [name for name in fault_run.files_below(box.root) if name not in inputs]
            size = sum(os.path.getsize(os.path.join(box.root, name)) for name in written)
            problem = outcome.problem()
            if not problem and outcome.status != 0:
                problem = f"status {outcome.status}: {outcome.errors[-200:]!r}"
            if not problem and outcome.processor > 1:
                problem = f"takes {outcome.processor:.1f} s"
            if not problem and size > 40 * len(name) + (4 << 20):
                problem = f"writes {size // 1024} KiB"
            row.add(f"{what}, {mode}", outcome, problem)
            shutil.rmtree(box.root)
    return row


CHECKS = (
    ("same bytes: locale, zone, umask", check_settings),
    ("same bytes: run after run", check_repetition),
    ("same bytes: builds", check_builds),
    ("hostile names", check_names),
)
