#!/bin/bash
# Compares what a script client reads with what the prefix, the virtual screen and this machine really are.
set -u
cd "$(dirname "$(readlink -f "$0")")/../.."
source tools/wine_env
failed=0
declare -A fact
while IFS='=' read -r name value; do
    fact[$name]=$value
done < <(tools/wine_run cscript //nologo tests\\clients\\system_facts.vbs | tr -d '\r')

expect() {
    [ "${fact[$1]-(none)}" = "$2" ] || { echo "FAILED $1: wanted $2, got ${fact[$1]-(none)}"; failed=1; }
}
expect_near() { # NAME WANTED TOLERANCE
    local off=$((${fact[$1]:-99999999} - $2))
    [ ${off#-} -le "$3" ] || { echo "FAILED $1: wanted $2 within $3, got ${fact[$1]-(none)}"; failed=1; }
}
expect_file() { # C:\windows FILE
    local path=${1//\\//}
    [ -e "$WINEPREFIX/dosdevices/${path,,}/$2" ] || { echo "FAILED: no $2 in $1"; failed=1; }
}
from_cpu() { grep -m1 "^$1" /proc/cpuinfo | sed 's/.*: //'; }
has_cpu() { grep -qm1 "^flags.* $1 " /proc/cpuinfo && echo True || echo False; }
from_registry() { grep -am1 "^\"$1\"=" "$WINEPREFIX/system.reg" | cut -d'"' -f4; }
from_screen() { xdpyinfo | sed -n "s/.*$1.*/\\1/p" | head -1; }

# Drives: the prefix's links, and the file systems that they lead to. Others write meanwhile.
roots=
for link in "$WINEPREFIX"/dosdevices/?:; do
    root=$(basename "${link^^}")\\
    roots+=$root
    read -r free total < <(df -B1 --output=avail,size "$(readlink -f "$link")" | tail -1)
    expect_near "free $root" $((free >> 20)) 4096
    expect "total $root" $((total >> 20))
    expect "state $root" "True Fixed"
done
expect drives "$roots"

expect "work area" "0 0 $(from_screen 'dimensions: *\([0-9x]*\) pixels' | tr x ' ')"
bits=$(from_screen "depth $(from_screen 'depth of root window: *\([0-9]*\)'), bits_per_pixel \([0-9]*\)")
expect colours $([ "$bits" = 32 ] && echo -1 || echo $((1 << bits)))
# Programs without a compatibility manifest, as the script host, are told of Windows 8 at most; not so by Wine before 10.
told=6.2.9200
[[ $(wine --version) != wine-[1-9].* ]] || told=$(from_registry CurrentVersion).$(from_registry CurrentBuildNumber)
expect version "$told $(from_registry CSDVersion)"
host=$(hostname | cut -d. -f1 | cut -c1-15)
expect names "$(id -un) ${host^^} 2"
IFS=';' read -r windows system temporary <<<"${fact[folders]:-}"
expect_file "$windows" regedit.exe
expect_file "$system" kernel32.dll
[[ $temporary == ?:*\\ ]] || { echo "FAILED: $temporary has no separator at its end"; failed=1; }
expect_near minutes $(($(cut -d. -f1 /proc/uptime) / 60)) 1

# 32-bit programs see 32 processors at most, and Wine shows them 2 GB less one byte at most.
count=$(getconf _NPROCESSORS_ONLN)
[ "$count" -ge 32 ] || expect processors "$count $(((1 << count) - 1))"
revision=$(($(from_cpu 'model\s*:') << 8 | $(from_cpu stepping)))
architecture=0
[ "$WINEARCH" = win64 ] && architecture=9
expect kind "$architecture $(from_cpu 'cpu family') $((revision < 0x8000 ? revision : revision - 0x10000))"
expect features "$(has_cpu cx8) $(has_cpu mmx)"
physical=$(($(sed -n 's/MemTotal: *\([0-9]*\) kB/\1/p' /proc/meminfo) << 10))
# The 32-bit platform tells of 2 GB at most; a 64-bit program gets the size, and -1 for what a Long cannot hold.
if [ "$WINEARCH" = win64 ]; then
    told=$((physical > 4294967295 ? -1 : physical > 2147483647 ? physical - 4294967296 : physical))
else
    told=$((physical > 2147483647 ? 2147483647 : physical))
fi
expect memory "$(getconf PAGESIZE) $told"
expect_near load 50 50
[ $failed -eq 0 ] && echo PASSED
exit $failed
