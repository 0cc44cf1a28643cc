#!/usr/bin/python3
"""Imports the shards of a large run on the machines of a cluster and adds them up in a tree of merges.

    merge_shards.py [--scheduler HOST:PORT] [--workers N] [--format "lcov -root ."] OUTPUT SHARD...

A shard is what "vexcov-import FORMAT" takes, or a .dpi file, which needs no import. OUTPUT.dpi and OUTPUT.spi are
written at the end; what is in between lies in OUTPUT.parts. All machines see the folder under the same name and have
vexcov's programs on their PATH. Without --scheduler the workers are N processes of this machine, 2 by default.
"""

import argparse, os, shutil, subprocess, sys

from distributed import Client, LocalCluster

WAYS = 16  # profiles of one merge


def run(*command):
    done = subprocess.run(command, stderr=subprocess.PIPE, text=True)
    if done.returncode != 0:
        raise RuntimeError(done.stderr.strip())


def import_shard(words, shard, profile):  # profiles are written whole, so a task of a lost worker can be repeated
    run("vexcov-import", *words, "-dpi", profile + ".dpi", "-spi", profile + ".spi", shard)
    return profile + ".dpi"


def merge(profiles, result):
    run("vexcov-profile", "merge", "-o", result, *profiles)
    return result + ".dpi"


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--scheduler")
    parser.add_argument("--workers", type=int, default=2)
    parser.add_argument("--format", default="clang", type=str.split)
    parser.add_argument("output", type=os.path.abspath)
    parser.add_argument("shards", nargs="+", type=os.path.abspath)
    given = parser.parse_args()
    os.makedirs(parts := given.output + ".parts", exist_ok=True)
    cluster = given.scheduler or LocalCluster(given.workers, threads_per_worker=1, dashboard_address=None)
    with Client(cluster) as client:
        tasks = [shard if shard.endswith(".dpi") else
                 client.submit(import_shard, given.format, shard, f"{parts}/{number}", pure=False)
                 for number, shard in enumerate(given.shards)]
        while len(tasks) > WAYS:
            level = f"{parts}/of-{len(tasks)}"
            tasks = [client.submit(merge, tasks[at:at + WAYS], f"{level}-{at}", pure=False)
                     for at in range(0, len(tasks), WAYS)]
        merge(client.gather(tasks), given.output)
    shutil.rmtree(parts)


if __name__ == "__main__":
    try:
        main()
    except (OSError, RuntimeError) as failure:
        sys.exit(f"merge_shards: {failure}")
