#!/bin/bash
# check_folder.sh FOLDER: the samples that seal files, on files that are then changed and removed.
set -eu
root=$(dirname "$(dirname "$(dirname "$(readlink -f "$0")")")")
rm -rf "$1" && mkdir -p "$1/files" && cd "$1"
printf '123456789' >files/check.txt
head -c 100000 /dev/zero >files/zeros.bin
printf 'x=1' >files/settings.ini
run() { "$root/tools/wine_run" cscript //nologo "Z:$root/samples/$1" "${@:2}"; }
check() { run check_folder.vbs check files list.crc && run check_files.js check named.crc; }

run check_folder.vbs seal files list.crc
run check_files.js seal named.crc files/check.txt files/zeros.bin files/settings.ini
grep -q '^CBF43926 check.txt' list.crc
check >intact.txt && [ "$(grep -c 'All files are as they were sealed' intact.txt)" = 2 ]
printf 'x=2' >files/settings.ini
rm files/zeros.bin
for changed in "check_folder.vbs check files list.crc" "check_files.js check named.crc"; do
    found=$(run $changed) && exit 1
    echo "$found"
    grep -q 'changed: .*settings.ini' <<<"$found" && grep -q 'missing: .*zeros.bin' <<<"$found"
done

python3 "$root/tools/seal_dat.py" "$root/samples/scale_parameters.txt" scale.dat
sed -i 's/Gross weight/Weight and tare/' scale.dat
run read_sealed_file.js scale.dat WT.GROSS >refused.txt && exit 1
grep 'changed after it was sealed' refused.txt
run seal_file.js scale.dat
run read_sealed_file.js scale.dat WT.GROSS | grep 'Weight and tare, kg' && echo PASSED
