#!/usr/bin/env bash
# Compares what two builds of qiro-lumen print for the same runs: the sample plug-ins and the
# diagnosis fixtures, as run (text and --json), callback and preference. Only what changes from
# one run to the next is masked: timings and the bridge files' random names.
# Usage: tests/cli/compare_outputs.sh BEFORE_QIRO_LUMEN AFTER_QIRO_LUMEN
# Prints the differences and exits 1 when there are any.
set -uo pipefail
before=$1
after=$2
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export HOME="$work/home" QIRO_MACHINE_PREFERENCES_DIR="$work/machine" PATH="/usr/bin:/bin:$PATH"
mkdir -p "$HOME" "$QIRO_MACHINE_PREFERENCES_DIR"

# $1: the program's folder, which a message may name.
mask() {
    sed -E -e "s|$1|PROGRAM_FOLDER|g" -e 's/[0-9A-F]{40}/BRIDGE/g' \
        -e 's/("[a-z_]*_ms"|"syntax_check"|"run"|"total"|"[a-z_]*_s"): [0-9.e+-]+/\1: T/g' \
        -e 's/[0-9]+(\.[0-9]+)? (ms|s)\b/T \2/g'
}

# One command through both builds; a difference in either stream or in the status is reported.
compare() {
    local name=$1
    shift
    for build in before after; do
        local program=$before
        [[ $build == after ]] && program=$after
        "$program" "$@" >"$work/$build.out" 2>"$work/$build.err"
        echo "exit $?" >>"$work/$build.err"
        mask "$(dirname "$program")" <"$work/$build.out" >"$work/$build.out.masked"
        mask "$(dirname "$program")" <"$work/$build.err" >"$work/$build.err.masked"
    done
    if ! diff -u "$work/before.out.masked" "$work/after.out.masked" ||
        ! diff -u "$work/before.err.masked" "$work/after.err.masked"; then
        echo "differs: $name" >&2
        failures=$((failures + 1))
    fi
    count=$((count + 1))
}

failures=0
count=0
for plugin in "$root"/plugin/sample_*.{pl,py,rb} "$root"/tests/data/diagnosis/*; do
    [[ $plugin == *.xml ]] && continue
    compare "run $plugin" run "$plugin" 変換
    compare "run --json $plugin" run --json "$plugin" 変換
done
for plugin in "$root"/plugin/sample_*.{pl,py,rb} "$root"/tests/data/diagnosis/plugin_exception.py; do
    compare "callback $plugin" callback "$plugin" 変換 変換
    compare "callback --json $plugin" callback --json "$plugin" 変換 変換
    compare "preference $plugin" preference "$plugin"
    compare "preference --json $plugin" preference --json "$plugin"
done
compare "empty written form" run "$root/plugin/sample_python.py" ""
compare "too long a reading" run --reading "$(printf 'x%.0s' {1..201})" "$root/plugin/sample_python.py" x
compare "missing plug-in" run no_such_plugin.py x
echo "$((count - failures)) passed, $failures failed"
((failures == 0))
