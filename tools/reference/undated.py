"""Takes the time of its making out of a compiled help file, so that the same pages give the same bytes: undated.py FILE.chm

It stands in the file's header and in the entry 10 (of 4 bytes) of its #SYSTEM part, which is not compressed.
"""

import sys
from pathlib import Path

HEADER_TIME, ENTRY = 16, b"\x0a\x00\x04\x00"


def main() -> int:
    path = Path(sys.argv[1])
    data = bytearray(path.read_bytes())
    if data[:4] != b"ITSF" or data.count(ENTRY) != 1:
        print(f"{path}: its time was not found", file=sys.stderr)
        return 1
    entry = data.index(ENTRY) + len(ENTRY)
    data[HEADER_TIME:HEADER_TIME + 4] = data[entry:entry + 4] = bytes(4)
    path.write_bytes(data)
    return 0


sys.exit(main())
