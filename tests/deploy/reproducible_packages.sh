#!/bin/bash
# reproducible_packages.sh: makes the packages once more from a copy of the sources in another folder, with nothing reused,
# and compares the bytes with those in build/dist. In a running Wine session, after tools/packaging/package.
set -eu
root=$(dirname "$(dirname "$(dirname "$(readlink -f "$0")")")")
copy=$(mktemp -d "${TMPDIR:-/tmp}/another folder.XXXXXX")
trap 'rm -rf "$copy"' EXIT
cd "$root"
SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(git log -1 --format=%ct)}
export SOURCE_DATE_EPOCH VELK_WINEPREFIX=$WINEPREFIX
find . -mindepth 1 -maxdepth 1 ! -name build ! -name .git -exec cp -r -t "$copy" {} +
"$copy/tools/packaging/package" >"$copy/package.txt" 2>&1 || { cat "$copy/package.txt"; exit 1; }
diff build/dist/SHA256SUMS "$copy/build/dist/SHA256SUMS" && echo "PASSED: identical packages from another folder"
