#!/usr/bin/env bash
# The man pages name every command, option and JSON member the programs have, render without
# warnings, and the desktop entry and AppStream metadata pass the validators.
# Usage: documents_test.sh SOURCE_DIR PROGRAM_DIR VERSION
set -euo pipefail
source_dir=$1 programs=$2 version=$3
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
export HOME=$scratch/home QIRO_MACHINE_PREFERENCES_DIR=$scratch/machine LC_ALL=C.UTF-8
mkdir -p "$HOME" "$QIRO_MACHINE_PREFERENCES_DIR"
unset DBUS_SESSION_BUS_ADDRESS
failures=0
missing() { echo "FAIL: $1 does not mention $2" >&2; failures=$((failures + 1)); }

# The man source as it reads: "\-" is a hyphen, font changes vanish.
plain() { sed -e 's/\\-/-/g' -e 's/\\f[BIRP]//g' "$source_dir/packaging/man/$1"; }
cli_man=$(plain qiro-lumen.1)
window_man=$(plain qiro-lumen-debugger.1)

while IFS= read -r line; do
    command=${line%%$'\t'*} options=${line#*$'\t'}
    if [[ -n $command ]] && ! grep -qE "^\.B[IR]* $command( |$)" <<<"$cli_man"; then
        missing qiro-lumen.1 "the command \"$command\""
    fi
    for option in $options; do
        grep -qE -- "(^|[^a-z-])$option([^a-z-]|$)" <<<"$cli_man" || missing qiro-lumen.1 "$option (of \"$command\")"
    done
done < <("$programs/qiro-lumen" __complete)

# Every member of the JSON outputs, nested ones too.
{
    "$programs/qiro-lumen" run --json sample_python.py 変換 || true
    "$programs/qiro-lumen" settings show --json
} | python3 -c 'import json, sys
text, at, keys = sys.stdin.read(), 0, set()
def walk(value):
    if isinstance(value, dict): keys.update(value); [walk(item) for item in value.values()]
    elif isinstance(value, list): [walk(item) for item in value]
while text[at:].strip():
    value, at = json.JSONDecoder().raw_decode(text, at); walk(value); at += 1
print("\n".join(sorted(keys)))' >"$scratch/members"
(($(wc -l <"$scratch/members") > 10)) || { echo "FAIL: no JSON from qiro-lumen" >&2; exit 1; }
while read -r member; do
    grep -qE "(^|[^a-z_])$member([^a-z_]|$)" <<<"$cli_man" || missing qiro-lumen.1 "the JSON member $member"
done <"$scratch/members"

if [[ -x $programs/qiro-lumen-debugger ]]; then
    for option in $("$programs/qiro-lumen-debugger" --help | grep -oE -- '(^| )--?[a-z][a-z-]*' | sort -u); do
        grep -qE -- "(^|[^a-z-])$option([^a-z-]|$)" <<<"$window_man" || missing qiro-lumen-debugger.1 "$option"
    done
fi

# Rendered as installed: the build puts the version into the footer ("@" would otherwise be
# read as groff's escape character while it scans .TH, as groff 1.23 does).
for source in "$source_dir"/packaging/man/*.1; do
    page=$scratch/$(basename "$source")
    sed "s/@PROJECT_VERSION@/$version/g" "$source" >"$page"
    grep -q '@[A-Z_]*@' "$page" && { echo "FAIL: $source: an unknown @VARIABLE@" >&2; failures=$((failures + 1)); }
    warnings=$(groff -man -ww -z -Tutf8 "$page" 2>&1)
    [[ -z $warnings ]] || { echo "FAIL: $page: $warnings" >&2; failures=$((failures + 1)); }
done
# A new version brings its entries in the Debian changelog and the AppStream releases.
grep -q "^qiro-lumen-debugger ($version)" "$source_dir/packaging/debian/changelog" &&
    grep -q "<release version=\"$version\"" "$source_dir"/packaging/*.metainfo.xml ||
    { echo "FAIL: no release entry for $version" >&2; failures=$((failures + 1)); }
desktop-file-validate "$source_dir/src/window/resources/qiro-lumen-debugger.desktop" || failures=$((failures + 1))
appstreamcli validate --no-net --pedantic "$source_dir"/packaging/*.metainfo.xml || failures=$((failures + 1))
((failures == 0))
