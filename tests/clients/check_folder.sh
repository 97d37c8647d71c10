#!/bin/bash
# check_folder.sh FOLDER: the sample that seals a folder, on files that are then changed and removed.
set -eu
root=$(dirname "$(dirname "$(dirname "$(readlink -f "$0")")")")
rm -rf "$1" && mkdir -p "$1/files" && cd "$1"
printf '123456789' >files/check.txt
head -c 100000 /dev/zero >files/zeros.bin
printf 'x=1' >files/settings.ini
run() { "$root/tools/wine_run" cscript //nologo "Z:$root/samples/check_folder.vbs" "$1" files list.crc; }

run seal
grep -q '^CBF43926 check.txt' list.crc
run check | grep 'All files are as they were sealed'
printf 'x=2' >files/settings.ini
rm files/zeros.bin
found=$(run check) && exit 1
echo "$found"
grep -q 'changed: settings.ini' <<<"$found" && grep -q 'missing: zeros.bin' <<<"$found" && echo PASSED
