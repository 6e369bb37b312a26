#!/usr/bin/env bash
# Builds the Debian package from this build, unpacks it into a throw-away root and uses the
# programs installed there: they must find their plug-in folder and their translations.
# Usage: install_test.sh BUILD_DIR VERSION WITH_WINDOW
set -euo pipefail
build=$1 version=$2 with_window=$3
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
fail() { echo "FAIL: $*" >&2; exit 1; }
export HOME=$scratch/home QIRO_MACHINE_PREFERENCES_DIR=$scratch/machine LC_ALL= LANG=C.UTF-8
mkdir -p "$HOME" "$QIRO_MACHINE_PREFERENCES_DIR"
unset DBUS_SESSION_BUS_ADDRESS

cpack --config "$build/CPackConfig.cmake" -B "$scratch/out" >"$scratch/cpack.log" 2>&1 ||
    { cat "$scratch/cpack.log"; fail "cpack"; }
deb=$(find "$scratch/out" -maxdepth 1 -name "qiro-lumen-debugger_${version}_*.deb")
[[ -n $deb ]] || fail "no qiro-lumen-debugger_${version}_ARCH.deb in $(ls "$scratch/out")"
# The shared libraries actually linked show in Depends; the interpreters are only recommended.
depends=$(dpkg-deb -f "$deb" Depends)
[[ $depends == *libc6* && $depends == *libplist* ]] || fail "Depends: $depends"
[[ $(dpkg-deb -f "$deb" Recommends) == *ruby* ]] || fail "Recommends lacks ruby"
[[ $(dpkg-deb -f "$deb" Suggests) == *gnome-keyring* ]] || fail "Suggests lacks gnome-keyring"

root=$scratch/root
dpkg -x "$deb" "$root"
[[ ! -e $root/usr/bin/plugin ]] || fail "plugin folder in /usr/bin"
files=(man/man1/qiro-lumen.1.gz bash-completion/completions/qiro-lumen zsh/vendor-completions/_qiro-lumen
    doc/qiro-lumen-debugger/copyright)
[[ $with_window != ON ]] || files+=(applications/qiro-lumen-debugger.desktop man/man1/qiro-lumen-debugger.1.gz
    metainfo/org.qiro.lumen.debugger.metainfo.xml icons/hicolor/scalable/apps/qiro-lumen-debugger.svg)
for file in "${files[@]}"; do [[ -s $root/usr/share/$file ]] || fail "missing /usr/share/$file"; done

cli=$root/usr/bin/qiro-lumen
[[ -L $cli ]] || fail "/usr/bin/qiro-lumen is not a link"
[[ $("$cli" --version) == "qiro-lumen $version"* ]] || fail "--version: $("$cli" --version)"
mapfile -t samples < <(cd "$root/usr/lib/qiro-lumen/plugin" && ls -- *.pl *.py *.rb | sort -f)
((${#samples[@]} >= 3)) && [[ $("$cli" list) == "$(printf '%s\n' "${samples[@]}")" ]] ||
    fail "installed ${samples[*]}, list printed $("$cli" list)"
for sample in "${samples[@]}"; do
    "$cli" run --json "$sample" 変換 >"$scratch/run.json" || fail "run $sample exited $?"
    grep -q '"document_parsed": true' "$scratch/run.json" || fail "run $sample: $(cat "$scratch/run.json")"
done

if [[ $with_window == ON ]]; then
    window=$root/usr/bin/qiro-lumen-debugger
    [[ $(DISPLAY= "$window" --version) == "qiro-lumen-debugger $version"* ]] || fail "window --version"
    LANG=ja_JP.UTF-8 "$window" --help | grep -q 'プラグインマネージャと同じように' ||
        fail "window --help is not in Japanese: $(LANG=ja_JP.UTF-8 "$window" --help)"
fi
echo "installed from $(basename "$deb"): ${samples[*]} ran"
