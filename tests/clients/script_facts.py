#!/usr/bin/env python3
"""script_facts.py PROGRAM FACTS...: writes a script client, in the language that the program's suffix says. It plays those scenarios of
the files that a script can play: without orders to the platform, and with values that the language has. Reports go to the debugger."""
import json
import re
import sys
from pathlib import Path

ORDER = re.compile(r"(with|when|without|saw|shows|memory|file|folder|delete|value|set|listen|leave|on|drop|held|canvas|pixel|each|\d+ times)\b|#")
SOURCES = Path(__file__).resolve().parents[2] / "src"
PROPERTIES = {name for file in SOURCES.rglob("*.idl") for name in re.findall(r"(?:\[prop.*?\]\s*HRESULT |PROPERTY\(\d+, \w+, )(\w+)", file.read_text(), re.S)}
PRELUDE = {"vbs": '''failures = 0: played = 0
here = CreateObject("Scripting.FileSystemObject").GetParentFolderName(WScript.ScriptFullName)
Function Shown(value)
    If IsObject(value) Then Shown = "object" Else Shown = TypeName(value)
    If IsArray(value) Then
        Dim item
        Shown = LBound(value) & ":"
        For Each item In value: Shown = Shown & Shown(item) & " ": Next
    ElseIf Not IsObject(value) And Not IsNull(value) Then
        Shown = Shown & " " & value
    End If
End Function
Sub Expect(step, wanted, got)
    If wanted = got Then Exit Sub
    failures = failures + 1
    WScript.Echo "FAILED " & step & ": wanted " & wanted & ", got " & got
End Sub
Sub Done(step, wanted)
    got = Left(Err.Number & " " & Err.Description, Len(wanted))
    Err.Clear
    Expect step, wanted, got
    played = played + 1
End Sub
On Error Resume Next
''', "js": '''var failures = 0, played = 0;
var here = new ActiveXObject("Scripting.FileSystemObject").GetParentFolderName(WScript.ScriptFullName);
function shown(value) { return typeof value === "object" && value ? "object" : typeof value + " " + value; }
function expect(step, wanted, got) {
    if (wanted === got) return;
    failures++;
    WScript.Echo("FAILED " + step + ": wanted " + wanted + ", got " + got);
}
function done(step, wanted, action) {
    var got = "0 ";
    try { action(); } catch (error) { got = error.number + " " + error.description; }
    expect(step, wanted, got.substr(0, wanted.length));
    played++;
}
'''}


class Unplayable(Exception):
    """A scenario that scripts cannot play, or not in this language."""


def split(text: str, separator: str) -> list[str]:
    """At separators outside texts."""
    inside_no_text = r'(?=(?:[^"\\]|\\.|"(?:\\.|[^"\\])*")*$)'
    return [piece.strip() for piece in re.split(re.escape(separator) + inside_no_text, text)]


def alternatives(line: str) -> list[str]:
    made, groups = [""], []
    for before, inside in re.findall(r"([^{]*)(?:\{([^}]*)\})?", line):
        parts = groups[int(inside) - 1] if inside.isdigit() else split(inside, "|") if inside else [""]
        groups += [parts] if inside else []
        made = [one + before + parts[i % len(parts)] for i, one in enumerate(made * (len(parts) if len(made) == 1 else 1))]
    return made


class Script:
    def __init__(self, language: str) -> None:
        self.vb = language == "vbs"
        self.do = "Call " if self.vb else ""

    def text(self, text: str) -> str:
        if "$dir" in text:
            return (" & here & " if self.vb else " + here + ").join(map(self.text, text.split("$dir")))
        in_vb = re.sub("[^ -~]", lambda character: f'" & Chr{"W" * (character[0] > "~")}({ord(character[0])}) & "', text.replace('"', '""'))
        return f'"{in_vb}"' if self.vb else json.dumps(text)

    def value(self, text: str) -> str:
        if re.fullmatch(r'"([^"\\]|\\.)*"', text):
            return self.text(json.loads(re.sub(r"\\(.)", lambda escape: "\\u0000" if escape[1] == "0" else escape[0], text)))
        if number := re.fullmatch(r"(-?\d+(\.\d+)?)([ib]?)" if not self.vb else r"(-?\d+(\.\d+)?)([ibfc]?)", text):
            kind = {"i": "CInt", "b": "CByte", "f": "CSng", "c": "CCur"}.get(number[3], "CDbl" if number[2] else "CLng")
            return f'{kind}("{number[1]}")' if self.vb else f"({number[1]})"
        if text == "object":
            return "o"
        if self.vb and (array := re.fullmatch(r"\[1: (.*)\]", text)):  # only members give arrays from 1
            return '"1:' + "".join(f"String {json.loads(item)} " for item in split(array[1], ",")) + '"'
        if text in ("True", "False", "Empty", "Null"):
            return text if self.vb else {"Empty": "undefined"}.get(text, text.lower())
        if not re.fullmatch(r"&?[a-z]\w*" if self.vb else r"[a-z]\w*", text):  # only VBScript hands its variables over
            raise Unplayable(text)
        return "v_" + text.lstrip("&")

    def call(self, call: str) -> str:
        if call.startswith("&"):
            return self.value(call)
        if not (parts := re.fullmatch(r"(?:(\w+)\.)?(\w+) ?(.*)", call)):
            raise Unplayable(call)
        values = [self.value(one) for one in split(parts[3], ",")] if parts[3] else []
        called = values or not self.vb and parts[2] not in PROPERTIES
        return f"{'v_' + parts[1] if parts[1] else 'o'}.{parts[2]}" + (f"({', '.join(values)})" if called else "")

    def new(self, variable: str, name: str) -> str:
        made = f'"{name if "." in name else "VelkSupport." + name}"'
        return f"Set {variable} = CreateObject({made})" if self.vb else f"{variable} = new ActiveXObject({made})"

    def step(self, step: str) -> list[str]:
        name, step = self.text(step.replace("$", "")), split(step, " shows ")[0]
        if step.startswith(("key ", "set VELKSPRT_REPORTS")):  # for the facts' own run
            return []
        if ORDER.match(step):
            raise Unplayable(step)
        if made := re.fullmatch(r"let (\w+) = (new )?(.*)", step):
            return [self.new("v_" + made[1], made[3]) if made[2] else f"v_{made[1]} = {self.value(made[3])}"]
        (step, error), failure = (split(step, " ! ") + [""])[:2], "0 "
        if wanted := re.match(r'(\w+)(?: "(.*?)")?', error):
            number = int(wanted[1], 0) | (0 if wanted[1].startswith("0x") else 0x800A0000)
            failure = f"{int(wanted[1]) if self.vb and number >> 16 == 0x800A else number - (1 << 32)} {wanted[2] or ''}"
        if len(parts := split(step, " := ")) == 2:
            action = f"{self.call(parts[0])} = {self.value(parts[1])}"
        elif len(parts := split(step, " = ")) == 2:
            wanted = self.value(parts[1]) if parts[1].startswith("[") else f"shown({self.value(parts[1])})"
            action = f"{self.do}expect({name}, {wanted}, shown({self.call(parts[0])}))"
        else:
            action = f"{self.do}shown({self.call(step)})"
        if self.vb:
            return [action, f"Call done({name}, {self.text(failure)})"]
        return [f"done({name}, {self.text(failure)}, function () {{ {action}; }})"]

    def scenario(self, head: str, body: str) -> list[str]:
        lines = [self.new("o", head.split(":")[0])]
        for line in re.sub(r" ;\n\s*", " ; ", body).splitlines():
            for one in alternatives(line.strip()) if line.strip() and not line.strip().startswith("//") else []:
                for step in split(one, " ; "):
                    lines += self.step(step)
        return lines


def main() -> None:
    program = Path(sys.argv[1])
    program.parent.mkdir(exist_ok=True)
    script, lines = Script(program.suffix[1:]), [PRELUDE[program.suffix[1:]]]
    for file in sys.argv[2:]:
        for head, body in re.findall(r"^(\w.*)\n((?:(?: .*|//.*)?\n)*)", Path(file).read_text(encoding="utf-8"), re.M):
            try:
                lines += script.scenario(head, body)
            except Unplayable:
                continue
    end = 'If failures = 0 Then WScript.Echo "PASSED " & played' if script.vb else 'if (failures === 0) WScript.Echo("PASSED " + played);'
    program.write_text("\n".join([*lines, end, ""]), encoding="ascii")


main()
