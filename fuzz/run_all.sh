#!/usr/bin/env bash
# Builds every fuzz target with clang, AddressSanitizer and UndefinedBehaviorSanitizer in its own
# build folder, runs each in turn for SECONDS with its committed seeds, and prints what each did.
# Usage: fuzz/run_all.sh SECONDS [TARGET...]   (TARGET: script_load, url_decode, ...; SECONDS at
# least 1, since libFuzzer reads 0 as no limit)
# Environment: QIRO_FUZZ_BUILD (build folder, default build-fuzz), QIRO_FUZZ_WORK (where grown
# corpora, crash inputs and logs go, default fuzz-work; both under the source root), QIRO_FUZZ_JOBS
# (fuzzers at once, default 1).
set -euo pipefail

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
if [[ $# -lt 1 || ! "$1" =~ ^[1-9][0-9]*$ ]]; then
    echo "usage: $0 SECONDS [TARGET...]" >&2
    exit 2
fi
seconds="$1"
shift
build="${QIRO_FUZZ_BUILD:-$root/build-fuzz}"
work="${QIRO_FUZZ_WORK:-$root/fuzz-work}"
jobs="${QIRO_FUZZ_JOBS:-1}"

if (($#)); then
    targets=("$@")
else
    targets=()
    for source in "$root"/fuzz/*_fuzz.cpp; do
        name="$(basename "$source" .cpp)"
        targets+=("${name%_fuzz}")
    done
fi

launcher=()
if command -v ccache >/dev/null; then
    launcher=(-DCMAKE_C_COMPILER_LAUNCHER=ccache -DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
fi
if [[ ! -f "$build/build.ninja" ]]; then
    CC=clang CXX=clang++ cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
        -DQIRO_SANITIZE=address,undefined -DCMAKE_CXX_FLAGS=-fsanitize=fuzzer-no-link \
        -DQIRO_BUILD_TESTS=OFF -DQIRO_BUILD_BENCH=OFF -DQIRO_BUILD_GUI=OFF \
        -DQIRO_STATIC_CLI=OFF "${launcher[@]}" >/dev/null
fi
cmake --build "$build" -j 2 --target "${targets[@]/%/_fuzz}"

# Undefined behaviour stops a run like a crash does, so that it leaves an input behind.
export UBSAN_OPTIONS="halt_on_error=1:print_stacktrace=1"
export ASAN_OPTIONS="detect_leaks=1:allocator_may_return_null=1"

run_one() {
    local name="$1" corpus="$work/corpus-$1" crashes="$work/crashes-$1" log="$work/$1.log"
    mkdir -p "$corpus" "$crashes"
    local dictionary=()
    case "$name" in
    script_*) dictionary=("-dict=$root/fuzz/xml.dict") ;;
    esac
    # New inputs go to the scratch corpus (first folder); the committed seeds are only read.
    nice -n 19 "$build/bin/${name}_fuzz" "${dictionary[@]}" -max_total_time="$seconds" \
        -print_final_stats=1 -artifact_prefix="$crashes/" -rss_limit_mb=2048 -timeout=20 \
        "$corpus" "$root/fuzz/corpus/$name" >"$log" 2>&1 || true
}

mkdir -p "$work"
running=0
for name in "${targets[@]}"; do
    run_one "$name" &
    running=$((running + 1))
    if ((running >= jobs)); then
        wait -n || true
        running=$((running - 1))
    fi
done
wait

status=0
printf '%-20s %8s %12s %10s %9s\n' target seconds executions corpus findings
for name in "${targets[@]}"; do
    log="$work/$name.log"
    runs="$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -n 1)"
    elapsed="$(sed -n 's/^Done [0-9]* runs in \([0-9]*\) second.*/\1/p' "$log" | tail -n 1)"
    corpus_size="$(find "$work/corpus-$name" -type f | wc -l)"
    findings="$(find "$work/crashes-$name" -type f | wc -l)"
    printf '%-20s %8s %12s %10s %9s\n' "$name" "${elapsed:-?}" "${runs:-?}" "$corpus_size" "$findings"
    if ((findings)) || ! grep -q '^Done ' "$log"; then
        status=1
        echo "  see $log and $work/crashes-$name/" >&2
    fi
done
exit "$status"
