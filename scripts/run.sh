#!/usr/bin/env bash
# Installs what is missing, builds and starts the program on its built-in
# simulated sensor (--demo; further arguments are passed on). The program
# works in the folder this script is started from (its data/ folder goes
# there).
set -euo pipefail
workdir=$PWD
top=$(cd "$(dirname "$0")/.." && pwd)
"$top/scripts/install-deps.sh"
(cd "$top" && scripts/build.sh build)
if [[ -z "${DISPLAY:-}" && -z "${WAYLAND_DISPLAY:-}" && -z "${QT_QPA_PLATFORM:-}" ]]; then
    echo "run: no display found. Start it from a desktop session, or under Xvfb:" >&2
    echo "     xvfb-run -a $top/build/app/nakos-monitor --demo" >&2
    exit 1
fi
cd "$workdir"
exec "$top/build/app/nakos-monitor" --demo "$@"
