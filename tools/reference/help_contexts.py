"""Gives the help project the context numbers that the type libraries name: help_contexts.py PROJECT.hhp LIBRARY.json..."""

import sys
from pathlib import Path

from type_library import TypeLibrary


def main() -> None:
    project, *libraries = (Path(argument) for argument in sys.argv[1:])
    classes = [c for library in libraries for c in TypeLibrary(library).classes if c.context]
    text = project.read_text(encoding="cp1252").partition("\n[ALIAS]")[0].rstrip() + "\n"
    text += "\n[ALIAS]\n" + "".join(f"{c.name}=classes/{c.name}.html\n" for c in classes)
    text += "\n[MAP]\n" + "".join(f"#define {c.name} {c.context}\n" for c in classes)
    project.write_text(text, encoding="cp1252", newline="\r\n")


main()
