"""Checks that the context numbers and keywords of a compiled help file lead to places in it, and takes the time of its making out of it, so that the
same pages give the same bytes: finish_help.py FOLDER/FILE.chm

The time stands in the file's header and in the entry 10 (of 4 bytes) of its #SYSTEM part, which is not compressed.
"""

import re
import struct
import subprocess
import sys
import tempfile
from functools import cache
from pathlib import Path

HEADER_TIME, ENTRY = 16, b"\x0a\x00\x04\x00"


def context_pages(path: Path) -> dict[int, str]:
    """The page that each context number leads to: #IVB has pairs of a number and a place in #STRINGS."""
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run(["chmls", "extractall", path, folder], check=True, capture_output=True)
        pairs, strings = ((Path(folder) / name).read_bytes() for name in ("#IVB", "#STRINGS"))
    return {number: strings[place:strings.index(b"\0", place)].decode("cp1252")
            for number, place in struct.iter_unpack("<II", pairs[4:])}


def is_there(folder: Path, place: str) -> bool:
    page, _, anchor = place.partition("#")
    file = folder / page.lstrip("/")
    return file.is_file() and (not anchor or f'id="{anchor}"' in text_of(file))


@cache
def text_of(file: Path) -> str:
    return file.read_text(encoding="utf-8", errors="replace")


def main() -> int:
    path = Path(sys.argv[1])
    pages = context_pages(path)
    lost = [f"{number} ({page})" for number, page in pages.items() if not is_there(path.parent, page)]
    keywords = re.findall(r'name="Local" value="([^"]+)"', path.with_suffix(".hhk").read_text(encoding="cp1252"))
    lost += [page for page in keywords if not is_there(path.parent, page)]
    if lost or not pages or len(keywords) <= len(pages):
        print(f"{path}: no place behind the context numbers or keywords {', '.join(lost)}", file=sys.stderr)
        return 1
    data = bytearray(path.read_bytes())
    if data[:4] != b"ITSF" or data.count(ENTRY) != 1:
        print(f"{path}: its time was not found", file=sys.stderr)
        return 1
    entry = data.index(ENTRY) + len(ENTRY)
    data[HEADER_TIME:HEADER_TIME + 4] = data[entry:entry + 4] = bytes(4)
    path.write_bytes(data)
    return 0


sys.exit(main())
