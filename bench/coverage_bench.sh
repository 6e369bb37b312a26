#!/usr/bin/env bash
# "qiro-lumen test" on 5 cases of each sample plug-in, with and without --coverage, run in one
# loop (language by language, plain then covered, round after round) so that both meet the same
# load. Prints per language the medians in seconds and what coverage adds per case.
# Usage: bench/coverage_bench.sh [BUILD_DIR] [ROUNDS]
set -euo pipefail

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build_dir="$(cd "${1:-$root/build}" && pwd)"
rounds="${2:-3}"
cases=5

source "$(dirname "${BASH_SOURCE[0]}")/bench_home.sh" coverage_bench "$build_dir"
samples=(sample_python.py sample_ruby.rb sample_perl.pl)
for sample in "${samples[@]}"; do
    mkdir -p "$scratch/plugins/${sample%.*}"
    cp "$root/plugin/${sample%.*}".* "$scratch/plugins/${sample%.*}/"
    {
        echo '{"cases": ['
        for ((i = 1; i <= cases; i++)); do
            printf '{"name": "case %d", "written_form": "変換%d", "expect": {"candidates": [{"hyoki": "変換%d"}], "match": "prefix"}}%s\n' \
                "$i" "$i" "$i" "$([[ $i -lt $cases ]] && echo ,)"
        done
        echo ']}'
    } > "$scratch/plugins/${sample%.*}/${sample%.*}.cases.json"
done

seconds() { # COMMAND... : wall seconds of one run, its output discarded
    local start end
    start=$(date +%s%N)
    "$@" > /dev/null 2>&1 || true
    end=$(date +%s%N)
    awk -v ns=$((end - start)) 'BEGIN { printf "%.3f\n", ns / 1e9 }'
}
median() { sort -n | awk '{a[NR]=$1} END {print (NR % 2 ? a[(NR+1)/2] : (a[NR/2] + a[NR/2+1]) / 2)}'; }

cd "$scratch"
declare -A plain covered
for sample in "${samples[@]}"; do # warm-up; the cases must pass and be measured
    "$qiro_lumen" test -j 1 --coverage="$scratch/report" "$scratch/plugins/${sample%.*}" | tail -2
done
for ((round = 0; round < rounds; round++)); do
    for sample in "${samples[@]}"; do
        folder="$scratch/plugins/${sample%.*}"
        plain[$sample]+="$(seconds "$qiro_lumen" test -j 1 "$folder") "
        covered[$sample]+="$(seconds "$qiro_lumen" test -j 1 --coverage="$scratch/report" "$folder") "
    done
done
echo "$cases cases per sample, -j 1, $rounds rounds, nproc $(nproc), load $(cut -d' ' -f1-3 /proc/loadavg)"
for sample in "${samples[@]}"; do
    p=$(tr ' ' '\n' <<<"${plain[$sample]}" | grep . | median)
    c=$(tr ' ' '\n' <<<"${covered[$sample]}" | grep . | median)
    echo "$sample: plain ${plain[$sample]}s, median $p s; coverage ${covered[$sample]}s, median $c s;" \
        "x$(awk -v c="$c" -v p="$p" 'BEGIN { printf "%.2f", c / p }'), +$(awk -v c="$c" -v p="$p" -v n=$cases 'BEGIN { printf "%.0f", (c - p) * 1000 / n }') ms per case"
done
