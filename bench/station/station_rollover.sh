#!/usr/bin/env bash
# A recording station past the memory's 130000 readings: the simulated
# sensor logs BURST readings every 10 ms (stamps a second apart) and keeps
# the last 9000 ("list" returns them all); `nakos-tool record --full-stamp --rollover` polls it until its
# archives and OUTPUT hold more than TARGET readings, then stops on SIGTERM.
# Passes when the archives plus OUTPUT hold every stamp from the first to
# the last exactly once (the simulator's stamps run a second apart, so a
# gap is a lost reading and a repeated stamp a reading kept twice) and at
# least one rollover happened. Prints the figures.
#   bench/station/station_rollover.sh [BUILD_DIR] [TARGET] [BURST]
set -euo pipefail
build=$(realpath "${1:-build}")
target=${2:-131000}
burst=${3:-60}
tool=$build/tools/nakos-tool/nakos-tool
sim=$build/tools/sensor-sim/nakos-sensor-sim
work=$(mktemp -d)
pids=()
cleanup() {
    for p in "${pids[@]}"; do kill "$p" 2>/dev/null || true; done
    rm -rf "$work"
}
trap cleanup EXIT
cd "$work"

"$sim" --interval 10 --burst "$burst" --log-size 9000 >sim.out 2>sim.err &
pids+=($!)
for _ in $(seq 100); do
    port=$(head -n1 sim.out 2>/dev/null || true)
    [[ -n "$port" ]] && break
    sleep 0.1
done
[[ -n "$port" ]] || { echo "station: the simulator printed no port" >&2; exit 1; }

start=$(date +%s.%N)
NAKOS_SETTINGS_FILE=$work/s.reg "$tool" record --port "$port" --interval 100 --full-stamp \
    --rollover station.txt 2>rec.err &
rec=$!
pids+=($rec)

# Readings held so far: the archives' data lines plus the store's count
# from the status line that SIGUSR1 asks for.
held() {
    local archived=0 f
    for f in station_*.txt; do
        [[ -f "$f" ]] && archived=$((archived + $(grep -c '^[0-9]' "$f")))
    done
    kill -USR1 "$rec"
    sleep 0.5
    local stored
    stored=$(grep -o 'points in store [0-9]*' rec.err | tail -n1 | grep -o '[0-9]*$' || echo 0)
    echo $((archived + stored))
}
sleep 1 # SIGUSR1 before the recorder set up its handler would end it
while (($(held) <= target)); do
    kill -0 "$rec" 2>/dev/null || { cat rec.err >&2; echo "station: the recorder ended" >&2; exit 1; }
    sleep 1
done
kill -TERM "$rec"
wait "$rec"
elapsed=$(echo "$(date +%s.%N) - $start" | bc)

archives=(station_*.txt)
# Every data line's stamp as seconds, sorted; then gaps and repeats.
awk -F'\t' '/^[0-9]/ {
        split($1, d, "-"); split($2, t, ":");
        print mktime(d[1] " " d[2] " " d[3] " " t[1] " " t[2] " " t[3]) }' \
    "${archives[@]}" station.txt | sort -n >stamps
total=$(wc -l <stamps)
read -r gaps repeats < <(awk 'NR > 1 { if ($1 == prev) r++; else if ($1 != prev + 1) g++ }
    { prev = $1 } END { print g + 0, r + 0 }' stamps)
echo "station: ${#archives[@]} archive(s) + output, $total readings in ${elapsed% *} s," \
    "$gaps gap(s), $repeats repeated"
for f in "${archives[@]}"; do echo "  $f: $(grep -c '^[0-9]' "$f") readings"; done
grep 'archived in\|polls with readings' rec.err | tail -n 3 | sed 's/^/  /'
((${#archives[@]} >= 1 && total > 130000 && gaps == 0 && repeats == 0))
