#!/usr/bin/python3
"""Checks the snippets of docs/ as far as this machine has their languages: snippets.py WORK LIBRARY.json SCRIPT_HOST BUILD

Scripts are parsed by the script host, VBA by it too once its types are taken out; C and C++ are compiled with the headers in
BUILD; C#, C++ with `#import` and Python are compiled or type-checked against what their importers make of the type library; PowerShell is parsed by a grammar. Whatever the language, the members that a snippet uses
have to be in the type library. What is not installed is skipped, loudly.
"""

import re
import shutil
import subprocess
import sys
from pathlib import Path

import interop
from type_library import TypeLibrary

TOOLS = Path(__file__).resolve().parent
DOCS, QUALITY = TOOLS.parent.parent / "docs", TOOLS.parent / "quality"
MINGW = Path("/usr/share/mingw-w64/include")
# Wine's headers give interfaces no identifiers.
MICROSOFT = """struct __declspec(uuid("00000000-0000-0000-c000-000000000046")) IUnknown;
struct __declspec(uuid("00020400-0000-0000-c000-000000000046")) IDispatch;
#include <windows.h>
#include <stdio.h>
#include <comdef.h>
"""
CREATED = re.compile(r"""(?:^|(?<=[\s(]))(\$?\w+)(?:\s*=\s*|\s+As\s+(?:New\s+)?)(?:New-Object|new|New|WScript)?[^\n=]*?\bVelkSupport\.(\w+)""")
START = {".vbs": 'WScript.Echo "read": WScript.Quit\n', ".js": 'WScript.Echo("read"); WScript.Quit();\n'}


def blocks(page: Path, *languages: str) -> list[str]:
    found = re.findall(r"^```(\w+)\n(.*?)^```$", page.read_text(encoding="utf-8"), re.M | re.S)
    return [code for language, code in found if language in languages]


def unknown_members(code: str, members: dict[str, set[str]]) -> list[str]:
    """Of the variables that hold an object of the library."""
    unknown = []
    for variable, owner in dict(CREATED.findall(code)).items():
        used = set(re.findall(rf"(?<![\w.$]){re.escape(variable)}\.(\w+)", code, re.I))
        unknown += [f"{owner} has no {name}" for name in sorted(used) if name.lower() not in members[owner]]
    return unknown


def run(*command: object) -> subprocess.CompletedProcess:
    return subprocess.run([str(part) for part in command], capture_output=True, text=True)


def failure(*command: object) -> str:
    """What a tool says when it fails."""
    ended = run(*command)
    return (ended.stdout + ended.stderr).strip() or "failed" if ended.returncode else ""


class Checks:
    def __init__(self, work: Path, library: Path, host: str, build: Path):
        self.work, self.library, self.host, self.build = work, library, host, build
        shutil.rmtree(work, ignore_errors=True)
        work.mkdir(parents=True)
        self.problems: list[str] = []
        self.done: list[str] = []

    def save(self, name: str, text: str) -> Path:
        file = self.work / name
        file.write_text(text, encoding="utf-8")
        return file

    def note(self, page: Path, *problems: str) -> None:
        self.problems += [f"{page.relative_to(DOCS.parent)}: {problem}" for problem in problems if problem]

    def say(self, what: str, *needs: object) -> bool:
        missing = [str(need) for need in needs if not (shutil.which(str(need)) or Path(str(need)).exists())]
        self.done.append(f"SKIPPED: {what}, for want of {', '.join(missing)}" if missing else what)
        return not missing

    def members(self) -> None:
        members = {c.name: {m.name.lower() for m in [*c.members, *c.events]} for c in TypeLibrary(self.library).classes}
        for page in sorted(DOCS.rglob("*.md")):
            self.note(page, *unknown_members("\n".join(blocks(page, "vb", "vba", "javascript", "powershell", "python")), members))
        self.done.append("members looked up")

    def reads(self, kind: str, code: str) -> bool:
        """The host reads the whole of a script before its first line says so and ends it."""
        script = self.save(kind, START[Path(kind).suffix] + (as_script(code) if kind.startswith("vba") else code))
        return run(self.host, "cscript.exe", "//nologo", f"Z:{script}").stdout.strip() == "read"

    def scripts(self) -> None:
        """Wine's host does not say why it refuses one, so all of a page go first and then each."""
        for page in sorted(DOCS.rglob("*.md")):
            for language, kind in (("vb", "vb.vbs"), ("javascript", "java.js"), ("vba", "vba.vbs")):
                found = blocks(page, language)
                if found and not self.reads(kind, "\n".join(found)):
                    refused = [code for code in found if not self.reads(kind, code)]
                    self.note(page, *[f"not to be read as a script:\n{code}" for code in refused or found])
        self.done.append("VBScript, JScript and VBA parsed")

    def headers(self) -> None:
        include = self.build / "src/velksprt_types"
        for page, compiler in ((DOCS / "languages/c.md", "gcc -std=c11"), (DOCS / "languages/cpp.md", "g++ -std=c++17")):
            name, flag = compiler.split()
            name = f"i686-w64-mingw32-{name}-posix"
            if self.say(f"{page.stem.upper().replace('PP', '++')} compiled", name):
                found = [code for code in blocks(page, page.stem) if "#import" not in code]
                head = "\n".join([*re.findall("^#.*", "\n".join(found), re.M), "#include <windows.h>", "#include <stdio.h>", '#include "velksprt.h"'])
                functions = [code for code in found if code.startswith("static ")]
                body = re.sub("^#.*", "", "\n".join(code for code in found if code not in functions), flags=re.M)
                program = self.save(f"page.{page.stem}", f"{head}\n{''.join(functions)}\nvoid Page(IDispatch* sink) {{\n(void)sink;\n{body}}}\n")
                self.note(page, failure(name, flag, "-Wall", "-Wextra", "-Wno-unused", "-Wno-unused-parameter", "-Werror", "-fsyntax-only",
                                        f"-I{include}", program))

    def imported(self) -> None:
        """With mingw-w64's smart pointers, for which these stand in: what its other headers would define."""
        if not self.say("#import compiled", "clang", MINGW / "comdef.h"):
            return
        for name in ("comdef.h", "comdefsp.h", "comip.h", "comutil.h"):
            shutil.copy(MINGW / name, self.work)
        self.save("new.h", "")
        self.save("_mingw.h", "#define __MINGW_EXTENSION\n#define __LONG32 long\n#define __MINGW_SELECTANY __declspec(selectany)\n")
        page = DOCS / "languages/cpp.md"
        code = "\n".join(code for code in blocks(page, "cpp") if "#import" in code)
        types = interop.cpp(self.library)
        for old, new in re.findall(r'rename\("(\w+)", "(\w+)"\)', code):
            types = re.sub(rf"\b{old}\b", new, types)
        body = re.sub("^#import .*", "", code, flags=re.M)
        program = self.save("import.cpp", f"{MICROSOFT}{types}void Page() {{\n{body}}}\n")
        for width in ("i686", "x86_64"):
            compiler = run(QUALITY / "microsoft", width).stdout.split()
            self.note(page, failure(*compiler, "-DWINE_UNICODE_NATIVE", "-fcxx-exceptions", "-std=c++17", "-Wall", "-Wno-unused", "-Werror", "-fsyntax-only",
                                    "-isystem", self.work, program))

    def csharp(self) -> None:
        if self.say("C# compiled", "mcs"):
            page = DOCS / "languages/csharp.md"
            head, *bodies = blocks(page, "csharp")
            stub = self.save("Interop.cs", interop.csharp(self.library))
            program = self.save("Page.cs", f"{head}\nclass Page\n{{\n    static void Main()\n    {{\n{''.join(bodies)}\n    }}\n}}\n")
            self.note(page, failure("mcs", "-warnaserror", "-r:Microsoft.CSharp", f"-out:{self.work / 'Page.exe'}", stub, program))

    def python(self) -> None:
        page = DOCS / "languages/python.md"
        program = self.save("page.py", "\n\n".join(blocks(page, "python")))
        self.note(page, failure("python3", "-m", "py_compile", program))
        if self.say("Python type-checked", "/usr/bin/mypy"):
            for name, text in interop.python(self.library).items():
                (self.work / name).parent.mkdir(parents=True, exist_ok=True)
                self.save(name, text)
            self.note(page, failure("/usr/bin/mypy", "--cache-dir", self.library.parent / "mypy", "--platform", "win32", "--check-untyped-defs", program))

    def powershell(self) -> None:
        grammar = self.library.parent / "node_modules"
        if self.say("PowerShell parsed", "node", grammar / "tree-sitter-powershell"):
            page = DOCS / "languages/powershell.md"
            self.note(page, failure("node", TOOLS / "parse_powershell.js", grammar, self.save("page.ps1", "\n".join(blocks(page, "powershell")))))


def as_script(code: str) -> str:
    """A module of VBA as a class of VBScript: without types, which are checked as names of classes instead."""
    code = re.sub(r"\bNew (VelkSupport\.\w+)", r'CreateObject("\1")', code)
    return "Class Module\n" + re.sub(r"\bWithEvents |\(\)(?= As \w+,)| As (?:New )?[\w.]+|^Implements .*", "", code, flags=re.M) + "End Class\n"


def main(work: str, library: str, host: str, build: str) -> int:
    checks = Checks(Path(work).resolve(), Path(library).resolve(), host, Path(build).resolve())
    for check in (checks.members, checks.scripts, checks.headers, checks.imported, checks.csharp, checks.python, checks.powershell):
        check()
    print("Snippets: " + "; ".join(checks.done) + ".")
    print("\n".join(checks.problems), end="\n" if checks.problems else "")
    return 1 if checks.problems else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
