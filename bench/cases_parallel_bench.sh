#!/usr/bin/env bash
# "qiro-lumen test" on 100 cases of one sample plug-in with -j 2 against -j 1, run alternately
# so that both meet the same load; the interpreter's bare start is timed in the same run as the
# floor each case pays twice (syntax check, run). Prints medians in seconds and the ratio.
# Usage: bench/cases_parallel_bench.sh [BUILD_DIR] [ROUNDS] [SAMPLE]
# SAMPLE is a file of plugin/ (sample_python.py unless given) or waiting.py (made here).
set -euo pipefail

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build_dir="$(cd "${1:-$root/build}" && pwd)"
rounds="${2:-5}"
sample="${3:-sample_python.py}"
cases=100

source "$(dirname "${BASH_SOURCE[0]}")/bench_home.sh" cases_parallel_bench "$build_dir"
if [[ "$sample" == waiting.py ]]; then
    # A plug-in that waits 100 ms (as on a network) and uses little CPU: what -j gains when the
    # cores are not the limit.
    printf '%s\n' 'import time' '' '' 'def qiro_plugin_run_process(request):' \
        '    time.sleep(0.1)' '    return {"candidate": [{"hyoki": request["composition_string"]}]}' \
        > "$scratch/plugins/waiting.py"
else
    cp "$root/plugin/${sample%.*}".* "$scratch/plugins/"
fi
# 100 written forms, each case expecting the form itself first.
{
    echo '{"cases": ['
    for ((i = 1; i <= cases; i++)); do
        printf '{"name": "case %d", "written_form": "変換%d", "expect": {"candidates": [{"hyoki": "変換%d"}], "match": "prefix"}}%s\n' \
            "$i" "$i" "$i" "$([[ $i -lt $cases ]] && echo ,)"
    done
    echo ']}'
} > "$scratch/plugins/${sample%.*}.cases.json"

case "$sample" in
*.py) floor=(python3 -c pass) ;;
*.rb) floor=(ruby -e 1) ;;
*.pl) floor=(perl -e 1) ;;
esac

seconds() { # COMMAND... : wall seconds of one run, its output discarded
    local start end
    start=$(date +%s%N)
    "$@" > /dev/null 2>&1 || true
    end=$(date +%s%N)
    awk -v ns=$((end - start)) 'BEGIN { printf "%.3f\n", ns / 1e9 }'
}
median() { sort -n | awk '{a[NR]=$1} END {print (NR % 2 ? a[(NR+1)/2] : (a[NR/2] + a[NR/2+1]) / 2)}'; }

"$qiro_lumen" test -j 2 "$scratch/plugins" | tail -1 # warm-up, and the cases must pass
serial=()
parallel=()
floors=()
for ((round = 0; round < rounds; round++)); do
    serial+=("$(seconds "$qiro_lumen" test -j 1 "$scratch/plugins")")
    parallel+=("$(seconds "$qiro_lumen" test -j 2 "$scratch/plugins")")
    start=$(date +%s%N)
    for ((i = 0; i < 2 * cases; i++)); do "${floor[@]}"; done
    floors+=("$(awk -v ns=$(($(date +%s%N) - start)) 'BEGIN { printf "%.3f\n", ns / 1e9 }')")
done
serial_median=$(printf '%s\n' "${serial[@]}" | median)
parallel_median=$(printf '%s\n' "${parallel[@]}" | median)
floor_median=$(printf '%s\n' "${floors[@]}" | median)
echo "sample $sample, $cases cases, $rounds rounds, nproc $(nproc), load $(cut -d' ' -f1-3 /proc/loadavg)"
echo "-j 1: ${serial[*]} s, median $serial_median s"
echo "-j 2: ${parallel[*]} s, median $parallel_median s"
echo "floor (${floor[*]}, $((2 * cases)) times in a row): median $floor_median s"
echo "ratio -j 2 / -j 1: $(awk -v p="$parallel_median" -v s="$serial_median" 'BEGIN { printf "%.2f\n", p / s }')"
