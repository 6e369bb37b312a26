#!/usr/bin/env bash
# Peak resident memory of "qiro-lumen run" for a plug-in that floods one stream (300 MiB; the
# runner keeps 64 MiB of it), with and without --json, against the bare interpreter writing the
# same flood. Prints maxrss in MB as /usr/bin/time -v reports it, and a digest of each run's
# outputs so that a change of the program can be checked to keep every byte.
# Usage: bench/cli_memory_bench.sh [BUILD_DIR] [MiB]
set -euo pipefail

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build_dir="$(cd "${1:-$root/build}" && pwd)"
flood_mib="${2:-300}"
source "$(dirname "${BASH_SOURCE[0]}")/bench_home.sh" cli_memory_bench "$build_dir"

# One 64-byte ASCII line repeated: ASCII doubles in UTF-16, the costliest text for the panes.
for stream in stderr stdout; do
    cat >"$scratch/plugins/flood_$stream.py" <<EOF
import sys

def qiro_plugin_run_process(request):
    chunk = ("%063d\n" % 7) * 16384
    for _ in range($flood_mib):
        sys.$stream.write(chunk)
    sys.$stream.flush()
    return {"candidate": [{"hyoki": request["composition_string"]}]}
EOF
done
# The same flood from the bare interpreter: what writing it costs without us.
cat >"$scratch/bare_flood.py" <<EOF
import sys
chunk = ("%063d\n" % 7) * 16384
for _ in range($flood_mib):
    sys.stderr.write(chunk)
EOF

# Runs a command under /usr/bin/time -v; prints its maxrss in MB and a digest of its outputs.
measure() {
    local label="$1"
    shift
    local status=0 kib digest wall
    /usr/bin/time -v -o "$scratch/time" "$@" >"$scratch/out" 2>"$scratch/err" || status=$?
    kib=$(sed -n 's/.*Maximum resident set size (kbytes): //p' "$scratch/time")
    wall=$(sed -n 's/.*Elapsed (wall clock) time (h:mm:ss or m:ss): //p' "$scratch/time")
    # The JSON report carries timings, which change from run to run.
    digest=$(sed -e 's/"\(syntax_check\|run\|total\)": [0-9.e+-]*/"\1": 0/' "$scratch/out" |
        cat - "$scratch/err" | sha256sum | cut -c1-16)
    printf '%-34s %10.1f  %6s %8s  %s\n' "$label" \
        "$(awk -v k="$kib" 'BEGIN { print k * 1024 / 1e6 }')" "$status" "$wall" "$digest"
}

# A run that meets the 30-second time-out (a machine under heavy load) keeps nothing of the
# flood: its status and wall time show it, and its figure does not count.
printf '%-34s %10s  %6s %8s  %s\n' "command (${flood_mib} MiB flood)" "maxrss MB" "status" "wall" \
    "outputs digest"
measure "python3 bare_flood.py" python3 "$scratch/bare_flood.py"
for stream in stderr stdout; do
    measure "qiro-lumen run ($stream)" "$qiro_lumen" run --plugin-folder "$scratch/plugins" \
        "flood_$stream.py" 変換
    measure "qiro-lumen run --json ($stream)" "$qiro_lumen" run --json --plugin-folder \
        "$scratch/plugins" "flood_$stream.py" 変換
done
echo "goal: qiro-lumen run under 300 MB with and without --json for the standard-error flood"
