"""A type library, as tools/typelib/typelib_json.cpp wrote it, in the terms of those who write scripts and Basic."""

import json
import re
from dataclasses import dataclass
from pathlib import Path

BASIC_TYPES = {
    "SHORT": "Integer", "LONG": "Long", "FLOAT": "Single", "DOUBLE": "Double", "CURRENCY": "Currency", "DATE": "Date",
    "BSTR": "String", "VARIANT_BOOL": "Boolean", "VARIANT": "Variant", "BYTE": "Byte", "INT": "Long",
    "IDispatch": "Object", "IDispatch*": "Object", "IUnknown*": "Object",
}


class Incomplete(Exception):
    """Something that a reader would miss, in one line."""


def basic_type(raw: str) -> str:
    array = re.fullmatch(r"SAFEARRAY\((.*)\)", raw.rstrip("*"))
    if array:
        return basic_type(array[1]) + "()"
    return BASIC_TYPES.get(raw) or BASIC_TYPES.get(raw.rstrip("*")) or raw.rstrip("*").lstrip("_")


@dataclass
class Argument:
    name: str
    type: str
    by_reference: bool
    optional: bool
    default: str | None

    @classmethod
    def read(cls, raw: dict) -> "Argument":
        optional = "optional" in raw["flags"]
        type_ = basic_type(raw["type"])
        default = raw.get("default")
        if type_ == "Boolean" and default is not None:
            default = "False" if default in ("0", "False") else "True"
        pointer = raw["type"].endswith("*") and raw["type"] not in ("IDispatch*", "IUnknown*")
        return cls(raw["name"], type_, pointer and "out" in raw["flags"], optional, default)

    def in_signature(self) -> str:
        default = f" = {self.default}" if self.default is not None else ""
        return f"[{self.name}{default}]" if self.optional else self.name


@dataclass
class Accessor:
    """A method, or one way into a property."""

    kind: str
    slot: int | None
    help: str
    context: int
    arguments: list[Argument]
    result: str | None

    @classmethod
    def read(cls, raw: dict) -> "Accessor":
        arguments = [p for p in raw["parameters"] if "retval" not in p["flags"]]
        results = [basic_type(p["type"][:-1]) for p in raw["parameters"] if "retval" in p["flags"]]
        return cls(raw["kind"], raw.get("slot"), raw["help"], raw["context"], [Argument.read(p) for p in arguments],
                   results[0] if results else None)


@dataclass
class Member:
    name: str
    id: int
    accessors: list[Accessor]

    @property
    def is_property(self) -> bool:
        return self.accessors[0].kind != "method"

    @property
    def type(self) -> str | None:
        """What a method gives, or what a property holds."""
        for accessor in self.accessors:
            if accessor.result:
                return accessor.result
        return self.accessors[0].arguments[-1].type if self.is_property else None

    @property
    def arguments(self) -> list[Argument]:
        first = self.accessors[0]
        return first.arguments[:-1] if first.kind in ("let", "set") else first.arguments

    @property
    def help(self) -> str:
        """A type library gives one text for all accessors of a property."""
        return self.accessors[0].help

    @property
    def context(self) -> int:
        return self.accessors[0].context

    @property
    def signature(self) -> str:
        arguments = ", ".join(a.in_signature() for a in self.arguments)
        if self.is_property:
            return self.name + (f"({arguments})" if arguments else "")
        return f"{self.name}({arguments})"

    @property
    def access(self) -> str:
        if not self.is_property:
            return "method"
        kinds = [a.kind for a in self.accessors]
        return "property, " + ", ".join(k for k in ("get", "let", "set") if k in kinds)


def members_of(interface: dict) -> list[Member]:
    members: dict[int, Member] = {}
    for raw in interface["members"]:
        accessor = Accessor.read(raw)
        if not accessor.help.strip():
            raise Incomplete(f"{interface['name']}.{raw['name']} has no help text")
        if not accessor.context:
            raise Incomplete(f"{interface['name']}.{raw['name']} has no place in the help file")
        members.setdefault(raw["id"], Member(raw["name"], raw["id"], [])).accessors.append(accessor)
    return list(members.values())


@dataclass
class Enumeration:
    name: str
    help: str
    constants: list[tuple[str, int, str]]  # name, value, what it means

    @property
    def is_errors(self) -> bool:
        return self.name.startswith("EErr")


@dataclass
class Class:
    name: str
    help: str
    context: int
    class_id: str
    interface_id: str
    program_id: str | None
    members: list[Member]
    events: list[Member]
    events_id: str | None

    def uses(self, enumeration: Enumeration) -> bool:
        if enumeration.is_errors:
            return enumeration.name in ("EErr" + self.name, "EErr" + self.name[1:])
        if any(enumeration.name in m.help for m in self.members):
            return True
        types = {m.type for m in self.members}
        types.update(a.type for m in self.members for a in m.arguments)
        return enumeration.name in types or f"{self.name}." in enumeration.help


class TypeLibrary:
    def __init__(self, path: Path):
        raw = json.loads(path.read_text(encoding="utf-8"))
        self.name, self.help, self.guid, self.version = raw["name"], raw["help"], raw["guid"], raw["version"]
        types = {t["name"]: t for t in raw["types"]}
        self.enumerations = [
            Enumeration(t["name"], t["help"], [(c["name"], int(c["value"]), c["help"]) for c in t["constants"]])
            for t in raw["types"] if t["kind"] == "enum"]
        for enumeration in self.enumerations:
            for name, _, text in enumeration.constants:
                if not text.strip():
                    raise Incomplete(f"the constant {name} has no help text")
        self.names = {(e.name, value): name for e in self.enumerations for name, value, _ in reversed(e.constants)}
        self.classes = [self._class(t, types) for t in raw["types"] if t["kind"] == "coclass"]
        named = {i["name"] for t in raw["types"] if t["kind"] == "coclass" for i in t["implements"]}
        self.interfaces = [self._interface(t) for t in raw["types"]
                           if t["kind"] in ("interface", "dispatch") and t["name"] not in named]

    def _members(self, interface: dict) -> list[Member]:
        """The members; a default that is an enumeration's value is called by its name."""
        members = members_of(interface)
        for argument in (a for m in members for accessor in m.accessors for a in accessor.arguments):
            if argument.default is not None and argument.default.lstrip("-").isdigit():
                argument.default = self.names.get((argument.type, int(argument.default)), argument.default)
        return members

    def _class(self, raw: dict, types: dict) -> Class:
        if not raw["help"].strip():
            raise Incomplete(f"{raw['name']} has no help text")
        face = next(types[i["name"]] for i in raw["implements"] if "source" not in i["flags"])
        source = next((types[i["name"]] for i in raw["implements"] if "source" in i["flags"]), None)
        return Class(raw["name"], raw["help"], raw["context"], raw["guid"], face["guid"], f"{self.name}.{raw['name']}",
                     self._members(face), self._members(source) if source else [], source["guid"] if source else None)

    def _interface(self, raw: dict) -> Class:
        return Class(raw["name"], raw["help"], raw["context"], "", raw["guid"], None, self._members(raw), [], None)
