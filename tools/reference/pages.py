"""Writes the source of the reference: the pages of docs/ and samples/, joined with what the type libraries say.

pages.py OUTPUT LIBRARY.json...
"""

import re
import shutil
import sys
from pathlib import Path

from type_library import Argument, Class, Enumeration, Incomplete, Member, TypeLibrary

ROOT = Path(__file__).resolve().parent.parent.parent
DOCS, SAMPLES = ROOT / "docs", ROOT / "samples"
LANGUAGES = {".vbs": "vbscript", ".js": "javascript", ".cpp": "cpp", ".c": "c", ".dpr": "pascal", ".txt": "text", ".ini": "ini",
             ".manifest": "xml", ".cmake": "cmake"}
# What the repository has in another place than the site.
SITE_PAGES = {"../README.md#classes": "classes.md", "classes/": "errors.md"}
# Files that have no room for a comment which says what they are.
DATA = {"scale_parameters.txt": "Parameters to be sealed, for seal_file.vbs.", "window_settings.ini": "Settings for window_settings.vbs."}
GUIDE = ["tasks", "languages", "coming_from_scripting_objects", "reports", "deployment", "platforms", "departures"]


def plain(text: str) -> str:
    """Text in which Markdown sees no mark-up."""
    return re.sub(r"([\\*_`<>\[\]|$#])", r"\\\1", text)


def hexadecimal(value: int) -> str:
    return f"0x{value & 0xFFFFFFFF:08X}"


def table(head: list[str], rows: list[list[str]]) -> str:
    lines = [head, ["---"] * len(head), *rows]
    return "\n".join("| " + " | ".join(cells) + " |" for cells in lines) + "\n"


def label(*names: str) -> str:
    return "-".join(names).lower().replace("_", "").replace(".", "-")


class Site:
    def __init__(self, out: Path, libraries: list[TypeLibrary]):
        self.out = out
        self.libraries = libraries
        self.enumerations = {e.name: e for library in libraries for e in library.enumerations}
        self.page_of_enumeration = {
            e.name: c.name for library in libraries for e in library.enumerations
            for c in reversed(library.classes + library.interfaces) if c.uses(e)}
        self.error_names = {hexadecimal(value): name for e in self.enumerations.values() if e.is_errors
                            for name, value, _ in e.constants}
        self.errors = self.described_errors()

    # --- Texts that link to each other

    def type_link(self, name: str) -> str:
        if name in self.page_of_enumeration:
            return f"[{name}]({label(name)})"
        return plain(name)

    def help_text(self, text: str) -> str:
        marked = plain(text)
        return re.sub(r"0x[0-9A-F]{8}", lambda m: f"[{m[0]}]({label('error', m[0])})" if m[0] in self.errors
                      else m[0], marked)

    # --- One class

    def members_table(self, owner: str, members: list[Member]) -> str:
        rows = []
        for m in members:
            first = re.match(r".*?[.:;](?=\s|$)|.*", m.help)[0].rstrip(".:;")
            kind = f" → {self.type_link(m.type)}" if m.type else ""
            rows.append([f"[{plain(m.signature)}]({label(owner, m.name)}){kind}", plain(first)])
        return table(["member", "what it does"], rows)

    def argument_rows(self, arguments: list[Argument]) -> list[list[str]]:
        def needed(a: Argument) -> str:
            if not a.optional:
                return "required"
            return f"optional, {plain(a.default)} when left out" if a.default is not None else "optional"

        def passed(a: Argument) -> str:
            return "by\N{NO-BREAK SPACE}" + ("reference" if a.by_reference else "value")
        return [[f"`{a.name}`", self.type_link(a.type), passed(a), needed(a)] for a in arguments]

    def member_detail(self, owner: str, m: Member) -> str:
        text = f"({label(owner, m.name)})=\n### {m.name}\n\n"
        kind = f" → {self.type_link(m.type)}" if m.type else ""
        text += f"`{m.signature}`{kind}\n\n{self.help_text(m.help)}\n\n"
        if m.arguments:
            text += table(["argument", "type", "passed", "needed"], self.argument_rows(m.arguments)) + "\n"
        slots = [f"{a.kind} {a.slot}" if m.is_property else str(a.slot) for a in m.accessors if a.slot is not None]
        facts = [m.access.capitalize(), f"dispatch id {m.id}"]
        if slots:
            facts.append("vtable slot " + ", ".join(slots))
        lets = [a for a in m.accessors if a.kind in ("let", "set")]
        if lets and lets[0].arguments:
            facts.append("new value passed " + ("by reference" if lets[0].arguments[-1].by_reference else "by value"))
        return text + ":::{container} facts\n" + "; ".join(facts) + ".\n:::\n"

    def enumeration(self, e: Enumeration) -> str:
        text = f"({label(e.name)})=\n### {e.name}\n\n{self.help_text(e.help)}\n\n"
        rows = [[f"`{name}`", str(value), hexadecimal(value), plain(meaning)] for name, value, meaning in e.constants]
        return text + table(["constant", "value", "hexadecimal", "meaning"], rows)

    def identifiers(self, c: Class) -> str:
        rows = [["program identifier", f"`{c.program_id}`"], ["class", f"`{c.class_id}`"]] if c.program_id else []
        rows.append([f"interface", f"`{c.interface_id}`"])
        if c.events_id:
            rows.append(["events", f"`{c.events_id}`"])
        return "## Identifiers\n\n" + table(["of", "identifier"], rows)

    def samples_of(self, c: Class) -> list[Path]:
        """The samples that create a class; each of the library's own has one in either script language."""
        pattern = re.compile(rf"{re.escape(c.program_id or 'none')}\b|__uuidof\(_?{c.name}\)")
        found = [p for p in sample_files() if pattern.search(p.read_text(encoding="utf-8"))]
        lacking = {".vbs", ".js"} - {p.suffix for p in found}
        if lacking and c in self.libraries[0].classes:
            raise Incomplete(f"no {' and no '.join(sorted(lacking))} sample creates {c.program_id}")
        return found

    def samples_list(self, c: Class) -> str:
        links = [f"- [{p.relative_to(SAMPLES)}](../samples/{sample_page(p)}.md): {first_comment(p)}" for p in self.samples_of(c)]
        return "## Samples\n\n" + "\n".join(links) + "\n" if links else ""

    def class_page(self, c: Class, enumerations: list[Enumeration]) -> str:
        head, sections = self.hand_written(c)
        details = "\n".join(self.member_detail(c.name, m) for m in c.members)
        parts = [head, "## Members\n\n" + self.members_table(c.name, c.members)]
        if c.events:
            parts.append("**Events**\n\n" + self.members_table(c.name, c.events))
        parts += [sections, "## Members in detail\n\n" + details]
        parts += [self.member_detail(c.name, m) for m in c.events]
        used = [e for e in enumerations if c.uses(e)]
        if used:
            parts.append("## Constants\n\n" + "\n".join(self.enumeration(e) for e in used))
        parts += [self.samples_list(c), self.identifiers(c)]
        return "\n\n".join(p.strip() for p in parts if p.strip()) + "\n"

    def hand_written(self, c: Class) -> tuple[str, str]:
        path = DOCS / "classes" / f"{c.name}.md"
        if not path.exists():
            raise Incomplete(f"docs/classes/{c.name}.md is missing")
        head, heading, rest = adapted(path).partition("\n## ")
        return head, heading.strip("\n") + rest

    # --- The pages that gather

    def classes_page(self) -> str:
        text = "# All classes\n\n"
        for library in self.libraries:
            rows = [[f"[{c.name}](classes/{c.name}.md)", plain(c.help)] for c in library.classes + library.interfaces]
            text += f"**{library.name}** {library.version}, {plain(library.help)}, `{library.guid}`\n\n"
            text += table(["class", "what it is for"], rows) + "\n"
        return text

    def described_errors(self) -> dict[str, tuple[str, str]]:
        """The class and the text of each error number that a class's page names: in a table, or as number, "text"."""
        found = {}
        for path in sorted((DOCS / "classes").glob("*.md")):
            for number, cell, quoted in re.findall(r'(0x8004[0-9A-F]{4})(?:[^|\n]*\| ([^|]+) \||,? "([^"]+)")',
                                                   path.read_text(encoding="utf-8").replace("\n", " \n")):
                found.setdefault(number, (path.stem, (cell or quoted).strip()))
        missing = self.error_names.keys() - found.keys()
        if missing:
            raise Incomplete(f"no page names {', '.join(self.error_names[number] for number in sorted(missing))}")
        return found

    def errors_page(self) -> str:
        rows = []
        for number, (owner, text) in sorted(self.errors.items()):
            name = f", `{self.error_names[number]}`" if number in self.error_names else ""
            value = int(number, 16) - (1 << 32)
            rows.append(f"({label('error', number)})=\n**{number}** ({value}) {plain(text)}\\\n"
                        f"[{owner}](classes/{owner}.md){name}\n")
        return ("# Error numbers\n\nThe numbers of the classes' own errors. When each is raised is on the class's page; the "
                "runtime's numbers (0x800A0005, ...) are explained under [failures](reports.md).\n\n" + "\n".join(rows))

    # --- All of it

    def write(self) -> None:
        shutil.rmtree(self.out, ignore_errors=True)
        for folder in ("classes", "languages", "samples"):
            (self.out / folder).mkdir(parents=True)
        for library in self.libraries:
            for c in library.classes + library.interfaces:
                self.save(f"classes/{c.name}.md", self.class_page(c, library.enumerations))
        self.save("classes.md", self.classes_page())
        self.save("errors.md", self.errors_page())
        self.write_samples()
        self.copy_pages()
        if (DOCS / "images").exists():
            shutil.copytree(DOCS / "images", self.out / "images")

    def save(self, name: str, text: str) -> None:
        (self.out / name).write_text(text, encoding="utf-8")

    def write_samples(self) -> None:
        for path in sample_files():
            code = path.read_text(encoding="utf-8").rstrip()
            language = LANGUAGES.get(path.suffix, "text")
            self.save(f"samples/{sample_page(path)}.md",
                      f"# {path.relative_to(SAMPLES)}\n\n{first_comment(path)}\n\n````{language}\n{code}\n````\n")
        break_here = "/\N{ZERO WIDTH SPACE}"
        rows = [[f"[{str(p.relative_to(SAMPLES)).replace('/', break_here)}](samples/{sample_page(p)}.md)", first_comment(p)]
                for p in sample_files()]
        self.save("samples.md", "# Samples\n\nEach script runs as it is under the script host of the library's width, each program is "
                  "an early-bound client. Those that need nobody in front of the screen are run by the tests, and what they "
                  "print is compared. A script host has no window on its thread: what its scripts can do with windows and menus "
                  "is in window_settings.vbs and window_helpers.js, the rest in C++ programs.\n\n"
                  "## What each does\n\n" + table(["sample", "what it does"], rows) + "\n## Which sample uses which class\n\n" +
                  self.samples_by_class() + toctree("", [f"samples/{sample_page(p)}" for p in sample_files()]))

    def samples_by_class(self) -> str:
        def links(c: Class, suffix: str) -> str:
            return ", ".join(f"[{p.stem}](samples/{sample_page(p)}.md)" for p in self.samples_of(c) if p.suffix == suffix)
        return table(["class", "VBScript", "JScript", "C++"],
                     [[f"[{c.name}](classes/{c.name}.md)", *(links(c, suffix) for suffix in (".vbs", ".js", ".cpp"))]
                      for library in self.libraries for c in library.classes])

    def copy_pages(self) -> None:
        families, others = [], []
        for path in sorted(DOCS.glob("*.md")):
            text = adapted(path)
            if (pages := list(dict.fromkeys(re.findall(rf"\(({path.stem}/\w+)\.md", text)))) and path.stem == "languages":
                text += toctree("", pages)
            classes = list(dict.fromkeys(re.findall(r"\(classes/(\w+)\.md", text)))
            if path.stem != "index" and classes and path.stem not in GUIDE:
                families.append(path.stem)
                text += toctree("", [f"classes/{name}" for name in classes])
            elif path.stem != "index":
                others.append(path.stem)
            self.save(path.name, text)
        for path in DOCS.glob("languages/*.md"):
            self.save(f"languages/{path.name}", adapted(path))
        for picture in DOCS.glob("*.svg"):
            shutil.copy(picture, self.out)
        guide = [page for page in GUIDE if page in others]
        rest = [page for page in others if page not in guide]
        with (self.out / "index.md").open("a", encoding="utf-8") as index:
            index.write(toctree("Guide", [*guide, "samples"]))
            index.write(toctree("Classes", ["classes", *families]))
            index.write(toctree("Background", ["errors", *rest]))


def toctree(caption: str, pages: list[str]) -> str:
    """The navigation beside the pages; the style sheets hide it on the page itself."""
    options = (f":caption: {caption}\n" if caption else "") + ":maxdepth: 1\n"
    return "\n```{toctree}\n" + options + "\n" + "\n".join(pages) + "\n```\n"


def sample_files() -> list[Path]:
    return [p for p in sorted(SAMPLES.rglob("*")) if p.suffix in LANGUAGES and "CMakeLists" not in p.name or
            p.parent != SAMPLES and p.name == "CMakeLists.txt"]


def sample_page(path: Path) -> str:
    return re.sub(r"[^a-z0-9]+", "_", str(path.relative_to(SAMPLES)).lower())


def first_comment(path: Path) -> str:
    """The first sentence of the comment at a sample's head."""
    if path.name in DATA:
        return DATA[path.name]
    lines = []
    for line in path.read_text(encoding="utf-8").splitlines():
        if line.startswith("<?xml"):
            continue
        comment = re.match(r"\s*(?:'|//|#|<!--|\{)\s?(.*?)(?: -->)?$", line)
        if not comment or not comment[1].strip():
            break
        lines.append(comment[1].strip())
    sentence = re.match(r".*?[.:](?=\s|$)|.*", " ".join(lines))[0]
    return plain(sentence.rstrip(":.") + "." if sentence else "")


def adapted(path: Path) -> str:
    """A page of docs/ with its links into the repository turned into links within the site."""
    text = path.read_text(encoding="utf-8")
    text = re.sub(r"^```vba?$", "```vbscript", text, flags=re.M)
    up = "../" * len(path.relative_to(DOCS).parts)

    def sample(match: re.Match) -> str:
        target = SAMPLES / match[2]
        page = "samples" if target.is_dir() or not target.exists() else "samples/" + sample_page(target)
        return f"{match[1]}({'../' * (up.count('../') - 1)}{page}.md)"

    for there, here in SITE_PAGES.items():
        text = text.replace(f"]({there})", f"]({here})")
    text = re.sub(r"(\[[^\]]*\])\(" + re.escape(up) + r"samples/([^)#]*)\)", sample, text)
    return re.sub(r"\[([^\]]*)\]\(" + re.escape(up) + r"(?:src|tests|tools|bench|velksub|[A-Z]+\.md)[^)]*\)", r"\1", text)


def check_repository_links() -> None:
    """Pages are read where the repository is browsed, too; anchors are the site's check's affair."""
    for page in [*ROOT.glob("*.md"), *DOCS.rglob("*.md")]:
        for target in re.findall(r"\]\(([^)#:\s]+)(?:#[^)]*)?\)", page.read_text(encoding="utf-8")):
            if not (page.parent / target).exists():
                raise Incomplete(f"{page.relative_to(ROOT)}: dead link {target}")


def main() -> int:
    out, *libraries = sys.argv[1:]
    try:
        check_repository_links()
        Site(Path(out), [TypeLibrary(Path(path)) for path in libraries]).write()
    except Incomplete as problem:
        print(f"reference: {problem}", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
