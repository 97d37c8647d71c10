#!/bin/bash
# reproducible_build.sh LIBRARY...: builds the libraries once more from a copy of their sources in another folder, with
# nothing reused, and compares the bytes.
set -eu
preset=$(basename "$(dirname "$1")")
root=$(dirname "$(dirname "$(dirname "$(readlink -f "$0")")")")
copy=$(mktemp -d "${TMPDIR:-/tmp}/a longer name than before.XXXXXX")
trap 'rm -rf "$copy"' EXIT
cd "$root"
find . -mindepth 1 -maxdepth 1 ! -name build ! -name .git -exec cp -r -t "$copy" {} +
cd "$copy"
cmake --preset "$preset" >configure.txt 2>&1 || { cat configure.txt; exit 1; }
cmake --build --preset "$preset" --target VelkSprt VelkSub -j 2 >build.txt 2>&1 || { cat build.txt; exit 1; }
for library in "$@"; do cmp "$library" "build/$preset/$(basename "$library")"; done
