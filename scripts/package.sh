#!/usr/bin/env bash
# Builds the Debian package nakos-monitor_<version>-1_<arch>.deb from a
# Release build in the folder given (default: build-package) and prints its
# path. Further arguments go to cmake.
#   scripts/package.sh [BUILD_DIR] [extra cmake options...]
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh --package
dir=${1:-build-package}
shift || true
cmake -S . -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=Release -DNAKOS_BUILD_TESTS=OFF \
    -DNAKOS_BUILD_BENCH=OFF "$@" >/dev/null
cmake --build "$dir" -j "$(nproc)"
rm -f "$dir"/nakos-monitor_*.deb
(cd "$dir" && cpack -G DEB)
ls "$dir"/nakos-monitor_*.deb
