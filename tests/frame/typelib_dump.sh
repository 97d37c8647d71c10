#!/bin/bash
# typelib_dump.sh PROGRAM LIBRARY COMMITTED: whether the type library promises its clients what was committed.
set -u
root=$(dirname "$(dirname "$(dirname "$(readlink -f "$0")")")")
fresh=$(basename "$3")
cd "$(dirname "$2")" && rm -f "$fresh" && "$root/tools/wine_run" "$1" "$(basename "$2")" "$fresh" || exit 1
[ -z "${VELK_ACCEPT_TYPELIB:-}" ] || cp "$fresh" "$3"
diff -u "$3" "$fresh" && exit 0
echo "The type library differs from the committed one. A released interface never changes; where the change is an"
echo "addition, accept it: VELK_ACCEPT_TYPELIB=1 ctest --preset i686 -R '^typelib', and commit $3"
exit 1
