"""Gives the help project its context numbers, which the type libraries name, and its index of keywords: help_project.py PROJECT.hhp
LIBRARY.json...

A context number leads to a page, not to a place in it (the compiler takes no others): so each member has a short page too, with its
text and the way to its class.
"""

import sys
from html import escape
from pathlib import Path

from type_library import Class, Member, TypeLibrary

PAGE = """<!DOCTYPE html>
<html><head><meta charset="utf-8"><title>{title}</title><link rel="stylesheet" href="../_static/help.css"></head>
<body><h1>{title}</h1><p><code>{signature}</code></p><p>{text}</p><p>More: <a href="../{place}">{owner}</a></p></body></html>
"""


def place(c: Class, *names: str) -> str:
    return f"classes/{c.name}.html#" + "-".join(names).lower().replace("_", "")


def member_page(c: Class, m: Member) -> str:
    return PAGE.format(title=escape(f"{m.name} ({c.name})"), signature=escape(m.signature + (f" \N{RIGHTWARDS ARROW} {m.type}" if m.type else "")),
                       text=escape(m.help), place=place(c, c.name, m.name), owner=escape(c.name))


def main() -> None:
    project, *names = (Path(argument) for argument in sys.argv[1:])
    libraries = [TypeLibrary(name) for name in names]
    contexts: dict[int, str] = {}
    keywords: dict[str, str] = {}
    (project.parent / "members").mkdir(exist_ok=True)
    for library in libraries:
        for c in library.classes + library.interfaces:
            contexts[c.context] = keywords[c.name] = f"classes/{c.name}.html"
            for m in c.members + c.events:
                contexts[m.context] = f"members/{m.context}.html"
                (project.parent / contexts[m.context]).write_text(member_page(c, m), encoding="utf-8")
                keywords[f"{m.name} ({c.name})"] = place(c, c.name, m.name)
            for e in (e for e in library.enumerations if c.uses(e)):
                keywords.update({name: place(c, e.name) for name in (e.name, *(name for name, *_ in e.constants)) if name not in keywords})
    text = project.read_text(encoding="cp1252").rstrip() + "\n"
    text += "".join(f"{page}\n" for page in contexts.values() if page.startswith("members/"))  # its last section lists the files
    text += "\n[ALIAS]\n" + "".join(f"place{number}={page}\n" for number, page in contexts.items())
    text += "\n[MAP]\n" + "".join(f"#define place{number} {number}\n" for number in contexts)
    project.write_text(text, encoding="cp1252", newline="\r\n")
    entries = "".join(f'<LI><OBJECT type="text/sitemap"><param name="Name" value="{escape(keyword)}">'
                      f'<param name="Local" value="{page}"></OBJECT>\n' for keyword, page in sorted(keywords.items(), key=lambda k: k[0].lower()))
    project.with_suffix(".hhk").write_text(f"<HTML><BODY>\n<UL>\n{entries}</UL>\n</BODY></HTML>\n", encoding="cp1252")


main()
