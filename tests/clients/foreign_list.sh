#!/bin/bash
# foreign_list.sh PROGRAM: a script fits the columns of a list view that another process shows.
set -eu
source "$(dirname "$(readlink -f "$0")")/../../tools/wine_env"
shown=$(mktemp)
trap 'rm -f "$shown"' EXIT
timeout 60 "$wine" "$1" 640 300 4000 </dev/null >"$shown" 2>/dev/null &
program=$!
for _ in $(seq 100); do grep -q 'asked for' "$shown" && break; sleep 0.1; done
list=$(sed -n 's/^list view \([0-9]*\).*/\1/p' "$shown")
"$root/tools/wine_run" cscript //nologo "Z:$root/samples/window_helpers.js" "$list"
wait $program || true
cat "$shown"
[ "$(sed -n 's/^asked.*columns//p' "$shown")" != "$(sed -n 's/^at the end, columns//p' "$shown")" ] && echo PASSED
