#!/usr/bin/env python3
"""Gives the constants of a type library their help texts, and its members their places in the help file: help_texts.py LIBRARY.tlb TEXTS

The interface compiler takes no attributes on constants. TEXTS has a line for each: its name, or a pattern of shell style for names
that differ in their prefix, and its text. A member's help context is that of its class, or of its interface where that has one, times 100, plus its dispatch
identifier; an event's is 50 more.

The file's format is that of Microsoft's linker of type libraries ("MSFT"), as Wine's loader documents it: a header, a table of
types, a directory of segments, the segments, and for each type a block with the records of its functions and constants.
"""

import sys
from fnmatch import fnmatchcase
from pathlib import Path
from struct import pack, pack_into, unpack_from

HEADER, TYPE, SEGMENT, SEGMENTS = 0x54, 0x64, 0x10, 15
TYPES, REFERENCES, NAMES, STRINGS = 0, 3, 7, 8
COCLASS, ENUM = 5, 0
FUNCTION, CONSTANT = 0x18, 0x14  # sizes of the records' parts that are always there
SOURCE = 2


def word(data, place):
    return unpack_from("<i", data, place)[0]


class Library:
    def __init__(self, data):
        self.data = data
        self.count = word(data, 0x20)
        self.directory = HEADER + (4 if word(data, 0x14) & 0x100 else 0) + 4 * self.count
        self.segments = [list(unpack_from("<2i", data, self.directory + SEGMENT * i)) for i in range(SEGMENTS)]

    def segment(self, number):
        place, size = self.segments[number]
        return self.data[place:place + size] if size > 0 else b""

    def type_at(self, index):
        return self.segments[TYPES][0] + TYPE * index

    def name(self, offset):
        place = self.segments[NAMES][0] + offset
        return self.data[place + 12:place + 12 + self.data[place + 8]].decode("cp1252")

    def block(self, index):
        """Place and size of a type's records, and how many functions and constants there are."""
        place = word(self.data, self.type_at(index) + 4)
        counts = word(self.data, self.type_at(index) + 0x18)
        functions, constants = counts & 0xFFFF, counts >> 16
        size = word(self.data, place) if functions + constants else 0
        return place, size, functions, constants

    def implemented(self, index):
        """The types that a class implements, and whether each is of events."""
        reference = word(self.data, self.type_at(index) + 0x54)
        while reference >= 0:
            href, flags, _, following = unpack_from("<4i", self.data, self.segments[REFERENCES][0] + reference)
            if not href & 3:
                yield href // TYPE, bool(flags & SOURCE)
            reference = following


def give_contexts(library):
    for index in range(library.count):
        place = library.type_at(index)
        own = word(library.data, place + 0x44)
        if word(library.data, place) & 0xF != COCLASS:
            if own:
                give_contexts_to(library, index, own * 100)
            continue
        for member, is_source in library.implemented(index):
            give_contexts_to(library, member, own * 100 + (50 if is_source else 0))


def give_contexts_to(library, index, base):
    place, size, functions, constants = library.block(index)
    for i in range(functions):
        identifier = word(library.data, place + 4 + size + 4 * i)
        record = place + 4 + word(library.data, place + 4 + size + 4 * (2 * (functions + constants) + i))
        length, arguments = word(library.data, record) & 0xFFFF, word(library.data, record + 0x14) & 0xFFFF
        has_defaults = word(library.data, record + 0x10) & 0x1000
        if length > FUNCTION + (16 if has_defaults else 12) * arguments:  # only the first accessor of a property has a text, and so the place
            pack_into("<i", library.data, record + FUNCTION, base + identifier)


def text_of(texts, name):
    found = [text for pattern, text in texts if fnmatchcase(name, pattern)]
    if len(found) != 1:
        sys.exit(f"help_texts: {len(found)} texts for the constant {name}")
    return found[0]


def with_texts(library, index, strings, texts):
    """The block of an enumeration's records, each with a help text."""
    place, size, functions, constants = library.block(index)
    tail = library.data[place + 4 + size:place + 4 + size + 12 * constants]
    records, starts = b"", []
    for i in range(constants):
        record = place + 4 + word(tail, 8 * constants + 4 * i)
        text = text_of(texts, library.name(word(tail, 4 * constants + 4 * i))).encode("cp1252")
        starts.append(len(records))
        info = word(library.data, record) & ~0xFFFF | CONSTANT + 8
        records += pack("<i", info) + library.data[record + 4:record + CONSTANT] + pack("<2i", 0, len(strings))
        strings += pack("<h", len(text)) + text
        strings += b"W" * (-len(strings) % 4)
    return pack("<i", len(records)) + records + tail[:8 * constants] + pack(f"<{constants}i", *starts)


def laid_out(library, blocks, strings):
    """All parts in the order in which they were, one behind the other."""
    parts = [(place, "segment", number) for number, (place, size) in enumerate(library.segments) if size > 0]
    for index in range(library.count):
        place, size, functions, constants = library.block(index)
        if functions + constants:
            parts.append((place, "type", index))
    made = library.data[:min(place for place, *_ in parts)]
    for place, kind, number in sorted(parts):
        if kind == "segment":
            content = bytes(strings) if number == STRINGS else library.segment(number)
            pack_into("<2i", made, library.directory + SEGMENT * number, len(made), len(content))
            if number == TYPES:
                types = len(made)
        else:
            _, size, functions, constants = library.block(number)
            content = blocks.get(number) or library.data[place:place + 4 + size + 12 * (functions + constants)]
            pack_into("<i", made, types + TYPE * number + 4, len(made))
        made += content
    return made


def main():
    path, table = map(Path, sys.argv[1:])
    texts = [line.split(None, 1) for line in table.read_text(encoding="utf-8").splitlines() if line and not line.startswith("#")]
    library = Library(bytearray(path.read_bytes()))
    give_contexts(library)
    strings, blocks = bytearray(library.segment(STRINGS)), {}
    for index in range(library.count):
        if word(library.data, library.type_at(index)) & 0xF == ENUM:
            blocks[index] = with_texts(library, index, strings, texts)
    path.write_bytes(laid_out(library, blocks, strings))


main()
