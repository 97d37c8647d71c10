#!/bin/bash
# setup_test.sh SETUP LATER_SETUP: the installer as users and administrators run it, silently: install, use by a script,
# upgrade, refused downgrade, uninstall without a trace; for all users and for the current one. In a running Wine session;
# in a prefix that runs 64-bit programs it covers both widths.
set -u
root=$(dirname "$(dirname "$(dirname "$(readlink -f "$0")")")")
source "$root/tools/wine_env"
setup=$(readlink -e "$1") && later=$(readlink -e "$2") || { echo "No installer: $*" >&2; exit 2; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0
c=$WINEPREFIX/drive_c
key='Software\Microsoft\Windows\CurrentVersion\Uninstall\VelkSupport'

run() { VELK_TIMEOUT=120 "$root/tools/wine_run" "$@"; }
fail() { echo "FAILED: $*"; failures=$((failures + 1)); }
check() { local what=$1; shift; "$@" >"$work/output" 2>&1 || { fail "$what"; cat "$work/output"; }; }
check_not() { local what=$1; shift; "$@" >"$work/output" 2>&1 && fail "$what"; }
code() { local wanted=$1 rc=0; shift; "$@" >/dev/null 2>&1 || rc=$?; [ $rc -eq "$wanted" ] || fail "exit code $rc instead of $wanted: $*"; }

# System folders as a 32-bit program's and, where there is one, a 64-bit program's.
if [ "$WINEARCH" = win64 ]; then
    both=1 narrow='C:\windows\syswow64' widths='32- and 64-bit' program_files='Program Files (x86)' widest=x64
else
    both='' narrow='C:\windows\system32' widths=32-bit program_files='Program Files' widest=x86
fi

# Every file and every registry key and value of the prefix, but for what programs that merely run write down.
snapshot() {
    local hive
    (cd "$c" && find . -path './windows/temp' -prune -o -path './users/*/Temp' -prune -o -print | sort) >"$work/files.$1"
    for hive in HKLM HKCU; do
        run reg export "$hive\\Software" "Z:$(tr / '\\' <<<"$work")\\$hive.$1.utf16" /y >/dev/null
        iconv -f utf-16 -t utf-8 "$work/$hive.$1.utf16" >"$work/$hive.$1"
    done
}
expect_as_before() {
    local part
    snapshot after
    for part in files HKLM HKCU; do
        [ -s "$work/$part.before" ] && [ -s "$work/$part.after" ] || fail "no snapshot: $part"
        check "$1: something stays behind in $part" diff "$work/$part.before" "$work/$part.after"
    done
}

winepath_of() { echo "$c/$(cut -c4- <<<"$1" | tr '\\' /)"; }

value() { run reg query "$1\\$key" /v "$2" /reg:32 | sed -n "s/.*REG_SZ *//p" | tr -d '\r'; }

# uninstall FOLDER SWITCH: the program copies itself away and goes on after its end; its key goes last.
uninstall() {
    local hive=HKLM
    [ "$2" = /AllUsers ] || hive=HKCU
    run "$1/uninstall.exe" /S "$2"
    for _ in $(seq 50); do [ -z "$(value $hive DisplayVersion)" ] && return 0; sleep 0.1; done
    fail "the uninstaller did not come to its end: $(ls -R "$1")"
}

expect_version() { local is; is=$(value HKLM DisplayVersion); [ "$is" = "$1" ] || fail "version $is instead of $1"; }

expect_installed() {
    (cd "$1" && { [ -n "$both" ] && cat SHA256SUMS || grep -v '  x64/' SHA256SUMS; } | sha256sum --quiet -c) ||
        fail "the installed files differ from the list"
    [ -n "$both" ] || [ ! -e "$1/x64" ] || fail "64-bit files on a 32-bit system"
    for link in Reference Samples 'Doctor (32-bit)'; do
        [ -s "$2/VelkSupport/$link.lnk" ] || fail "no shortcut: $link"
    done
    tr -d '\0' <"$2/VelkSupport/Reference.lnk" | grep -qaF 'docs\index.html' || fail "the shortcut does not lead to the reference"
}
# expect_script SYSTEM_FOLDER FOLDER: a sample runs in the script host of a width.
expect_script() {
    run "$1\\cscript.exe" //nologo "Z:$(tr / '\\' <<<"$2/samples/stack.vbs")" >"$work/script.txt"
    grep -q 'unexpected . at 10' "$work/script.txt" || fail "the script's output in $1: $(cat "$work/script.txt")"
}
expect_usable() {
    expect_script "$narrow" "$1"
    code 0 run "$1/x86/velkdoctor.exe"
    [ -z "$both" ] || {
        expect_script 'C:\windows\system32' "$1"
        code 0 run "$1/x64/velkdoctor.exe"
    }
}

# A 64-bit script uses the 32-bit library in the surrogate process. While that runs, nothing may be installed over it;
# Wine's does not end by itself.
expect_surrogate() {
    code 0 run 'C:\windows\system32\regsvr32.exe' /s /u "$1/x64/VelkSprt.dll"
    code 3 run "$1/x64/velkdoctor.exe" CStack
    expect_script 'C:\windows\system32' "$1"
    code 5 run "$later" /S /AllUsers
    local process
    for process in /proc/[0-9]*; do
        grep -qs 'dllhost\.exe' "$process/cmdline" && grep -qzxF "WINEPREFIX=$WINEPREFIX" "$process/environ" &&
            kill "${process#/proc/}"
    done
}

for library in "$root"/build/{i686,x86_64}/Velk*.dll; do
    [ -e "$library" ] && for folder in "$narrow" 'C:\windows\system32'; do run "$folder\\regsvr32.exe" /s /u "$library" >/dev/null 2>&1; done
done
name=$(basename "$setup" -setup.exe) version=${name#VelkSupport-}
next=${version%.*}.$((${version##*.} + 1))
menu=$c/ProgramData/Microsoft/Windows/Start\ Menu/Programs
folder=$c/$program_files/VelkSupport
# What a test that was stopped left behind.
for mode in HKLM:/AllUsers HKCU:/CurrentUser; do
    left=$(value "${mode%%:*}" InstallLocation)
    [ -z "$left" ] || uninstall "$(winepath_of "$left")" "${mode#*:}"
done
# What Windows has from the start or with the first program.
for hive in HKLM HKCU; do run reg add "$hive\\${key%\\*}" /reg:32 /f >/dev/null; done
run reg add 'HKCU\Software\Classes' /f >/dev/null
for user in "$c"/users/*/AppData/Local; do mkdir -p "$user/Programs"; done
# The script host registers itself when it first runs.
echo 'WScript.Echo 1' >"$work/first.vbs"
for folder_of_host in "$narrow" 'C:\windows\system32'; do
    run "$folder_of_host\\cscript.exe" //nologo "Z:$(tr / '\\' <<<"$work")\\first.vbs" >/dev/null
done
snapshot before

VELK_SETUP_FAULT='fail entry' code 6 run "$later" /S /AllUsers
expect_as_before "a first installation that failed"
code 0 run "$setup" /S /AllUsers
expect_version "$version"
[ "$(value HKLM Publisher)" = 'The VelkSupport authors' ] || fail "no publisher in the list of programs"
expect_installed "$folder" "$menu"
expect_usable "$folder"
code 0 run "$folder/x86/velkdoctor.exe" --surrogate on
[ -z "$both" ] || expect_surrogate "$folder"

# An upgrade that fails leaves the former version; one that is stopped leaves it usable, and the next run puts its files back.
for step in unpacking copying 'replacing x86\VelkSprt.dll' VelkSprt.dll VelkSub.dll shortcuts entry; do
    VELK_SETUP_FAULT="fail $step" code 6 run "$later" /S /AllUsers
    expect_version "$version"
    expect_installed "$folder" "$menu"
    VELK_SETUP_FAULT="end $step" code 9 run "$later" /S /AllUsers
    expect_usable "$folder"
done
expect_version "$next"
[ ! -e "$folder/setup~" ] && fail "was not stopped"

code 0 run "$later" /S /AllUsers
expect_version "$next"
[ ! -e "$folder/setup~" ] || fail "files of an upgrade stay behind"
expect_installed "$folder" "$menu"
expect_usable "$folder"
check "the surrogate outlives an upgrade" run reg query 'HKLM\Software\Classes\AppID\{50D87946-EA72-430F-AB13-E65E0E8C222D}' /v DllSurrogate

code 3 run "$setup" /S /AllUsers
expect_version "$next"
uninstall "$folder" /AllUsers
expect_as_before "for all users"

# No client finds these here (docs/departures.md: CLSIDFromProgID), so only the keys can be looked at.
code 0 run "$setup" /S /CurrentUser
folder=$(find "$c/users" -type d -path '*/AppData/Local/*/VelkSupport')
expect_installed "$folder" "$(find "$c/users" -type d -path '*/Start Menu/Programs')"
check "registered for the user" run reg query 'HKCU\Software\Classes\VelkSupport.CStack\CLSID'
check_not "registered for the machine" run reg query 'HKLM\Software\Classes\VelkSupport.CStack\CLSID'
# Nor does it keep the widths apart there, so that the one registered last stands.
code 7 run "$folder/$widest/velkdoctor.exe" CStack
code 0 run "$later" /S /CurrentUser
code 3 run "$setup" /S /CurrentUser
uninstall "$folder" /CurrentUser
expect_as_before "for the current user"

[ $failures -eq 0 ] && echo "PASSED: the installer, $widths"
exit $((failures > 0))
