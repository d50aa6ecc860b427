#!/usr/bin/env bash
# Checks the recorder's systemd unit with systemd-analyze verify, offline
# (no running systemd needed), as the build folder given installs it: the
# unit is taken from the installed tree, pointed at the installed
# nakos-tool (verify wants ExecStart's program to exist) and checked as the
# instance nakos-recorder@ship1.service.
#   scripts/check-unit.sh [BUILD_DIR]     (default: build)
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build}
command -v systemd-analyze >/dev/null || { echo "check-unit: systemd-analyze not installed (scripts/install-deps.sh --package)" >&2; exit 1; }
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
cmake --install "$build" --prefix "$tmp/prefix" >/dev/null
unit=$tmp/prefix/lib/systemd/system/nakos-recorder@.service
[[ -f "$unit" ]] || { echo "check-unit: lib/systemd/system/nakos-recorder@.service is not installed" >&2; exit 1; }
[[ -f "$tmp/prefix/share/doc/nakos-monitor/nakos-recorder.conf.example" ]] ||
    { echo "check-unit: the example station file is not installed" >&2; exit 1; }
mkdir "$tmp/units"
sed "s|/usr/bin/nakos-tool|$tmp/prefix/bin/nakos-tool|" "$unit" >"$tmp/units/nakos-recorder@.service"
# An instance's file and the unit only, no system manager around them.
out=$(SYSTEMD_LOG_LEVEL=notice systemd-analyze verify --man=no \
    "$tmp/units/nakos-recorder@.service" "$tmp/units/nakos-recorder@ship1.service" 2>&1) || {
    echo "$out" >&2
    echo "check-unit: systemd-analyze verify failed" >&2
    exit 1
}
# Warnings about the unit itself fail too; notes about the host do not.
if grep -q "nakos-recorder" <<<"$out"; then
    echo "$out" >&2
    echo "check-unit: systemd-analyze verify complains about the unit" >&2
    exit 1
fi
echo "check-unit: nakos-recorder@.service verified"
