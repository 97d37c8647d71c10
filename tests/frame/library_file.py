#!/usr/bin/env python3
"""Whether the built libraries are relocatable, hardened, the same at each build, leave the process's settings alone, and
need only those of the system's own libraries that every process gets from the system's folder:
library_file.py OBJDUMP FILE..."""
import re
import struct
import subprocess
import sys
from pathlib import Path

SYSTEM = {"kernel32.dll", "user32.dll", "gdi32.dll", "advapi32.dll", "ole32.dll", "oleaut32.dll", "msvcrt.dll"}
EXPORTS = ["DllCanUnloadNow", "DllGetClassObject", "DllRegisterServer", "DllUnregisterServer"]

for file in sys.argv[2:]:
    told = subprocess.run([sys.argv[1], "-p", file], capture_output=True, text=True, check=True).stdout
    for wanted in ("\n\tDLL\n", "DYNAMIC_BASE", "NX_COMPAT", r"Entry 5 \w+ 0*[1-9a-f]", r"Entry 6 \w+ 0{8}",
                   r"\nTime/Date\t+.* 1970\n", r"\nTime/Date stamp \t*0+\n"):
        assert re.search(wanted, told), f"{file}: no {wanted!r}"
    assert re.findall(r"\n\t\[ *\d+\] (?:\+base\[ *\d+\] +\w+ )?(\w+)(?=\n)", told) == EXPORTS, f"{file}: other exports"
    foreign = {name.lower() for name in re.findall(r"DLL Name: (\S+)", told)} - SYSTEM
    assert not foreign, f"{file}: imports {foreign}"
    changed = re.search(r"\s(SetErrorMode|Set\w*Directory\w*|SetEnvironment\w+|\w*setlocale|SetThread(Locale|Priority)|SetPriorityClass)\n", told)
    assert not changed, f"{file}: changes what belongs to the process by {changed[1]}"

content = Path(sys.argv[2]).read_bytes()
version = struct.unpack_from("<2I", content, content.index(b"\xbd\x04\xef\xfe") + 8)
assert version == (0x10001, 1) and "Velk Support Functions".encode("utf-16-le") in content, f"{sys.argv[2]}: version {version}"
