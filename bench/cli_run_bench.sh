#!/usr/bin/env bash
# Whole-process cost of "qiro-lumen run" on each sample plug-in against its floor: the same
# interpreter running the decoded bridge twice (syntax check, then the run) with the same
# arguments, started directly. Prints medians in milliseconds, and the overhead in units of a bare
# process start (/bin/true, timed in the same interleaved loop), which carries across machines.
# Usage: bench/cli_run_bench.sh [BUILD_DIR] [RUNS]
set -euo pipefail

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build_dir="$(cd "${1:-$root/build}" && pwd)"
runs="${2:-30}"
warmup=3
plugins="$build_dir/bin/plugin"
written_form="変換"

source "$(dirname "${BASH_SOURCE[0]}")/bench_home.sh" cli_run_bench "$build_dir"
if [[ ! -d "$plugins" ]]; then
    echo "cli_run_bench: build qiro-lumen first (no $plugins)" >&2
    exit 2
fi
data_folder="$HOME/Library/Preferences/QIRO Lumen"

# The host's URL encoding: every byte but ".", "_" and "-" escaped, a blank as "+".
url_encode() {
    perl -e 'print join "", map { /[._-]/ ? $_ : $_ eq " " ? "+" : sprintf("%%%02X", ord) }
             split //, $ARGV[0]' -- "$1"
}

now_ns() { date +%s%N; }

# Median of the numbers on standard input (nanoseconds), printed in milliseconds.
median_ms() {
    median_ns | awk '{ printf "%.1f", $1 / 1e6 }'
}

# Median of the numbers on standard input, as a whole number.
median_ns() {
    sort -n | awk '{ v[NR] = $1 } END {
        printf "%d", (NR % 2) ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2 }'
}

# Children's CPU time so far (user + system) in clock ticks, into the variable "ticks"; the
# builtin must run in this shell, not in a command substitution, to see its children.
read_children_ticks() {
    times >"$scratch/times"
    ticks=$(tail -n 1 "$scratch/times" | awk '{
        n = split($0, f, /[ ms]+/); printf "%d", (f[1] * 60 + f[2] + f[3] * 60 + f[4]) * 100 }')
}

# Runs the floor and the program alternately, so that both meet the same load on a shared
# machine; sets floor_ms, full_ms (medians of wall time), overhead_ms (median of the pairs'
# differences) and floor_cpu, full_cpu (mean CPU time of the whole process tree).
measure_pair() {
    local i start before floor_samples=() full_samples=() true_samples=() floor_ticks=0 full_ticks=0
    for ((i = 0; i < warmup; ++i)); do
        floor_run "${floor_command[@]}" >/dev/null 2>&1 || true
        "${full_command[@]}" >/dev/null 2>&1 || true
    done
    for ((i = 0; i < runs; ++i)); do
        read_children_ticks
        before=$ticks
        start=$(now_ns)
        floor_run "${floor_command[@]}" >/dev/null 2>&1 || true
        floor_samples+=($(($(now_ns) - start)))
        read_children_ticks
        floor_ticks=$((floor_ticks + ticks - before))
        before=$ticks
        start=$(now_ns)
        "${full_command[@]}" >/dev/null 2>&1 || true
        full_samples+=($(($(now_ns) - start)))
        read_children_ticks
        full_ticks=$((full_ticks + ticks - before))
        start=$(now_ns)
        /bin/true
        true_samples+=($(($(now_ns) - start)))
    done
    floor_ms=$(printf '%s\n' "${floor_samples[@]}" | median_ms)
    full_ms=$(printf '%s\n' "${full_samples[@]}" | median_ms)
    # The overhead of each pair, then their median: a pair shares the machine's load of its
    # moment, which the difference of the two medians would not cancel.
    overhead_ms=$(for ((i = 0; i < runs; ++i)); do
        echo $((full_samples[i] - floor_samples[i]))
    done | median_ms)
    true_ms=$(printf '%s\n' "${true_samples[@]}" | median_ms)
    # The ratio from medians in nanoseconds: the millisecond figures are rounded to 0.1.
    starts=$(awk -v o="$(for ((i = 0; i < runs; ++i)); do
        echo $((full_samples[i] - floor_samples[i]))
    done | median_ns)" -v t="$(printf '%s\n' "${true_samples[@]}" | median_ns)" \
        'BEGIN { printf "%.1f", o / t }')
    floor_cpu=$(awk -v t="$floor_ticks" -v n="$runs" 'BEGIN { printf "%.1f", t * 10 / n }')
    full_cpu=$(awk -v t="$full_ticks" -v n="$runs" 'BEGIN { printf "%.1f", t * 10 / n }')
}

# The floor's two commands, as the runtime builds them, run from the data folder.
floor_run() {
    local interpreter="$1" bridge="$2" plugin="$3"
    shift 3
    "$interpreter" "$bridge" "$plugin" syntax_check &&
        "$interpreter" "$bridge" "$plugin" run_process "$@"
}

"$qiro_lumen" run --plugin-folder "$plugins" sample_perl.pl "$written_form" >/dev/null # makes the data folder
# Both sides start from the data folder, where the runtime runs its commands, so that the floor
# pays no subshell of its own.
cd "$data_folder"

printf '%-18s %10s %14s %10s %8s %8s %14s %14s\n' "plug-in" "floor ms" "qiro-lumen ms" "overhead" \
    "true ms" "starts" "floor CPU ms" "qiro-lumen CPU"
status=0
for sample in sample_perl.pl sample_ruby.rb sample_python.py; do
    case "$sample" in
    *.pl) language=perl interpreter=perl ;;
    *.rb) language=ruby interpreter=ruby ;;
    *.py) language=python interpreter=python ;;
    esac
    # Where and with the extension that the runtime gives its bridge files.
    bridge="bench-floor-bridge.${sample##*.}"
    "$qiro_lumen" bridge "$language" >"$bridge"
    arguments=("$(url_encode "$written_form")" "" "" 0 "" "")
    xml="$plugins/${sample%.*}.xml"
    if grep -q '<preference>true</preference>' "$xml" 2>/dev/null; then
        # A plug-in with a preference screen also gets its settings folder, named after it.
        name="$(sed -n 's:.*<name>\(.*\)</name>.*:\1:p' "$xml" | head -n 1)"
        arguments+=("$(url_encode "$data_folder/$name/")")
    fi
    floor_command=("$interpreter" "$bridge" "$(url_encode "$plugins/$sample")" "${arguments[@]}")
    full_command=("$qiro_lumen" run --plugin-folder "$plugins" "$sample" "$written_form")
    measure_pair
    overhead=$overhead_ms
    printf '%-18s %10s %14s %10s %8s %8s %14s %14s\n' "$sample" "$floor_ms" "$full_ms" "$overhead" \
        "$true_ms" "$starts" "$floor_cpu" "$full_cpu"
    if awk -v s="$starts" 'BEGIN { exit !(s > 4) }'; then status=1; fi
done
echo "wall times: medians of $runs interleaved pairs after $warmup warm-up; overhead: median of"
echo "the pairs' differences; starts: that median over the median of a bare /bin/true started"
echo "in the same loop; CPU: means"
echo "goal: overhead at most 4 bare process starts per language"
exit $status
