# Sourced by the whole-process benchmarks: bench_home.sh NAME BUILD_DIR. Sets qiro_lumen (and
# stops when it is not built), puts the system's interpreters first (a version manager's shims
# would add their own start-up), and gives the runs a scratch HOME removed at exit.
qiro_lumen="$2/bin/qiro-lumen"
if [[ ! -x "$qiro_lumen" ]]; then
    echo "$1: build qiro-lumen first (no $qiro_lumen)" >&2
    exit 2
fi
export PATH="/usr/bin:/bin"
export LC_ALL=C.UTF-8
scratch="$(mktemp -d)"
trap 'cd / && rm -rf "$scratch"' EXIT
export HOME="$scratch/home"
export QIRO_MACHINE_PREFERENCES_DIR="$scratch/machine"
mkdir -p "$HOME" "$QIRO_MACHINE_PREFERENCES_DIR" "$scratch/plugins"
