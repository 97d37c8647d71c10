#!/bin/bash
# compiled_client.sh BUILD TOOLCHAIN: builds samples/client from the published files alone and compares the checksum that it
# gives with another program's.
set -eu
root=$(dirname "$(dirname "$(dirname "$(readlink -f "$0")")")")
"$root/tools/packaging/build_client" "$1" "$2"
cd "$1/client/build"
[ "$("$root/tools/wine_run" ./reversed.exe one two | tr -d '\r' | xargs)" = "two one" ]
head -c 3000000 /dev/zero | tr '\0' 'v' >input.bin
expected=$(python3 -c 'import zlib; print("%08X" % zlib.crc32(open("input.bin", "rb").read()))')
right=$("$root/tools/wine_run" ./file_checksum.exe input.bin "$expected")
echo "$right"
grep -q "100 %" <<<"$right"
grep -q "^$expected  input.bin" <<<"$right"
"$root/tools/wine_run" ./file_checksum.exe input.bin 12345678 >refused.txt && exit 1
"$root/tools/wine_run" ./file_checksum.exe none.bin >>refused.txt && exit 1
grep -A1 "not the one" refused.txt | grep "No file none.bin" && echo PASSED
