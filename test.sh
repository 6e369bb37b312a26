#!/usr/bin/env bash
# Sets up the machine, builds, and runs every test through CTest.
# ./test.sh [--sanitize] [extra ctest arguments...]
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
build_dir="$root/build"
# Warnings stop the developers' and CI's builds; a plain configure only reports them.
cmake_args=(-DQIRO_WERROR=ON)
if [[ "${1:-}" == "--sanitize" ]]; then
    shift
    build_dir="$root/build-sanitize"
    # GCC 12 reports false warnings inside libstdc++ under the sanitizers, so they do not
    # stop this build; the normal build keeps warnings as errors.
    cmake_args=(-DQIRO_SANITIZE=address,undefined -DQIRO_BUILD_BENCH=OFF -DQIRO_WERROR=OFF)
    export LSAN_OPTIONS="suppressions=$root/tests/sanitizer/lsan.supp"
    export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
fi
"$root/scripts/setup.sh" "$build_dir" "${cmake_args[@]}"
export PATH="/usr/bin:/bin:$PATH"
export QT_QPA_PLATFORM=offscreen
unset DISPLAY
cd "$build_dir"
ctest --output-on-failure -j2 "$@"
