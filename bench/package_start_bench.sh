#!/usr/bin/env bash
# Start-up of the packaged qiro-lumen (libxml2, ICU and the C++ runtime as shared libraries)
# against the development build (linked in), with a bare /bin/true as the floor: each of the
# three runs "list" of the same folder in turn, RUNS rounds; medians of wall time and mean CPU.
# Usage: bench/package_start_bench.sh PACKAGED_QIRO_LUMEN BUILT_QIRO_LUMEN [RUNS]
set -euo pipefail
packaged=$1 built=$2 runs=${3:-200}
export PATH="/usr/bin:/bin" LC_ALL=C.UTF-8
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
export HOME=$scratch
folder=$(dirname "$(readlink -f "$built")")/plugin

# Wall microseconds of one start, from bash's own clock (no date process in the measure).
time_one() {
    local start=${EPOCHREALTIME/./}
    "$@" >/dev/null
    echo $((${EPOCHREALTIME/./} - start))
}
for ((i = 0; i < runs; ++i)); do
    echo "$(time_one /bin/true) $(time_one "$packaged" list --plugin-folder "$folder") $(time_one "$built" list --plugin-folder "$folder")"
done >"$scratch/rounds"
median() { cut -d' ' -f"$1" "$scratch/rounds" | sort -n | awk '{a[NR]=$1} END {printf "%.2f", a[int((NR+1)/2)]/1e3}'; }
cpu() { # mean user+system milliseconds of one start (the children's times), over RUNS starts
    local -a before after
    read -ra before </proc/$BASHPID/stat
    for ((i = 0; i < runs; ++i)); do "$@" >/dev/null; done
    read -ra after </proc/$BASHPID/stat
    awk -v d=$((after[15] + after[16] - before[15] - before[16])) -v hz="$(getconf CLK_TCK)" -v n="$runs" 'BEGIN {printf "%.2f", d * 1000 / hz / n}'
}
echo "wall median (ms): /bin/true $(median 1), packaged $(median 2), built $(median 3)"
echo "CPU mean (ms): /bin/true $(cpu /bin/true), packaged $(cpu "$packaged" list --plugin-folder "$folder"), built $(cpu "$built" list --plugin-folder "$folder")"
