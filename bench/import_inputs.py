"""Made-up inputs of the importer, with their sources, of any size."""

import json
import os
import shutil
import subprocess

import measure


def put(folder, name, text):
    with open(os.path.join(folder, name), "w") as stream:
        stream.write(text)


def region(first, column, last, end, count):
    return [first, column, last, end, count, 0, 0, 0]


def write_export(folder, files=1, functions=1, regions=1, height=None, nested=False, name="", passed=0):
    """Writes made-up sources and clang's export of them. Each function begins `height` lines below the one before,
    by default behind its end, and has so many regions with a line each; nested ones end in turn."""
    height = regions + 2 if height is None else height
    lines = functions * (height + 1) + regions + 2
    text = "".join(f"    if (n > {i % 100}) n++;\n" for i in range(lines))
    listed = []
    for file in range(files):
        path = f"file_{file:07}.c"
        put(folder, path, text)
        for i in range(functions):
            first = 1 + i * height
            last = lines - i if nested else first + regions + 1
            parts = [region(first, 5, last, 20, 7 + i % 5)]
            parts += [region(first + 1 + k, 16, first + 1 + k, 19, k % 9) for k in range(regions)]
            listed.append(dict(branches=[], count=7 + i % 5, filenames=[path], name=name or f"f{file}_{i}",
                               regions=parts))
    skipped = [[i + 1, 5, i % 100, True, True, False] for i in range(passed)]
    export = dict(data=[dict(files=[dict(filename=path, segments=skipped)], functions=listed, totals={})],
                  type="llvm.coverage.json.export", version="2.0.1")
    with open(os.path.join(folder, "export.json"), "w") as stream:
        json.dump(export, stream, separators=(",", ":"))


def write_program(folder, functions=1, regions=1, profiles=1, filler=0):
    """Compiles a program with clang and runs it. Each function has so many regions with a line each. `profiles`: copies
    of the profile; `filler`: bytes of the program that are not of interest."""
    lines = ["#include <stdlib.h>\n"]
    lines += [f"unsigned char filler[{filler}] = {{1}};\n"] if filler else []
    for i in range(functions):
        lines.append(f"int f{i}(int n) {{\n" + "".join(f"    if (n > {k % 9}) n++;\n" for k in range(regions)) +
                     "    return n;\n}\n")
    lines.append("int main(int n, char** v) {\n" + "".join(f"    n += f{i}({i % 7});\n" for i in range(functions)) +
                 "    return 0;\n}\n")
    put(folder, "a.c", "".join(lines))
    measure.must(["clang", "-O0", "-w", "-fprofile-instr-generate", "-fcoverage-mapping", "a.c", "-o", "program"],
                 cwd=folder)
    os.mkdir(os.path.join(folder, "runs"))
    first = os.path.join(folder, "runs", "0.profraw")
    subprocess.run(["./program"], cwd=folder, check=True, env=dict(os.environ, LLVM_PROFILE_FILE=first))
    for i in range(1, profiles):
        shutil.copy(first, os.path.join(folder, "runs", f"{i}.profraw"))


def write_documents(folder, files=1, functions=1, lines=4, copies=1, instances=1):
    """Writes what gcov tells of made-up sources: a document for each of the `copies` of an object. Each function has so
    many lines and, as those of a template, so many `instances`."""
    height = lines + 1
    listed = []
    for file in range(files):
        path = f"file_{file:07}.cpp"
        put(folder, path, "    n += n;\n" * (functions * height + 1))
        named, counted = [], []
        for i in range(functions):
            first = 1 + i * height
            for k in range(instances):
                name = f"_Z1fILi{k}EEv{i}"
                named.append(dict(name=name, demangled_name=f"f{i}<{k}>()", start_line=first, start_column=5,
                                  end_line=first + lines - 1, end_column=9, blocks=lines, blocks_executed=lines,
                                  execution_count=k + 1))
                counted += [dict(line_number=first + l, count=(k + l) % 5, unexecuted_block=False, function_name=name,
                                 branches=[]) for l in range(lines)]
        listed.append(dict(file=path, functions=named, lines=counted))
    document = json.dumps(dict(format_version="1", gcc_version="12.2.0", current_working_directory=folder,
                               data_file="a.gcno", files=listed), separators=(",", ":"))
    with open(os.path.join(folder, "counts.json"), "w") as stream:
        for _ in range(copies):
            stream.write(document + "\n")


def write_trace(folder, files=1, functions=1, lines=4, branches=0, copies=1):
    """Writes an LCOV trace of made-up sources, the same sections as often as `copies` says."""
    height = lines + 1
    sections = []
    for file in range(files):
        path = f"file_{file:07}.c"
        put(folder, path, "    n += n;\n" * (functions * height + 1))
        section = [f"SF:{path}\n"]
        for i in range(functions):
            first = 1 + i * height
            section.append(f"FN:{first},f{i}\nFNDA:{i % 3},f{i}\n")
            section += [f"DA:{first + l},{(i + l) % 5}\n" for l in range(lines)]
            section += [f"BRDA:{first},0,{b},{b % 2}\n" for b in range(branches)]
        sections.append("".join(section) + "end_of_record\n")
    put(folder, "trace.info", "TN:\n" + "".join(sections) * copies)
