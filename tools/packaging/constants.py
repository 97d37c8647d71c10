#!/usr/bin/env python3
"""The constants of the type libraries for languages that do not read type libraries: constants.py FOLDER VERSION LIBRARY.json...

FOLDER receives for each library a module for Visual Basic and VBA (.bas) and the same for VBScript (.vbs). The JSON is what
tools/typelib/typelib_json.cpp writes.
"""

import json
import sys
from pathlib import Path


def basic(value):
    return "&H80000000" if int(value) == -0x80000000 else value  # its digits alone are too many for a Long


def constants(library, version, declare):
    lines = [f"' Made from the type library of {library['name']} {version}; do not edit."]
    for t in (t for t in library["types"] if t["constants"]):
        lines += ["", f"' {t['name']}: {t['help']}", *(f"{declare} {c['name']} = {basic(c['value'])}  ' {c['help']}" for c in t["constants"])]
    return "\n".join([*lines, ""])


def main():
    folder, version, *names = sys.argv[1:]
    folder = Path(folder)
    folder.mkdir(parents=True, exist_ok=True)
    for library in (json.loads(Path(name).read_text(encoding="utf-8")) for name in names):
        head = f'Attribute VB_Name = "{library["name"]}Constants"\n'
        files = {f"{library['name']}.vbs": constants(library, version, "Const"),
                 f"{library['name']}.bas": head + constants(library, version, "Public Const")}
        for name, text in files.items():
            (folder / name).write_text(text.replace("\n", "\r\n"), encoding="cp1252", newline="")


main()
