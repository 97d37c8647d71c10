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
START = {"vbs": '''here = CreateObject("Scripting.FileSystemObject").GetParentFolderName(WScript.ScriptFullName)
failures = 0: played = 0: got = "ok"
Function Shown(value)
    If IsArray(value) Then
        Shown = LBound(value) & ":"
        For Each item In value: Shown = Shown & item & ",": Next
    ElseIf IsObject(value) Then
        Shown = "object"
    Else
        Shown = TypeName(value) & " " & value
    End If
End Function
Sub Done(step, wanted)
    If Err.Number Then got = Left(Err.Number & " " & Err.Description, Len(wanted))
    If got <> wanted Then WScript.Echo "FAILED " & step & ": wanted " & wanted & ", got " & got: failures = failures + 1
    Err.Clear: got = "ok": played = played + 1
End Sub
On Error Resume Next
''', "js": '''var here = new ActiveXObject("Scripting.FileSystemObject").GetParentFolderName(WScript.ScriptFullName);
var failures = 0, played = 0;
function shown(value) { return typeof value === "object" && value ? "object" : typeof value + " " + value; }
function done(step, wanted, action) {
    var got;
    try { got = action(); } catch (error) { got = (error.number + " " + error.description).substr(0, wanted.length); }
    if (got !== wanted) WScript.Echo("FAILED " + step + ": wanted " + wanted + ", got " + got), failures++;
    played++;
}
'''}
END = {"vbs": 'If failures = 0 Then WScript.Echo "PASSED " & played\n', "js": 'if (failures === 0) WScript.Echo("PASSED " + played);\n'}


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
        if text in ("True", "False", "Empty", "Null"):
            return text if self.vb else {"Empty": "undefined"}.get(text, text.lower())
        if not re.fullmatch(r"&?[a-z]\w*" if self.vb else r"[a-z]\w*", text):  # only VBScript hands its variables over
            raise Unplayable(text)
        return "v_" + text.lstrip("&")

    def shown(self, text: str) -> str:
        if self.vb and (array := re.fullmatch(r"\[1: (.*)\]", text)):  # only members give arrays from 1
            return '"1:' + "".join(json.loads(item) + "," for item in split(array[1], ",")) + '"'
        return f"shown({self.value(text)})"

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
        (step, error), wanted = (split(step, " ! ") + [""])[:2], '"ok"'
        if told := re.match(r'(\w+)(?: "(.*?)")?', error):
            number = int(told[1], 0) | (0 if told[1].startswith("0x") else 0x800A0000)
            wanted = self.text(f"{int(told[1]) if self.vb and number >> 16 == 0x800A else number - (1 << 32)} {told[2] or ''}")
        call, put = (split(step.removeprefix("until "), " := ") + [""])[:2]
        call, given = (split(call, " = ") + [""])[:2]
        action = f"{self.call(call)} = {self.value(put)}" if put else f"{'got' if given else 'ignored'} = shown({self.call(call)})"
        wanted = self.shown(given) if given else wanted
        if step.startswith("until "):
            action = f"Do Until got = {wanted}: {action}: Loop" if self.vb else f"do {{ {action}; }} while (got !== {wanted})"
        if self.vb:
            return [action, f"Done {name}, {wanted}"]
        return [f'done({name}, {wanted}, function () {{ var got = "ok"; {action}; return got; }});']

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
    script, lines = Script(program.suffix[1:]), [START[program.suffix[1:]]]
    for file in sys.argv[2:]:
        for head, body in re.findall(r"^(\w.*)\n((?:(?: .*|//.*)?\n)*)", Path(file).read_text(encoding="utf-8"), re.M):
            try:
                lines += script.scenario(head, body)
            except Unplayable:
                continue
    program.write_text("\n".join([*lines, END[program.suffix[1:]]]), encoding="ascii")


main()
