#!/usr/bin/env bash
# Installs the Debian packages the build, the samples and the tests need (the static archives
# of libxml2, ICU, zlib and liblzma that qiro-lumen links in come with their -dev packages), when
# any is missing, then configures and builds incrementally with Ninja.
# Usage: scripts/setup.sh BUILD_DIR [extra cmake arguments...]
set -euo pipefail

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build_dir="$1"
shift

packages=(
    build-essential cmake ninja-build pkg-config clang
    qt6-base-dev qt6-tools-dev qt6-tools-dev-tools qt6-l10n-tools qt6-translations-l10n
    libxml2-dev libicu-dev zlib1g-dev liblzma-dev libplist-dev libsecret-1-dev libglib2.0-dev
    libcli11-dev nlohmann-json3-dev
    libgtest-dev libgmock-dev libbenchmark-dev
    perl ruby python3 python-is-python3 python3-debugpy python3-coverage libdevel-cover-perl lcov
    dbus dbus-x11 gnome-keyring xvfb xauth xdotool fonts-ipafont-gothic
    dpkg-dev lintian desktop-file-utils appstream groff-base zsh bubblewrap skkdic
)

missing=()
for package in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed'; then
        missing+=("$package")
    fi
done

if ((${#missing[@]})); then
    echo "setup: installing ${missing[*]}"
    if [[ $(id -u) -eq 0 ]]; then
        apt_get=(apt-get)
    elif command -v sudo >/dev/null && sudo -n true 2>/dev/null; then
        apt_get=(sudo apt-get)
    else
        echo "setup: these Debian packages are missing; install them with:" >&2
        echo "  sudo apt-get install -y ${missing[*]}" >&2
        exit 1
    fi
    export DEBIAN_FRONTEND=noninteractive
    "${apt_get[@]}" update -qq
    "${apt_get[@]}" install -y -qq --no-install-recommends "${missing[@]}"
fi

# An empty BUILD_DIR only installs the packages (scripts/package.sh asks dpkg-dev for flags first).
[[ -n $build_dir ]] || exit 0

# The interpreters must be the system's: shims of a version manager on PATH
# would add start-up time to every plug-in run and may lack python-is-python3.
export PATH="/usr/bin:/bin:$PATH"

if [[ ! -f "$build_dir/build.ninja" ]]; then
    cmake -S "$root" -B "$build_dir" -G Ninja "$@"
elif (($#)); then
    cmake "$build_dir" "$@"
fi
cmake --build "$build_dir"
