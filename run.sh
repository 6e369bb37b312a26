#!/usr/bin/env bash
# Sets up the machine, builds, and opens the debugger on the bundled sample
# plug-ins (or on --plugin-folder DIR). Without a display it runs every
# sample through the command-line twin instead.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
build_dir="$root/build"
"$root/scripts/setup.sh" "$build_dir"
export PATH="/usr/bin:/bin:$PATH"
bin="$build_dir/bin"

if [[ -x "$bin/qiro-lumen-debugger" && ( -n "${DISPLAY:-}" || -n "${WAYLAND_DISPLAY:-}" ) ]]; then
    exec "$bin/qiro-lumen-debugger" "$@"
fi

if [[ ! -x "$bin/qiro-lumen" ]]; then
    echo "run.sh: built; the debugger will open on $bin/plugin once it exists."
    exit 0
fi
echo "run.sh: no display here; running every sample plug-in through qiro-lumen run."
folder="$bin/plugin"
args=("$@")
for ((i = 0; i < ${#args[@]}; i++)); do
    if [[ "${args[$i]}" == "--plugin-folder" ]]; then folder="${args[$((i + 1))]}"; fi
done
status=0
while IFS= read -r plugin; do
    echo "== $plugin"
    "$bin/qiro-lumen" run --plugin-folder "$folder" "$plugin" "変換" || status=$?
done < <("$bin/qiro-lumen" list --plugin-folder "$folder")
exit $status
