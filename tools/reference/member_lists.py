#!/usr/bin/python3
"""Whether each class's page lists its members, for those who read it where the repository is browsed: member_lists.py [--write] TYPES...

TYPES are the libraries' types as JSON. With --write the lists are made anew.
"""

import json
import re
import sys
import textwrap
from pathlib import Path

PAGES = Path(__file__).resolve().parents[2] / "docs/classes"
LIST = re.compile(r"\*\*Members:\*\* .*?\n\n", re.S)


def listed(types: dict[str, dict], one: dict) -> str:
    """In the type library's order, methods with brackets."""
    texts = []
    for face in one["implements"]:
        raised = "source" in face["flags"]
        shown = dict.fromkeys(f"`{m['name']}{'()' if m['kind'] == 'method' and not raised else ''}`" for m in types[face["name"]]["members"])
        texts.append(f"**{'Events' if raised else 'Members'}:** " + ", ".join(shown))
    return textwrap.fill("; ".join(texts) + ".", 140, break_long_words=False, break_on_hyphens=False) + "\n\n"


def main(arguments: list[str]) -> int:
    write, failed = "--write" in arguments, 0
    for library in (a for a in arguments if a != "--write"):
        types = {t["name"]: t for t in json.loads(Path(library).read_text(encoding="utf-8"))["types"]}
        for one in (t for t in types.values() if t["kind"] == "coclass"):
            page = PAGES / (one["name"] + ".md")
            text = page.read_text(encoding="utf-8")
            title, summary, rest = LIST.sub("", text).split("\n\n", 2)
            wanted = f"{title}\n\n{summary}\n\n{listed(types, one)}{rest}"
            if write:
                page.write_text(wanted, encoding="utf-8")
            elif text != wanted:
                print(f"{page.name}: other members than in the type library; tools/reference/member_lists.py --write mends it")
                failed = 1
    return failed


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
