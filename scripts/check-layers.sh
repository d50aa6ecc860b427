#!/usr/bin/env bash
# Checks the include graph of the program's sources. Layers, from the
# bottom: the logic libraries (src/<subsystem>), the session (src/session
# and the command-line tools), the windows (src/*/ui) and the frame
# (src/gui, app/). No file may include a header from a layer above its own,
# and the graph between folders must have no circle.
set -euo pipefail
cd "$(dirname "$0")/.."

layer() {
    case "$1" in
    gui | gui/* | app | app/*) echo 3 ;;
    */ui | */ui/*) echo 2 ;;
    session | session/* | tools/*) echo 1 ;;
    *) echo 0 ;;
    esac
}

status=0
edges=$(mktemp)
trap 'rm -f "$edges"' EXIT
while IFS= read -r hit; do
    file=${hit%%:*}
    header=${hit#*\"}
    header=${header%\"*}
    [[ "$header" == */* ]] || continue # a header beside the file
    from=$(dirname "${file#src/}")
    to=$(dirname "$header")
    if (($(layer "$to") > $(layer "$from"))); then
        echo "check-layers: $file includes $header from a layer above its own" >&2
        status=1
    fi
    [[ "$from" == "$to" ]] || echo "$from $to" >>"$edges"
done < <(grep -rHE '^#include "' src app tools --include='*.h' --include='*.cpp' | sed 's/:#include /:/')

if ! sort -u "$edges" | tsort >/dev/null 2>"$edges.err"; then
    echo "check-layers: the folders include each other in a circle:" >&2
    cat "$edges.err" >&2
    status=1
fi
rm -f "$edges.err"
((status == 0)) && echo "check-layers: include graph in order"
exit $status
