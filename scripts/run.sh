#!/usr/bin/env bash
# Installs what is missing, builds and starts the program.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
scripts/build.sh build
if [[ -z "${DISPLAY:-}" && -z "${WAYLAND_DISPLAY:-}" && -z "${QT_QPA_PLATFORM:-}" ]]; then
    echo "run: no display found. Start it from a desktop session, or under Xvfb:" >&2
    echo "     xvfb-run -a build/app/nakos-monitor" >&2
    exit 1
fi
exec build/app/nakos-monitor "$@"
