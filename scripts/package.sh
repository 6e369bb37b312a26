#!/usr/bin/env bash
# Builds the Debian package qiro-lumen-debugger_VERSION_ARCH.deb: a Release build without tests
# or benchmarks in its own folder, packed by CPack, then checked by lintian when it is there.
# Usage: scripts/package.sh [BUILD_DIR [extra cmake arguments...]]  (default: build-package)
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build_dir="${1:-$root/build-package}"
shift || true

# The package links libxml2, ICU and zlib as shared libraries, so that their security updates
# reach the tool and Debian's rule against embedded copies holds.
"$root/scripts/setup.sh" "$build_dir" -DCMAKE_BUILD_TYPE=Release -DQIRO_BUILD_TESTS=OFF \
    -DQIRO_BUILD_BENCH=OFF -DQIRO_STATIC_CLI=OFF "$@"
export PATH="/usr/bin:/bin:$PATH"
rm -f "$build_dir"/qiro-lumen-debugger_*.deb
(cd "$build_dir" && cpack -G DEB)
deb=$(ls "$build_dir"/qiro-lumen-debugger_*.deb)
if command -v lintian >/dev/null; then
    # Errors fail the build; the warnings kept are explained in the README.
    lintian --fail-on error "$deb"
fi
echo "package: $deb"
