#!/bin/bash
# host_facts.sh PAGE: compares what samples/system_report.vbs wrote with what the prefix, the virtual screen and this machine
# really are.
set -u
cd "$(dirname "$(readlink -f "$0")")/../.."
source tools/wine_env
failed=0
told=$(iconv -f utf-16 -t utf-8 "$1" | sed 's/<tr>/\n/g; s/<\/table>/\n/g' | sed 's/<[^>]*>/|/g' | tr -s '|') # a row a line

expect() { grep -qxE -- "\|$1\|" <<<"$told" || { echo "FAILED: no |$1|"; failed=1; }; }
expect_file() { [ -e "$WINEPREFIX/drive_c/$1" ] || { echo "FAILED: no $1"; failed=1; }; }
from_cpu() { grep -m1 "^$1" /proc/cpuinfo | sed 's/.*: //'; }
has_cpu() { grep -qm1 "^flags.* $1 " /proc/cpuinfo && echo yes || echo no; }
from_registry() { grep -am1 "^\"$1\"=" "$WINEPREFIX/system.reg" | cut -d'"' -f4; }
from_screen() { xdpyinfo | sed -n "s/.*$1.*/\\1/p" | head -1; }
size() { awk -v n="$1" 'BEGIN { for (; n >= 1024; n /= 1024) i++
    printf "%g %s", n < 100 ? int(n * 10 + .5) / 10 : int(n + .5), substr("KBMBGBTB", 2 * i - 1, 2) }'; }

# Drives: the prefix's links, and the file systems that they lead to. Others write to those meanwhile.
for link in "$WINEPREFIX"/dosdevices/?:; do
    expect "$(basename "${link^^}").\|ready\|.*\|Fixed\|.*\|$(size "$(df -B1 --output=size "$(readlink -f "$link")" | tail -1)")"
done

expect "Work area\|$(from_screen 'dimensions: *\([0-9x]*\) pixels' | sed 's/x/ x /') pixels at 0, 0"
bits=$(from_screen "depth $(from_screen 'depth of root window: *\([0-9]*\)'), bits_per_pixel \([0-9]*\)")
[ "$bits" != 32 ] || expect 'Colours\|32 bits per pixel'
# Programs without a compatibility manifest, as the script host, are told of Windows 8 at most; not so by Wine before 10.
version='6\.2, build 9200'
[[ $(wine --version) != wine-[1-9].* ]] || version="$(from_registry CurrentVersion), build $(from_registry CurrentBuildNumber)"
expect "Version\|$version"
host=$(hostname | cut -d. -f1 | cut -c1-15)
expect "Computer name\|${host^^}"
expect "Name\|$(id -un)"
expect 'Platform\|Windows NT'
expect 'Temporary folder\|.:.*\\'
expect_file "$(sed -n 's/\\/\//g; s/^|Windows folder|C:\(.*\)|$/\1/p' <<<"$told")/regedit.exe"
expect_file "$(sed -n 's/\\/\//g; s/^|System folder|C:\(.*\)|$/\1/p' <<<"$told")/kernel32.dll"

# 32-bit programs see 32 processors at most, and Wine shows them 2 GB less one byte at most. A Long holds 4 GB less one byte.
count=$(getconf _NPROCESSORS_ONLN)
[ "$count" -ge 32 ] || expect "Active processors\|0x$(printf %X $(((1 << count) - 1))) \($count\)"
expect "Level, revision\|$(from_cpu 'cpu family'), 0x$(printf %X $(($(from_cpu 'model\s*:') << 8 | $(from_cpu stepping))))"
expect "MMX\|$(has_cpu mmx)"
expect "64-bit compare and exchange\|$(has_cpu cx8)"
physical=$(($(sed -n 's/MemTotal: *\([0-9]*\) kB/\1/p' /proc/meminfo) << 10)) most=2147483647 architecture=Intel
[ "$WINEARCH" != win64 ] || most=4294967295 architecture=x64
expect "Architecture\|$architecture"
expect "Physical\|.* of $(size $((physical > most ? most : physical)))"
expect "Page\|$(getconf PAGESIZE | sed 's/...$/ &/') bytes"
[ $failed -eq 0 ] && echo PASSED
exit $failed
