#!/usr/bin/env bash
# Soak run: the program headless (offscreen) on its demo sensor with a fast
# poll, for MINUTES (default 30). Every 30 s it notes the program's resident
# memory; at the end it checks that memory stayed flat, that the program is
# still alive, and that the last autosave file reads back whole with the
# readings of the run (the demo sensor logs one reading a second).
#   scripts/soak.sh [MINUTES] [POLL_MS]
set -euo pipefail
minutes=${1:-30}
poll=${2:-500}
top=$(cd "$(dirname "$0")/.." && pwd)
"$top/scripts/install-deps.sh"
(cd "$top" && scripts/build.sh build >/dev/null)
monitor=$top/build/app/nakos-monitor
tool=$top/build/tools/nakos-tool/nakos-tool

work=$(mktemp -d)
trap 'kill "$pid" 2>/dev/null || true; rm -rf "$work"' EXIT
cd "$work"
export QT_QPA_PLATFORM=offscreen NAKOS_SETTINGS_FILE=$work/settings.reg
"$monitor" --demo --start-query --query-interval "$poll" >"$work/out.log" 2>&1 &
pid=$!
start=$(date +%s)
rss() { awk '/^VmRSS/ {print $2}' "/proc/$pid/status"; }
sleep 30
first=$(rss)
peak=$first
echo "soak: ${minutes} min, poll every ${poll} ms; memory after 30 s: ${first} kB"
end=$((start + minutes * 60))
while (($(date +%s) < end)); do
    sleep 30
    kill -0 "$pid" 2>/dev/null || { echo "soak: the program ended early" >&2; cat "$work/out.log" >&2; exit 1; }
    now=$(rss)
    ((now > peak)) && peak=$now
    echo "soak: $(( ($(date +%s) - start) / 60 )) min  rss ${now} kB"
done
last=$(rss)
kill "$pid"
wait "$pid" 2>/dev/null || true
elapsed=$(($(date +%s) - start))

file=$(ls -t data/autosave/NAK_OS_autosave_*.txt | head -1)
info=$("$tool" info "$file")
points=$(awk -F': ' '/^points/ {print $2}' <<<"$info")
echo "soak: last autosave $(basename "$file"): $points points after ${elapsed} s"
echo "$info" | sed 's/^/    /'
status=0
# 100 readings logged before the start, then one a second; the last
# autosave is at most a minute old.
low=$((100 + elapsed - 90))
high=$((100 + elapsed + 5))
if ((points < low || points > high)); then
    echo "soak: expected between $low and $high points in the last autosave" >&2
    status=1
fi
growth=$((last - first))
echo "soak: memory ${first} kB after 30 s, ${last} kB at the end, peak ${peak} kB (growth ${growth} kB)"
if ((growth > 20480)); then
    echo "soak: memory grew by more than 20 MB" >&2
    status=1
fi
exit $status
