#!/bin/bash
# compiled_client.sh BUILD TOOLCHAIN HEADER: builds samples/client from the published files alone, in folders of its own, and
# compares the checksums that it gives with another program's.
set -eu
root=$(dirname "$(dirname "$(dirname "$(readlink -f "$0")")")")
published=$1/client/published
rm -rf "$1/client"
mkdir -p "$published"
cp "$3" "$1/VelkSprt.dll" "$1/VelkSupport.manifest" "$published"
cp -r "$root/samples/client" "$1/client/source"
cmake -G Ninja -S "$1/client/source" -B "$1/client/build" -DCMAKE_TOOLCHAIN_FILE="$2" -DCMAKE_BUILD_TYPE=Release \
    -DVELKSUPPORT_DIR="$published" >"$1/client/configure.log"
cmake --build "$1/client/build" >"$1/client/build.log"

cd "$1/client/build"
head -c 3000000 /dev/zero | tr '\0' 'v' >input.bin
expected=$(python3 -c 'import zlib; print("%08X" % zlib.crc32(open("input.bin", "rb").read()))')
right=$("$root/tools/wine_run" ./file_checksum.exe input.bin "$expected")
echo "$right"
grep -q "100 %" <<<"$right"
grep -q "^$expected  input.bin" <<<"$right"
"$root/tools/wine_run" ./file_checksum.exe input.bin 12345678 >refused.txt && exit 1
grep "not the one" refused.txt && echo PASSED
