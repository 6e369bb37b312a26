#!/usr/bin/env bash
# Sets up the machine, builds, and runs every test through CTest.
# ./test.sh [--sanitize] [extra ctest arguments...]
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
build_dir="$root/build"
cmake_args=()
if [[ "${1:-}" == "--sanitize" ]]; then
    shift
    build_dir="$root/build-sanitize"
    cmake_args+=(-DQIRO_SANITIZE=address,undefined -DQIRO_BUILD_BENCH=OFF)
fi
"$root/scripts/setup.sh" "$build_dir" "${cmake_args[@]}"
export PATH="/usr/bin:/bin:$PATH"
export QT_QPA_PLATFORM=offscreen
unset DISPLAY
cd "$build_dir"
ctest --output-on-failure -j2 "$@"
