#!/bin/bash
# Compares what a script client reads with what the prefix, the virtual screen and this machine really are:
#     host_facts.sh
set -u
cd "$(dirname "$(readlink -f "$0")")/../.."
source tools/wine_env
failed=0

declare -A fact
while IFS='=' read -r name value; do fact[$name]=${value%$'\r'}; done < <(tools/wine_run cscript //nologo tests\\clients\\system_facts.vbs | tr -d '\r')

expect() {
    [ "${fact[$1]-(none)}" = "$2" ] && return
    echo "FAILED $1: wanted $2, got ${fact[$1]-(none)}"
    failed=1
}
expect_near() { # NAME WANTED TOLERANCE
    local got=${fact[$1]:-none}
    [[ $got =~ ^-?[0-9]+$ ]] && [ $((got - $2)) -le "$3" ] && [ $(($2 - got)) -le "$3" ] && return
    echo "FAILED $1: wanted $2 within $3, got $got"
    failed=1
}
unix_path() { # C:\windows
    local path=${1//\\//}
    readlink -f "$WINEPREFIX/dosdevices/$(tr '[:upper:]' '[:lower:]' <<<"${path:0:2}")${path:2}"
}
from_cpu() { grep -m1 "^$1" /proc/cpuinfo | sed 's/.*: //'; }
from_system_registry() { grep -am1 "^\"$1\"=" "$WINEPREFIX/system.reg" | cut -d'"' -f4; }

# Drives: the prefix's links, and the file systems that they lead to.
roots=
for link in "$WINEPREFIX"/dosdevices/?:; do
    letter=$(basename "$link" | tr '[:lower:]' '[:upper:]')
    roots+="$letter\\"
    read -r free total < <(df -B1 --output=avail,size "$(readlink -f "$link")" | tail -1)
    expect_near "free $letter\\" "$free" $((2 << 30))  # others write meanwhile
    expect "total $letter\\" "$total"
    expect "ready $letter\\" True
    expect "type $letter\\" Fixed
done
expect drives "$roots"

# The virtual screen.
expect "work area" "0 0 $(xdpyinfo | sed -n 's/ *dimensions: *\([0-9]*\)x\([0-9]*\) .*/\1 \2/p')"
depth=$(xdpyinfo | sed -n 's/.*depth of root window: *\([0-9]*\) .*/\1/p')
bits=$(xdpyinfo | sed -n "s/.*depth $depth, bits_per_pixel \([0-9]*\),.*/\1/p" | head -1)
expect colours $([ "$bits" = 32 ] && echo -1 || echo $((1 << bits)))

# The system that the prefix stands for.
expect version "$(from_system_registry CurrentVersion)"
expect build "$(from_system_registry CurrentBuildNumber)"
expect "service pack" "$(from_system_registry CSDVersion)"
expect platform 2
expect user "$(id -un)"
expect computer "$(hostname | cut -d. -f1 | cut -c1-15 | tr '[:lower:]' '[:upper:]')"
IFS=';' read -r windows system temporary <<<"${fact[folders]:-}"
for folder in "$windows" "$system" "$temporary"; do
    [ -n "$folder" ] && [ -d "$(unix_path "$folder")" ] || { echo "FAILED folders: $folder"; failed=1; }
done
[ -e "$(unix_path "$system")/kernel32.dll" ] || { echo "FAILED: $system is no system folder"; failed=1; }
[[ $temporary == *\\ ]] || { echo "FAILED: $temporary has no separator at its end"; failed=1; }
expect_near minutes $(($(cut -d. -f1 /proc/uptime) / 60)) 1

# Processor and memory. 32-bit programs see 32 processors at most, and Wine shows them 2 GB less one byte at most.
processors=$(getconf _NPROCESSORS_ONLN)
expect processors "$processors"
[ "$processors" -ge 32 ] || expect mask $(((1 << processors) - 1))
expect page "$(getconf PAGESIZE)"
expect architecture 0
expect level "$(from_cpu 'cpu family')"
revision=$(($(from_cpu 'model\s*:') << 8 | $(from_cpu stepping)))
expect revision $((revision >= 0x8000 ? revision - 0x10000 : revision))
expect cx8 "$(grep -qm1 '^flags.* cx8 ' /proc/cpuinfo && echo True || echo False)"
expect mmx "$(grep -qm1 '^flags.* mmx ' /proc/cpuinfo && echo True || echo False)"
physical=$(($(sed -n 's/MemTotal: *\([0-9]*\) kB/\1/p' /proc/meminfo) * 1024))
expect physical $((physical > 2147483647 ? 2147483647 : physical))
expect_near load 50 50

[ $failed -eq 0 ] && echo PASSED
exit $failed
