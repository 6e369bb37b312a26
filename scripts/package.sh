#!/usr/bin/env bash
# Builds the Debian package qiro-lumen-debugger_VERSION_ARCH.deb: a Release build without tests
# or benchmarks in its own folder, packed by CPack, then checked by lintian when it is there.
# Usage: scripts/package.sh [BUILD_DIR [extra cmake arguments...]]  (default: build-package)
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build_dir="${1:-$root/build-package}"
shift || true
cd "$root"
"$root/scripts/setup.sh" ""

# The package links libxml2, ICU and zlib as shared libraries, so that their security updates
# reach the tool and Debian's rule against embedded copies holds.
# Debian's hardening flags (stack protector, fortified functions, read-only relocations bound
# at start) come from dpkg-buildflags, as for any Debian package.
flags() { DEB_BUILD_MAINT_OPTIONS=hardening=+all dpkg-buildflags --get "$1" 2>/dev/null || true; }
"$root/scripts/setup.sh" "$build_dir" -DCMAKE_BUILD_TYPE=Release -DQIRO_BUILD_TESTS=OFF \
    -DQIRO_BUILD_BENCH=OFF -DQIRO_STATIC_CLI=OFF \
    "-DCMAKE_C_FLAGS=$(flags CPPFLAGS) $(flags CFLAGS)" \
    "-DCMAKE_CXX_FLAGS=$(flags CPPFLAGS) $(flags CXXFLAGS)" \
    "-DCMAKE_EXE_LINKER_FLAGS=$(flags LDFLAGS)" "$@"
export PATH="/usr/bin:/bin:$PATH"
rm -f "$build_dir"/qiro-lumen-debugger_*.deb
(cd "$build_dir" && cpack -G DEB)
deb=$(ls "$build_dir"/qiro-lumen-debugger_*.deb)
if command -v lintian >/dev/null; then
    # Errors fail the build; the warnings kept are explained in the README.
    lintian --fail-on error "$deb"
fi
echo "package: $deb"
