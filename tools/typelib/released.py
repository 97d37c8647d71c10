#!/usr/bin/python3
"""Whether a library still keeps what its released type library promises: released.py PROGRAM LIBRARY RECORD [--accept]

PROGRAM is dump_typelib, RECORD its text of what has been released. What stands there never changes; new types and new members
behind the released ones may be added, and may change until they are released, too. With --accept (./dev accept-types) additions
are written into the record, and everything else is refused as in a test. LONG_PTR in a record is a LONG in 32 bits and a LONGLONG in 64; a new one is
written into the record by hand.
"""

import os
import subprocess
import sys
from itertools import zip_longest
from pathlib import Path

WINE_RUN = Path(__file__).resolve().parent.parent / "wine_run"


def dump(program: str, library: Path) -> str:
    output = library.with_suffix(".typelib.txt")
    output.unlink(missing_ok=True)
    subprocess.run([WINE_RUN, program, library.name, output.name], cwd=library.parent, check=True)
    return output.read_text(encoding="utf-8")


def as_recorded(built: str, record: str) -> str:
    """With the record's LONG_PTR in lines that differ in nothing else."""
    known = {line.replace("LONG_PTR", wide): line for line in record.split("\n") for wide in ("LONG", "LONGLONG")}
    return "\n".join(known.get(line, line) for line in built.split("\n"))


def types(text: str) -> tuple[str, dict[str, list[str]]]:
    """The library's line, and by kind and name each type's line with its members'."""
    library, *blocks = text.strip().split("\n\n")
    return library, {" ".join(block.split()[:2]): block.split("\n") for block in blocks}


def changes(name: str, released: list[str], built: list[str]) -> list[str]:
    return [f"{name}: released as \"{then.strip()}\", now " + (f"\"{now.strip()}\"" if now else "missing")
            for then, now in zip_longest(released, built[:len(released)]) if then != now]


def compare(released: str, built: str) -> tuple[list[str], list[str]]:
    """What breaks the promise, and what is new."""
    (library, before), (now, after) = types(released), types(built)
    broken = changes("library", [library], [now])
    order = [name for name in after if name in before]
    broken += [f"{name}: in another place among the types" for name, then in zip(order, (n for n in before if n in after)) if name != then]
    for name, lines in before.items():
        broken += changes(name, lines, after[name]) if name in after else [f"{name}: released, now missing"]
    new = [name for name in after if name not in before]
    new += [f"{name}: {line.strip()}" for name, lines in before.items() for line in after.get(name, [])[len(lines):]]
    return broken, new


def main(program: str, library: str, record: str, *flags: str) -> int:
    released = Path(record).read_text(encoding="utf-8")
    built = as_recorded(dump(os.path.abspath(program), Path(library)), released)
    broken, new = compare(released, built)
    print("\n".join(f"Changed: {line}" for line in broken) or "\n".join(f"Added: {line}" for line in new) or "As released.")
    if broken:
        print("What is released never changes, because clients were compiled with it. A new member belongs behind the released ones,\n"
              f"a new type anywhere. ./dev accept-types takes such additions into {os.path.relpath(record)}.")
        return 1
    if "--accept" in flags:
        Path(record).write_text(built, encoding="utf-8")
    return 0


sys.exit(main(*sys.argv[1:]))
