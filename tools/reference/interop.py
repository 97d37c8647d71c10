"""What the importers of other languages make of the type library, as far as their compilers need it: the assembly of C#'s, the smart
pointers that C++ imports, and for Python the objects that the factories give."""

import json
from pathlib import Path

CSHARP = {"SHORT": "short", "LONG": "int", "OLE_COLOR": "uint", "FLOAT": "float", "DOUBLE": "double", "BSTR": "string",
          "VARIANT_BOOL": "bool", "VARIANT": "object", "SAFEARRAY(BSTR)": "System.Array", "IFontDisp*": "object", "IPictureDisp*": "object"}
ATTRIBUTES = "[System.Runtime.InteropServices.ComImport, System.Runtime.InteropServices.Guid(\"{}\")]\n"
FACTORIES = {"comtypes/__init__.pyi": "", "comtypes/client.pyi": ["CreateObject"], "win32com/__init__.pyi": "",
             "win32com/client/__init__.pyi": ["Dispatch", "DispatchWithEvents"], "win32com/client/gencache.pyi": ["EnsureDispatch"]}


def read(library: Path) -> tuple[dict[str, dict], list[dict]]:
    types = json.loads(library.read_text(encoding="utf-8"))["types"]
    return {t["name"]: t for t in types}, [t for t in types if t["kind"] == "coclass"]


def by_reference(parameter: dict) -> bool:
    return "out" in parameter["flags"] and "retval" not in parameter["flags"]


def csharp_type(parameter: dict) -> str:
    raw = parameter["type"]
    pointed = "out" in parameter["flags"]
    raw = raw[:-1] if pointed else raw
    return CSHARP.get(raw, raw)


def csharp_arguments(parameters: list[dict]) -> str:
    given = [p for p in parameters if "retval" not in p["flags"]]
    return ", ".join(("ref " if by_reference(p) else "") + f"{csharp_type(p)} @{p['name'] or 'value'}" for p in given)


def csharp_members(members: list[dict]) -> str:
    """An accessor with arguments, or with a new value by reference, makes of both accessors methods."""
    text, properties = "", {}
    for m in members:
        properties.setdefault(m["name"], []).append(m)
    for name, accessors in properties.items():
        plain = all(m["kind"] != "method" and len(m["parameters"]) == 1 and not by_reference(m["parameters"][0]) for m in accessors)
        kinds = {"get": "get", "let": "set", "set": "set", "method": ""}
        if plain:
            ways = " ".join(f"{kinds[m['kind']]};" for m in accessors)
            text += f"    {csharp_type(accessors[0]['parameters'][0])} {name} {{ {ways} }}\n"
            continue
        seen = set()
        for m in accessors:
            results = [p for p in m["parameters"] if "retval" in p["flags"]]
            full = (kinds[m["kind"]] and kinds[m["kind"]] + "_") + name
            if full not in seen:
                text += f"    {csharp_type(results[0]) if results else 'void'} {full}({csharp_arguments(m['parameters'])});\n"
            seen.add(full)
    return text


def csharp(library: Path) -> str:
    types, classes = read(library)
    text = "namespace VelkSupport\n{\n"
    for t in types.values():
        if t["kind"] == "enum":
            text += f"public enum {t['name']} {{ {', '.join(dict.fromkeys(c['name'] for c in t['constants']))} }}\n"
        elif t["kind"] == "dispatch":
            text += ATTRIBUTES.format(t["guid"].strip("{}")) + f"public interface {t['name']}\n{{\n{csharp_members(t['members'])}}}\n"
    for c in classes:
        bases = []
        for way in c["implements"]:
            name = way["name"]
            if "source" in way["flags"]:
                events = types[name]["members"]
                text += "".join(f"public delegate void {name}_{e['name']}EventHandler({csharp_arguments(e['parameters'])});\n" for e in events)
                raised = " ".join(f"event {name}_{e['name']}EventHandler {e['name']};" for e in events)
                name += "_Event"
                text += f"public interface {name} {{ {raised} }}\n"
            bases.append(name)
        guid = ATTRIBUTES.format(c["guid"].strip("{}"))
        text += guid + f"public class {c['name']}Class {{}}\n"
        default = ATTRIBUTES.format(types[bases[0]]["guid"].strip("{}"))
        text += default + f"[System.Runtime.InteropServices.CoClass(typeof({c['name']}Class))]\npublic interface {c['name']} : {', '.join(bases)} {{}}\n"
    return text + "}\n"


CPP = {"SHORT": "short", "LONG": "long", "FLOAT": "float", "DOUBLE": "double", "SAFEARRAY(BSTR)": "SAFEARRAY*"}


def cpp_type(parameter: dict, result: bool = False) -> str:
    """Single texts and values of any kind are wrapped; what is passed by reference is as it comes."""
    raw = parameter["type"][:-1] if result else parameter["type"]
    stars = len(raw) - len(raw.rstrip("*"))
    name = CPP.get(raw.rstrip("*"), raw.rstrip("*"))
    wrapped = {"BSTR": "_bstr_t", "VARIANT": "_variant_t" if result else "const _variant_t&"}
    return name + "*" * stars if stars else wrapped.get(name, name)


def cpp_members(members: list[dict]) -> str:
    text, ways = "", {}
    prefixes = {"get": "Get", "let": "Put", "set": "PutRef", "method": ""}
    for m in members:
        given = [p for p in m["parameters"] if "retval" not in p["flags"]]
        results = [p for p in m["parameters"] if "retval" in p["flags"]]
        name = prefixes[m["kind"]] + m["name"]
        kind = cpp_type(results[0], True) if results else "HRESULT" if m["kind"] == "method" else "void"
        text += f"    {kind} {name}({', '.join(cpp_type(p) + ' ' + (p['name'] or 'value') for p in given)});\n"
        if m["kind"] != "method" and len(m["parameters"]) == 1:
            ways.setdefault(m["name"], {})[m["kind"]] = (cpp_type(m["parameters"][0], bool(results)), name)
    for name, found in ways.items():
        if "get" in found:
            put = ", put=" + found["let"][1] if "let" in found else ""
            text += f"    __declspec(property(get={found['get'][1]}{put})) {found['get'][0]} {name};\n"
    return text


def cpp(library: Path) -> str:
    """Declared only: nothing links to it."""
    types, classes = read(library)
    text = ""
    for t in types.values():
        if t["kind"] == "enum":
            text += f"enum {t['name']} {{ {', '.join(c['name'] for c in t['constants'])} }};\n"
        elif t["kind"] == "dispatch":
            declared = f'struct __declspec(uuid("{t["guid"].strip("{}")}")) {t["name"]}'
            text += f"{declared};\n_COM_SMARTPTR_TYPEDEF({t['name']}, __uuidof({t['name']}));\n"
            text += f"{declared} : IDispatch\n{{\n{cpp_members(t['members'])}}};\n"
    return text + "".join(f'struct __declspec(uuid("{c["guid"].strip("{}")}")) {c["name"]};\n' for c in classes)


def python_class(name: str, members: list[dict]) -> str:
    lines = []
    for m in {m["name"]: m for m in members}.values():
        arguments = sum("retval" not in p["flags"] for p in m["parameters"]) - (m["kind"] in ("let", "set"))
        if m["kind"] == "method" or arguments:
            given = "".join(f", {p['name'] or 'value'}: Any" for p in m["parameters"] if "retval" not in p["flags"])
            lines.append(f"    def {m['name']}(self{given}) -> Any: ...")
        else:
            lines.append(f"    {m['name']}: Any")
    return f"class {name}:\n" + "\n".join(lines) + "\n"


def python(library: Path) -> dict[str, str]:
    """Stub files: a factory gives an object of the class whose program identifier it is called with."""
    types, classes = read(library)
    files = {"velk.pyi": "from typing import Any\n" + "".join(python_class(c["name"], types[c["implements"][0]["name"]]["members"]) for c in classes)}
    for file, factories in FACTORIES.items():
        text = "from typing import Any, Literal, overload\nimport velk\n" if factories else ""
        for factory in factories:
            rest = ", events: type" if "Events" in factory else ""
            text += "".join(f"@overload\ndef {factory}(name: Literal['VelkSupport.{c['name']}']{rest}) -> velk.{c['name']}: ...\n" for c in classes)
        files[file] = text + ("def GetEvents(source: object, sink: object) -> object: ...\n" if "CreateObject" in factories else "")
    files["win32com/client/__init__.pyi"] += "from win32com.client import gencache as gencache\n"
    files["pywintypes.pyi"] = "class com_error(Exception): ...\n"
    return files
