"""Sources of real programs to measure with, as Debian has them."""

import glob
import os
import shutil

import measure


def fetch(package, folder):
    """Unpacks a Debian source package in `folder`/source, unless it is there. The package lists are the folder's own:
    the system's apt set-up is not changed."""
    source = os.path.join(folder, "source")
    if os.path.isdir(source):
        return
    lists, unpacked = os.path.join(folder, "apt"), os.path.join(folder, "unpacked")
    shutil.rmtree(folder, ignore_errors=True)
    os.makedirs(os.path.join(lists, "partial"))
    os.mkdir(unpacked)
    with open(os.path.join(folder, "deb-src.sources"), "w") as made:
        for path in glob.glob("/etc/apt/sources.list.d/debian.sources"):
            for line in open(path):
                made.write("Types: deb-src\n" if line.startswith("Types:") else line)
    with open(os.path.join(folder, "deb-src.list"), "w") as made:
        if os.path.exists("/etc/apt/sources.list"):
            made.writelines(line.replace("deb ", "deb-src ", 1) for line in open("/etc/apt/sources.list")
                            if line.startswith("deb "))
    options = ["-o", "Dir::Etc::sourcelist=/dev/null", "-o", "Dir::Etc::sourceparts=" + folder,
               "-o", "Dir::State::lists=" + lists, "-o", "APT::Sandbox::User=root"]
    measure.must(["apt-get"] + options + ["update"])
    measure.must(["apt-get"] + options + ["source", "--download-only", package], cwd=folder)
    measure.must(["tar", "-xf", glob.glob(os.path.join(folder, "*.orig.tar.*"))[0], "-C", unpacked,
                  "--strip-components=1"])
    os.rename(unpacked, source)
