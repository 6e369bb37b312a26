#!/usr/bin/env bash
# The bash completion, driven as bash drives it, offers what the program says may come next:
# commands, options, choices and the plug-ins of the folder given with --plugin-folder.
# Usage: completion_test.sh QIRO_LUMEN COMPLETIONS_DIR
set -uo pipefail
program=$1 completions=$2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
mkdir -p "$scratch/plugins/sub" "$scratch/home"
touch "$scratch/plugins/"{b.rb,A.py,s1.pl,notes.txt,"my (1).py"}
export HOME=$scratch/home
cd "$scratch" || exit 1
compopt() { :; } # only usable while bash itself completes
source "$completions/qiro-lumen.bash"

failures=0
# Each case: the words typed (the last one being completed) | the offers expected, sorted.
while IFS='|' read -r typed expected; do
    read -ra COMP_WORDS <<<"$typed"
    [[ $typed == *' ' ]] && COMP_WORDS+=("")
    COMP_WORDS=("$program" "${COMP_WORDS[@]}")
    COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
    _qiro_lumen
    offered=$(printf '%s\n' "${COMPREPLY[@]}" | LC_ALL=C sort | paste -sd' ')
    if [[ $offered != "$expected" ]]; then
        echo "FAIL: qiro-lumen $typed<TAB> offered \"$offered\", expected \"$expected\"" >&2
        failures=$((failures + 1))
    fi
done <<'CASES'
r|run
se|settings
run --j|--json
run --plugin-folder plugins |A.py b.rb my\ \(1\).py s1.pl
callback --plugin-folder=plugins s|s1.pl
run --plugin-folder pl|plugins
run --plugin-folder plugins A.py |
run plugins/s|plugins/s1.pl plugins/sub
bridge p|perl python
settings s|set show
settings set enable_p|enable_proxy=
list --plugin-folder plugins |
CASES

! command -v zsh >/dev/null || zsh -n "$completions/_qiro-lumen" || failures=$((failures + 1))
((failures == 0))
