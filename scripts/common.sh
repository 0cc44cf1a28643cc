# Shared by the scripts: sourced, never run. Leaves the caller in the root of the tree, with errors fatal.
#
# A script is quiet while all goes well: the output of each step goes to a log below build/logs, and is shown in
# full only when the step fails.

set -euo pipefail
export LC_ALL=C
cd "$(dirname "${BASH_SOURCE[0]}")/.."
root=$PWD
logs=$root/build/logs
jobs=$(nproc)
mapfile -t product_folders < <(sed -n 's/^\([a-z][^ ]*\).*/\1/p' scripts/folders)

# quietly NAME COMMAND...: runs the command with its output in build/logs/NAME.log. When it fails, shows the log and
# ends the script with the command's status.
quietly() {
    local name=$1 status=0
    shift
    mkdir -p "$logs"
    # Not with ||, behind which no error within a function ends it.
    set +e
    (set -e; "$@") >"$logs/$name.log" 2>&1
    status=$?
    set -e
    if [ "$status" -ne 0 ]; then
        cat "$logs/$name.log" >&2
        echo "${0##*/}: failed with status $status: $*" >&2
        exit "$status"
    fi
}

# need GROUP...: installs what the groups lack.
need() {
    scripts/install-deps "$@"
}

# build_preset PRESET: configures and builds build/PRESET.
build_preset() {
    quietly "$1-configure" cmake --preset "$1"
    quietly "$1-build" cmake --build --preset "$1" --parallel "$jobs"
}

# run_suite PRESET: runs the tests of build/PRESET and prints the line "N passed, N failed". Shows the full output of
# every test that failed, and returns 1 then. The whole log is build/logs/PRESET-test.log.
run_suite() {
    local log=$logs/$1-test.log status=0 closing failed total skipped
    mkdir -p "$logs"
    ctest --preset "$1" --parallel "$jobs" --no-tests=error >"$log" 2>&1 || status=$?
    closing=$(sed -n 's/^[0-9]*% tests passed, \([0-9]*\) tests failed out of \([0-9]*\)$/\1 \2/p' "$log")
    if [ "$status" -ne 0 ] || [ -z "$closing" ]; then
        grep -vE '^ +Start +[0-9]+: |^ *[0-9]+/[0-9]+ Test .* Passed ' "$log" >&2 || true
    fi
    if [ -z "$closing" ]; then
        echo "${0##*/}: the tests of build/$1 did not run" >&2
        return 1
    fi
    read -r failed total <<<"$closing"
    skipped=$(grep -c '\*\*\*Skipped' "$log" || true)
    if [ "$skipped" -ne 0 ]; then
        echo "$skipped skipped:"
        sed -n 's/^.*Test *#[0-9]*: \([^ ]*\) .*\*\*\*Skipped.*$/  \1/p' "$log"
    fi
    echo "$((total - failed - skipped)) passed, $failed failed"
    return $((status != 0))
}

# debian_mirror: where this machine has its Debian packages from; VEXCOV_MIRROR names another place.
debian_mirror() {
    echo "${VEXCOV_MIRROR:-$(apt-get indextargets --format '$(SITE)' 2>/dev/null | sort | uniq -c | sort -nr |
        awk '/\/debian\/?$/ { print $2; exit }')}"
}
