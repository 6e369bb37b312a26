#!/bin/sh
# Runs a command against a private, unlocked GNOME keyring on a private session bus, with
# a throw-away home, so that no test ever sees or changes the user's own keyring.
set -eu

home=$(mktemp -d "${TMPDIR:-/tmp}/qiro-keyring-XXXXXX")
trap 'rm -rf "$home"' EXIT INT TERM
mkdir -m 700 "$home/run"

# With a display, a locked keyring would open a prompt window and block for ever.
unset DISPLAY WAYLAND_DISPLAY DBUS_SESSION_BUS_ADDRESS
export HOME="$home"
export XDG_RUNTIME_DIR="$home/run"
export XDG_DATA_HOME="$home/.local/share"
export XDG_CONFIG_HOME="$home/.config"
export XDG_CACHE_HOME="$home/.cache"
export QIRO_PRIVATE_KEYRING=1

status=0
dbus-run-session -- sh -c \
    'echo | gnome-keyring-daemon --unlock --components=secrets >/dev/null && "$@"' \
    run_in_keyring "$@" || status=$?
exit "$status"
