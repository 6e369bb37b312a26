#!/bin/sh
# Starts the real window under Xvfb with --run on a plug-in, sends Ctrl+Q a few seconds
# later and checks that the window quits promptly and leaves no process behind.
# Usage: quit_under_xvfb.sh DEBUGGER PLUGIN_FILE [DELAY_SECONDS]
# Run it through xvfb-run; prints "quit after N ms".
set -eu
debugger=$1
plugin=$2
delay=${3:-3}
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
export HOME="$scratch" XDG_CONFIG_HOME="$scratch/config" QIRO_MACHINE_PREFERENCES_DIR="$scratch/machine"
export PATH="/usr/bin:/bin:$PATH"
cp "$plugin" "$scratch/"
name=$(basename "$plugin")
"$debugger" --run "$scratch/$name" テスト >"$scratch/out.txt" 2>&1 &
pid=$!
# The suite runs offscreen; this test needs the window on the X server xvfb-run started.
window=$(timeout 30 xdotool search --sync --pid "$pid" --onlyvisible --name 'QIRO' | head -n 1)
if [ -z "$window" ]; then
    echo "no window appeared on the X server" >&2
    kill -9 "$pid"
    exit 1
fi
sleep "$delay"
start=$(date +%s%N)
xdotool windowfocus --sync "$window" 2>/dev/null || true
xdotool key ctrl+q
# The window must be gone well before a frozen layout or the 30 s time-out would let it.
waited=0
while kill -0 "$pid" 2>/dev/null; do
    if [ "$waited" -ge 1000 ]; then
        echo "the window did not quit within 10 s of Ctrl+Q" >&2
        kill -9 "$pid"
        exit 1
    fi
    sleep 0.01
    waited=$((waited + 1))
done
end=$(date +%s%N)
wait "$pid" || { echo "the window exited with status $?" >&2; cat "$scratch/out.txt" >&2; exit 1; }
echo "quit after $(( (end - start) / 1000000 )) ms"
if [ ! -e "$scratch/ran" ]; then
    echo "the window did not run the plug-in given with --run" >&2
    exit 1
fi
if pgrep -f "$scratch/$name" >/dev/null; then
    echo "a process of the plug-in outlived the window" >&2
    exit 1
fi
