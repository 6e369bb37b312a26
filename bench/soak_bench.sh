#!/usr/bin/env bash
# Soak throughput and the skk corpus: bench/soak_bench.sh BUILD_DIR [skk [LIMIT]]
# 1. bench/soak_throughput_bench: inputs per second on one core, fast and faithful, beside the
#    bare interpreter's start, for each sample, in one run.
# 2. With "skk": the whole skk corpus (or a sample of LIMIT inputs) against each sample with
#    -j 2 (or only those named in SOAK_SAMPLES, e.g. "sample_ruby.rb"), wall time and peak memory
#    (maximum resident set of the whole process tree as /usr/bin/time reports it: qiro-lumen's
#    own, its children's being counted separately by the kernel).
set -euo pipefail
source "$(dirname "$0")/bench_home.sh" soak_bench "$1"
if [[ ${2:-} != skk ]]; then
    "$1/bench/soak_throughput_bench" --benchmark_counters_tabular=true
else
    limit=()
    [[ -n ${3:-} ]] && limit=(--limit "$3")
    for sample in ${SOAK_SAMPLES:-sample_perl.pl sample_python.py sample_ruby.rb}; do
        /usr/bin/time -f "$sample: %e s wall, %M KiB peak (qiro-lumen)" \
            "$qiro_lumen" soak --corpus skk "${limit[@]}" -j 2 --json "$1/bin/plugin/$sample" >"$scratch/$sample.json" || true
        python3 -c 'import json, sys
report = json.load(open(sys.argv[1]))
print("  %d inputs, %s, fast %d, compared %d, differing %d, p50 %.1f ms, p99 %.1f ms, %.1f inputs/s" % (
    report["done"], report["counts"], report["fast"]["served"], report["fast"]["compared"],
    len(report["fast"]["differences"]), report["latency_ms"]["p50"], report["latency_ms"]["p99"],
    report["done"] / report["wall_seconds"]))' "$scratch/$sample.json"
    done
fi
