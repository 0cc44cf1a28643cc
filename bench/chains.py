"""Whole chains, from what a test run left to the pages, for both compilers.

clang: the tests of the library fmt (C++, many instances of templates), against llvm-profdata and llvm-cov.
gcc: the tests of ninja (C++, 50 objects and more), against lcov with genhtml and against gcovr.
"""

import glob
import os
import shutil

import debian_source
import measure

FOLDER = os.path.join(measure.BUILD, "chains")
FMT, NINJA = os.path.join(FOLDER, "fmt"), os.path.join(FOLDER, "ninja")
REPORT = ["CODE_COVERAGE.HTML", "CodeCoverage"]
PAIR = ["pgopti.spi", "pgopti.dpi"]


# The package of fmt leaves out the copy of GoogleTest that its tests are built with; the system's takes its place.
GTEST = """find_package(GTest REQUIRED)
add_library(gtest INTERFACE)
target_link_libraries(gtest INTERFACE GTest::gmock GTest::gtest)
"""


def build(folder, package, tests, options, run):
    """Builds the tests of a package and runs them, unless that was done before."""
    done = os.path.join(folder, "done")
    if os.path.exists(done):
        return
    debian_source.fetch(package, folder)
    gtest = os.path.join(folder, "source", "test", "gtest")
    if package == "fmtlib" and not os.path.isdir(gtest):
        os.mkdir(gtest)
        with open(os.path.join(gtest, "CMakeLists.txt"), "w") as made:
            made.write(GTEST)
    made = os.path.join(folder, "build")
    shutil.rmtree(made, ignore_errors=True)
    quiet = dict(os.environ, LLVM_PROFILE_FILE="/dev/null")
    measure.must(["cmake", "-G", "Ninja", "-S", os.path.join(folder, "source"), "-B", made,
                  "-DCMAKE_BUILD_TYPE=None"] + options, env=quiet)
    measure.must(["cmake", "--build", made, "--target"] + tests, env=quiet)
    for left in glob.glob(os.path.join(made, "**", "*.gcda"), recursive=True):
        os.remove(left)
    run(made)
    with open(done, "w"):
        pass


def programs():
    """fmt's test programs."""
    return sorted(path for path in glob.glob(os.path.join(FMT, "build", "bin", "*")) if os.access(path, os.X_OK))


def run_fmt(made):
    for test in programs():
        profile = os.path.join(made, os.path.basename(test) + ".profraw")
        measure.must([test], cwd=made, env=dict(os.environ, LLVM_PROFILE_FILE=profile))


def prepare():
    build(FMT, "fmtlib", ["all"],
          ["-DCMAKE_CXX_COMPILER=clang++", "-DFMT_PEDANTIC=OFF",
           "-DCMAKE_CXX_FLAGS=-w -fprofile-instr-generate -fcoverage-mapping"], run_fmt)
    build(NINJA, "ninja-build", ["ninja", "ninja_test"],
          ["-DCMAKE_CXX_COMPILER=g++", "-DCMAKE_CXX_FLAGS=-w --coverage"],
          lambda made: measure.must(["./ninja_test"], cwd=made))


class Chain:
    """Commands that run one after the other. Each comes with the folder it runs in and what it writes there."""

    def __init__(self, title, *steps):
        self.title = title
        self.tasks = [measure.Task(title, command, folder, outputs) for command, folder, outputs in steps]

    def median(self):
        return measure.median(*self.tasks)

    def row(self):
        middle = self.median()
        return [self.title, f"{middle.elapsed:.3f}", f"{middle.processor:.3f}", f"{middle.memory:.0f}"]


def in_turn(rounds, *chains):
    measure.in_turn([task for chain in chains for task in chain.tasks], rounds)
    return chains


def clang_chains(folder, rounds):
    """On fmt, each with one thread: to the pages and the import alone; ours and llvm's of both."""
    tests = programs()
    profiles = sorted(glob.glob(os.path.join(FMT, "build", "*.profraw")))
    llvm_cov = ["-num-threads=1", "-instr-profile=fmt.profdata", tests[0]]
    llvm_cov += [word for test in tests[1:] for word in ("-object", test)]
    imported = [measure.IMPORT, "clang"] + tests + profiles, folder, PAIR
    merged = ["llvm-profdata", "merge", "-num-threads=1", "-o", "fmt.profdata"] + profiles, folder, ["fmt.profdata"]
    return in_turn(
        rounds,
        Chain("`vexcov-import clang`, `vexcov`", imported, ([measure.VEXCOV, "-nopmeter"], folder, REPORT)),
        Chain("`llvm-profdata merge`, `llvm-cov show -format=html`", merged,
              (["llvm-cov", "show", "-format=html", "-output-dir=shown"] + llvm_cov, folder, ["shown/"])),
        Chain("`vexcov-import clang`", imported),
        Chain("`llvm-profdata merge`, `llvm-cov export`", merged,
              (["llvm-cov", "export", "-format=text", "-skip-expansions"] + llvm_cov, folder, [])))


def gcc_chains(folder, rounds):
    """On ninja: ours and lcov's with one process, ours and gcovr's with two. lcov reads JSON with one of two modules:
    that of Perl, which is all that its package asks for, or one in C, where that is installed, too."""
    source, made = os.path.join(NINJA, "source"), os.path.join(NINJA, "build")
    pair = [word for name in PAIR for word in ("-" + name[-3:], os.path.join(folder, name))]

    def ours(jobs):
        return Chain(f"`vexcov-import gcc -jobs {jobs}`, `vexcov`",
                     ([measure.IMPORT, "gcc", "-jobs", str(jobs), "-root", source, made], folder, PAIR),
                     ([measure.VEXCOV, "-nopmeter"] + pair, source, REPORT))

    def lcov(module):
        return Chain(f"`lcov --capture` with {module}, `genhtml`",
                     (["lcov", "--rc", "lcov_json_module=" + module, "--quiet", "--capture", "--no-external",
                       "--base-directory", source, "--directory", made, "--output-file", "ninja.info"],
                      folder, ["ninja.info"]),
                     (["genhtml", "--quiet", "--output-directory", "genhtml", "ninja.info"], folder, ["genhtml/"]))

    return in_turn(
        rounds, ours(1), lcov("JSON::PP"), lcov("Cpanel::JSON::XS"), ours(2),
        Chain("`gcovr -j 2 --html-details`",
              (["gcovr", "-j", "2", "--root", source, "--object-directory", made, "--html-details",
                "gcovr/index.html", made], folder, ["gcovr/"])))


def count_lines(path, start=""):
    with open(path) as lines:
        return sum(line.startswith(start) for line in lines)


def compare(limits, rounds):
    """Prints the table of chains and adds their limits."""
    fmt, ninja = measure.scratch("fmt-chain"), measure.scratch("ninja-chain")
    pages, shown, imported, exported = clang_chains(fmt, rounds)
    one, lcov, fast_lcov, two, gcovr = gcc_chains(ninja, rounds)
    objects = len(glob.glob(os.path.join(NINJA, "build", "**", "*.gcno"), recursive=True))
    instances = measure.must(["llvm-cov", "export", "-format=lcov", "-skip-expansions"] + shown.tasks[1].command[5:],
                             cwd=fmt).count("\nFN:")
    print(f"Whole chains, medians of {rounds} rounds:\n")
    with measure.figures("peers: chains"):
        print(f"clang: the tests of fmt 9.1, {len(programs())} programs with {instances:,} functions, which are "
              f"{count_lines(os.path.join(fmt, 'pgopti.spi')):,} places in the sources. "
              f"GCC: ninja 1.11 with its tests, {objects} objects.\n")
        measure.table(["", "elapsed s", "processor s", "MiB"],
                      [chain.row() for chain in (pages, shown, imported, exported, one, lcov, fast_lcov, two, gcovr)])
    for name, title, ours, others in (
            ("chain: llvm-cov show", "clang, to the pages: llvm-cov's time, in ours", pages, shown),
            ("chain: llvm-cov export", "clang, the import alone: llvm-cov's time, in ours", imported, exported),
            ("chain: lcov", "GCC, one process: time of lcov and genhtml, in ours", one, lcov),
            (None, "the same, lcov with Cpanel::JSON::XS", one, fast_lcov),
            ("chain: gcovr", "GCC, two processes: time of gcovr, in ours", two, gcovr)):
        limits.at_least(name, title, others.median().processor / ours.median().processor,
                        others.median().elapsed / ours.median().elapsed)
    limits.at_most("chain: memory", "clang, to the pages: our memory, in llvm-cov's",
                   pages.median().memory / shown.median().memory)
