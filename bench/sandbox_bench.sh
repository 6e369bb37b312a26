#!/usr/bin/env bash
# What the sandbox adds to a plug-in run, counted in bare process starts: "qiro-lumen run" of
# the Perl sample (the quickest interpreter, so the sandbox's share shows best) plain, with
# --sandbox and with --sandbox=nonet, and /bin/true, all four in one interleaved loop so that
# they meet the same load. Prints medians in milliseconds and the added cost divided by the
# median start of /bin/true.
# Usage: bench/sandbox_bench.sh [BUILD_DIR] [RUNS]
set -euo pipefail

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build_dir="$(cd "${1:-$root/build}" && pwd)"
runs="${2:-40}"
if ! command -v bwrap >/dev/null; then
    echo "sandbox_bench: bwrap is missing (apt-get install bubblewrap)" >&2
    exit 2
fi

source "$(dirname "${BASH_SOURCE[0]}")/bench_home.sh" sandbox_bench "$build_dir"

median_ms() {
    sort -n | awk '{ v[NR] = $1 } END {
        m = (NR % 2) ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2
        printf "%.2f", m / 1e3 }'
}

names=(true plain sandbox nonet)
commands=(
    "/bin/true"
    "$qiro_lumen run sample_perl.pl 変換"
    "$qiro_lumen run --sandbox sample_perl.pl 変換"
    "$qiro_lumen run --sandbox=nonet sample_perl.pl 変換"
)
for ((i = 0; i < 3; ++i)); do
    for command in "${commands[@]}"; do $command >/dev/null 2>&1; done
done
for name in "${names[@]}"; do : >"$scratch/$name"; done
for ((i = 0; i < runs; ++i)); do
    for k in "${!names[@]}"; do
        # Microseconds from bash itself: date(1) would add a process start to every sample.
        start=${EPOCHREALTIME/./}
        ${commands[$k]} >/dev/null 2>&1
        end=${EPOCHREALTIME/./}
        echo $((end - start)) >>"$scratch/${names[$k]}"
    done
done
declare -A median
for name in "${names[@]}"; do median[$name]=$(median_ms <"$scratch/$name"); done
echo "runs: $runs, medians in ms"
for name in "${names[@]}"; do printf '%-8s %8s ms\n' "$name" "${median[$name]}"; done
for name in sandbox nonet; do
    awk -v s="${median[$name]}" -v p="${median[plain]}" -v t="${median[true]}" -v n="$name" \
        'BEGIN { printf "%-8s adds %.2f ms = %.1f bare process starts\n", n, s - p, (s - p) / t }'
done
