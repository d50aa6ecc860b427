#!/usr/bin/env bash
# Installs what is missing, builds with warnings as errors and runs every
# test headless. With CI=true (or --sanitize) a second build runs the
# tests again under AddressSanitizer and UndefinedBehaviorSanitizer.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh --test
export QT_QPA_PLATFORM=offscreen
jobs=$(nproc)

scripts/build.sh build -DNAKOS_WERROR=ON
(cd build && ctest --output-on-failure -j "$jobs")

if [[ "${CI:-}" == "true" || "${1:-}" == "--sanitize" ]]; then
    echo "== sanitizer build (ASan + UBSan) =="
    scripts/build.sh build-asan -DNAKOS_WERROR=ON -DNAKOS_SANITIZE=ON -DNAKOS_BUILD_BENCH=OFF \
        -DCMAKE_BUILD_TYPE=Debug
    (cd build-asan && ASAN_OPTIONS=detect_leaks=0 UBSAN_OPTIONS=print_stacktrace=1 \
        ctest --output-on-failure -j "$jobs")
fi
