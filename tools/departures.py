#!/usr/bin/env python3
"""Where the platform departs from its documentation, by the table in docs/departures.md.

departures.py HEADER    writes the table for the tests
departures.py --check   fails for a row that departs nowhere or that no test asks for
"""

import re
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
head, _, *rows = [[cell.strip() for cell in line.strip("|").split("|")]
                  for line in (ROOT / "docs/departures.md").read_text(encoding="utf-8").splitlines() if line.startswith("| ")]
departs = {row[0].strip("`"): [cell != "as documented" for cell in row[2:-1]] for row in rows}
if sys.argv[1] == "--check":
    asked = {name for path in (ROOT / "tests").rglob("*.[ch]*")
             for name in re.findall(r'Departs\("([^"]+)"', path.read_text(encoding="utf-8"))}
    sys.exit("\n".join(f"docs/departures.md: nobody needs {name}" for name in departs
                       if name not in asked or not any(departs[name])) or 0)
lines = "".join(f'    {{"{name}", {{{", ".join(map(str, each)).lower()}}}}},\n' for name, each in departs.items())
Path(sys.argv[1]).write_text(f"""inline constexpr int kWines[] = {{{', '.join(re.findall("[0-9]+", str(head)))}}};
struct Row {{
    const char* name;
    bool departs[std::size(kWines)];
}};
inline constexpr Row kRows[] = {{
{lines}}};
""", encoding="utf-8")
