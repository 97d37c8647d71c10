#!/usr/bin/env python3
"""Where the platform departs from its documentation, by the table in docs/departures.md.

departures.py HEADER              writes the table for the C++ tests
departures.py --check             fails for a row that departs nowhere or that no test asks for
departures.py --departs NAME WINE ends with 0 when this version of Wine departs
"""

import re
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
lines = [[cell.strip() for cell in line.strip("|\n").split("|")]
         for line in (ROOT / "docs/departures.md").read_text(encoding="utf-8").splitlines() if line.startswith("| ")]
WINES = [int(head.removeprefix("Wine ")) for head in lines[0][2:-1]]
ROWS = {cells[0].strip("`"): [cell != "as documented" for cell in cells[2:-1]] for cells in lines[2:]}


def header() -> str:
    rows = "".join(f'    {{"{name}", {{{", ".join(map(str, departs)).lower()}}}}},\n' for name, departs in ROWS.items())
    return (f"inline constexpr int kWines[] = {{{', '.join(map(str, WINES))}}};\n"
            "struct Row {\n    const char* name;\n    bool departs[std::size(kWines)];\n};\n"
            f"inline constexpr Row kRows[] = {{\n{rows}}};\n")


def unneeded() -> list[str]:
    tests = "".join(path.read_text(encoding="utf-8", errors="replace") for path in (ROOT / "tests").rglob("*")
                    if path.suffix in (".cpp", ".h", ".sh"))
    asked = set(re.findall(r'[Dd]eparts\(?[ (]"([^"]+)"', tests))
    return [name for name, departs in ROWS.items() if not any(departs) or name not in asked]


if sys.argv[1] == "--check":
    sys.exit("".join(f"docs/departures.md: nobody needs {name}\n" for name in unneeded()) or 0)
elif sys.argv[1] == "--departs":
    running = int(re.search(r"\d+", sys.argv[3])[0])
    sys.exit(not [departs for wine, departs in zip(WINES, ROWS[sys.argv[2]]) if wine <= running][-1])
else:
    Path(sys.argv[1]).write_text(header(), encoding="utf-8")
