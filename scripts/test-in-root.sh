#!/usr/bin/env bash
# Runs the README's test command (./test.sh) in a clean clone of this repository inside a
# minimal root of a Debian release, made with debootstrap: what a new user of that release
# gets. Needs root (or sudo), debootstrap and the Debian mirror.
#
# Usage: scripts/test-in-root.sh RELEASE [--package] [-- COMMAND...]
#   RELEASE    a Debian suite name: trixie, bookworm, ...
#   --package  after the tests, also scripts/package.sh there, then install the package in the
#              root and run every installed sample through it
#   COMMAND    run instead of ./test.sh in the clone (for example: bash, or ./test.sh -L unit)
#
# The committed HEAD is cloned: commit what you want tested. The fresh root (after
# debootstrap) is kept as a tarball and the downloaded packages in a folder, both under
# QIRO_ROOT_CACHE (default ~/.cache/qiro-lumen/roots), so that a rerun downloads nothing, and
# so is a compiler cache (ccache), so that a rerun compiles only what changed; QIRO_ROOT_CCACHE=0
# builds without it.
# Each run unpacks a new root into a scratch folder, which is removed at the end unless
# QIRO_KEEP_ROOT=1. Every mount is undone on every way out: success, failure, Ctrl+C, kill.
set -euo pipefail

usage() {
    sed -n '6,11p' "${BASH_SOURCE[0]}" | sed 's/^# \{0,1\}//' >&2
    exit 2
}
(($#)) || usage
arguments=("$@")
release=$1
shift
[[ $release =~ ^[a-z]+$ ]] || usage
with_package=0
command=(./test.sh)
while (($#)); do
    case $1 in
    --package) with_package=1 ;;
    --) shift; command=("$@"); break ;;
    *) usage ;;
    esac
    shift
done

if [[ $(id -u) -ne 0 ]]; then
    exec sudo --preserve-env=QIRO_ROOT_CACHE,QIRO_KEEP_ROOT,QIRO_MIRROR,QIRO_ROOT_CCACHE "$0" "${arguments[@]}"
fi
command -v debootstrap >/dev/null || { echo "test-in-root: install debootstrap" >&2; exit 1; }

repo="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
cache=${QIRO_ROOT_CACHE:-${HOME:-/root}/.cache/qiro-lumen/roots}
mirror=${QIRO_MIRROR:-http://deb.debian.org/debian}
tarball=$cache/$release-minbase.tar
archives=$cache/$release-archives
compiler_cache=$cache/$release-ccache
mkdir -p "$cache" "$archives/partial" "$compiler_cache"

say() { echo "test-in-root: $* ($(date -u +%T), ${SECONDS}s)" >&2; }

# --- the cached fresh root --------------------------------------------------------------
if [[ ! -s $tarball ]]; then
    say "making the $release root with debootstrap"
    fresh=$(mktemp -d "$cache/debootstrap.XXXXXX")
    # Removed when this step fails; debootstrap mounts nothing that outlives it in minbase,
    # but make sure before deleting.
    trap 'for m in $(findmnt -rn -o TARGET | grep "^$fresh" | sort -r); do umount -l "$m"; done;
          rm -rf --one-file-system "$fresh"' EXIT
    debootstrap --variant=minbase --cache-dir="$archives" "$release" "$fresh" "$mirror" >&2
    tar -C "$fresh" -cf "$tarball.part" .
    mv "$tarball.part" "$tarball"
    rm -rf --one-file-system "$fresh"
    trap - EXIT
fi

# --- the working root and its mounts ----------------------------------------------------
scratch=$(mktemp -d "${TMPDIR:-/tmp}/qiro-root-$release.XXXXXX")
root=$scratch/root
mounted=()
cleanup() {
    local status=$?
    trap - EXIT INT TERM HUP
    set +e
    # Processes the command left behind (a D-Bus daemon, a keyring) hold the mounts.
    local pids
    pids=$(for p in /proc/[0-9]*; do
        [[ $(readlink "$p/root" 2>/dev/null) == "$root"* ]] && echo "${p#/proc/}"
    done || true)
    [[ -z $pids ]] || kill -KILL $pids 2>/dev/null || true
    local i
    for ((i = ${#mounted[@]} - 1; i >= 0; i--)); do
        umount "${mounted[i]}" 2>/dev/null || umount -l "${mounted[i]}" || true
    done
    # Anything mounted below the root by the tests themselves.
    findmnt -rn -o TARGET | grep -F "$root/" | sort -r | while read -r m; do umount -l "$m"; done
    if findmnt -rn -o TARGET | grep -qF "$root"; then
        echo "test-in-root: still mounted under $root; left in place" >&2
    elif [[ ${QIRO_KEEP_ROOT:-0} == 1 ]]; then
        echo "test-in-root: root kept in $root" >&2
    else
        rm -rf --one-file-system "$scratch"
    fi
    exit "$status"
}
trap cleanup EXIT
trap 'exit 130' INT
trap 'exit 143' TERM
trap 'exit 129' HUP

mount_into() { # mount_into TARGET mount-arguments...
    local target=$1
    shift
    mkdir -p "$target"
    mount "$@" "$target"
    mounted+=("$target")
}

mkdir -p "$root"
say "unpacking the $release root"
tar -C "$root" -xf "$tarball"
chmod 755 "$root" # the tarball's top folder came from mktemp
# bubblewrap makes / a slave mount in its namespace: / must be a mount point, as on a booted
# system, not a plain folder of the host's file system.
mount_into "$root" --bind "$root"
mount --make-private "$root"
mount_into "$root/proc" -t proc proc
mount_into "$root/sys" -t sysfs sysfs
mount_into "$root/dev" -t devtmpfs devtmpfs
mount_into "$root/dev/pts" -t devpts -o newinstance,ptmxmode=0666 devpts
mount_into "$root/var/cache/apt/archives" --bind "$archives"
mount_into "$root/var/cache/qiro-ccache" --bind "$compiler_cache"
cp /etc/resolv.conf "$root/etc/resolv.conf"
# No daemons start inside while packages are installed.
printf '#!/bin/sh\nexit 101\n' >"$root/usr/sbin/policy-rc.d"
chmod 755 "$root/usr/sbin/policy-rc.d"
# Keep the downloaded packages for the next run.
echo 'Binary::apt::APT::Keep-Downloaded-Packages "true";' >"$root/etc/apt/apt.conf.d/01keep"
rm -f "$root/etc/apt/apt.conf.d/docker-clean"

environment=(HOME=/root LANG=C.UTF-8 "TERM=${TERM:-dumb}"
    PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin)
extra_packages=(git ca-certificates sudo)
if [[ ${QIRO_ROOT_CCACHE:-1} == 1 ]]; then
    # CMake takes the launchers from the environment for a new build folder.
    environment+=(CCACHE_DIR=/var/cache/qiro-ccache CCACHE_BASEDIR=/src CCACHE_MAXSIZE=5G
        CMAKE_C_COMPILER_LAUNCHER=ccache CMAKE_CXX_COMPILER_LAUNCHER=ccache)
    extra_packages+=(ccache)
fi
# In the background, so that a signal to this script runs its traps at once rather than when
# the command ends; the standard input stays the script's, for "-- bash".
in_root() {
    chroot "$root" /usr/bin/env -i "${environment[@]}" "$@" <&0 &
    wait $!
}

say "installing ${extra_packages[*]} in the root"
in_root bash -c 'export DEBIAN_FRONTEND=noninteractive; apt-get update -qq &&
    apt-get install -y -qq --no-install-recommends "$@" >/dev/null' run "${extra_packages[@]}"

# A clean clone of the committed HEAD, as a new user would get it.
say "cloning $(git -C "$repo" rev-parse --short HEAD) into the root"
git clone -q --no-hardlinks "$repo" "$root/src/qiro-lumen"
git -C "$root/src/qiro-lumen" checkout -q "$(git -C "$repo" rev-parse HEAD)"

say "running ${command[*]} in the $release root"
in_root bash -c 'cd /src/qiro-lumen && exec "$@"' run "${command[@]}"
say "${command[*]} passed"

if ((with_package)); then
    say "scripts/package.sh in the $release root"
    in_root bash -c 'cd /src/qiro-lumen && scripts/package.sh'
    say "installing the package and running the samples"
    in_root bash -c 'set -e; export DEBIAN_FRONTEND=noninteractive
        cd /src/qiro-lumen && apt-get install -y -qq ./build-package/qiro-lumen-debugger_*.deb >/dev/null
        qiro-lumen --version
        dpkg-query -W qiro-lumen-debugger
        cd /usr/lib/qiro-lumen/plugin
        for sample in *.pl *.py *.rb; do
            qiro-lumen run --json "$sample" 変換 | grep -q "\"document_parsed\": true" ||
                { echo "sample $sample did not run" >&2; exit 1; }
            echo "sample $sample ran"
        done'
fi

in_root dpkg-query -W -f '${Package} ${Version}\n' gcc g++ cmake qt6-base-dev libplist-dev \
    libxml2-dev libbenchmark-dev groff-base python3 ruby perl bubblewrap lintian 2>/dev/null || true
say "done"
