#!/usr/bin/env python3
"""Makes a sealed parameter file from a list of entries, or checks one.

seal_dat.py INPUT OUTPUT   INPUT holds name=value lines in UTF-8; empty lines are skipped
seal_dat.py --check FILE   FILE is a sealed file (Windows-1252, lines ended by CR LF)
"""

import argparse
import sys
import zlib
from pathlib import Path

BEGIN, END, SEAL = "[BEGIN]", "[END]", "@CRC"

# Windows reads the five bytes that the code page leaves undefined as the control characters of the same number.
CODE_PAGE = [bytes([byte]).decode("cp1252", "ignore") or chr(byte) for byte in range(256)]


class Refused(Exception):
    """What is wrong with the input, in one line."""


def sealed_region(text: str) -> str:
    begin = text.find(BEGIN)
    if begin < 0:
        raise Refused(f"no {BEGIN}")
    # The end's position, counted from 1, serves as a length; without an end it is 0.
    return text[begin : begin + text.rfind(END) + 1]


def seal(text: str) -> int:
    unsigned = zlib.crc32(sealed_region(text).encode("utf-16-le"))
    return unsigned - (1 << 32) if unsigned >> 31 else unsigned


def check_entry(line: str) -> None:
    if line.count("=") != 1:
        raise Refused("not of the form name=value with a single '='")
    for word in (BEGIN, END, SEAL):
        if word in line:
            raise Refused(f"{word} is reserved")
    try:
        line.encode("cp1252")
    except UnicodeEncodeError as error:
        character = line[error.start]
        raise Refused(f"{character!a} (U+{ord(character):04X}) is not in Windows-1252") from None


def read_entries(source: str) -> list[str]:
    entries: list[str] = []
    line_of: dict[str, int] = {}
    for number, line in enumerate(source.split("\n"), 1):
        line = line.removesuffix("\r")
        if not line:
            continue
        try:
            check_entry(line)
            first = line_of.setdefault(line.partition("=")[0], number)
            if first != number:
                raise Refused(f"the same name as in line {first}")
        except Refused as reason:
            raise Refused(f"line {number}: {reason}") from None
        entries.append(line)
    return entries


def sealed_file(entries: list[str]) -> bytes:
    text = "".join(line + "\r\n" for line in [BEGIN, *entries, END])
    return f"{text}{SEAL}={seal(text)}\r\n".encode("cp1252")


def values_by_key(text: str) -> dict[str, str]:
    values: dict[str, str] = {}
    for line in text.split("\r\n"):
        if "=" not in line:
            continue
        key, value = line.split("=")[:2]
        if key in values:
            raise Refused(f"{key!a} occurs twice")
        values[key] = value
    return values


def check(data: bytes) -> None:
    text = "".join(CODE_PAGE[byte] for byte in data)
    stored, computed = values_by_key(text).get(SEAL), str(seal(text))
    if stored is None:
        raise Refused(f"no {SEAL} entry")
    if stored != computed:
        raise Refused(f"seal broken: {SEAL} is {stored!a}, the region gives {computed}")


def run(arguments: argparse.Namespace) -> None:
    if arguments.check:
        check(Path(arguments.check).read_bytes())
    else:
        source = Path(arguments.input).read_bytes().decode("utf-8-sig")
        Path(arguments.output).write_bytes(sealed_file(read_entries(source)))


def parse_arguments() -> argparse.Namespace:
    parser = argparse.ArgumentParser(description="Makes or checks a sealed parameter file.")
    parser.add_argument("--check", metavar="FILE", help="check the seal of FILE")
    parser.add_argument("input", nargs="?", metavar="INPUT", help="name=value lines in UTF-8")
    parser.add_argument("output", nargs="?", metavar="OUTPUT", help="the sealed file to write")
    arguments = parser.parse_args()
    if bool(arguments.check) == bool(arguments.output) or (arguments.check and arguments.input):
        parser.error("give either INPUT and OUTPUT, or --check FILE")
    return arguments


def main() -> int:
    arguments = parse_arguments()
    try:
        run(arguments)
    except Refused as reason:
        print(f"{arguments.check or arguments.input}: {reason}", file=sys.stderr)
    except UnicodeDecodeError as error:
        print(f"{arguments.input}: not UTF-8 at byte {error.start}", file=sys.stderr)
    except OSError as error:
        print(f"{error.filename}: {error.strerror}", file=sys.stderr)
    else:
        return 0
    return 1


if __name__ == "__main__":
    sys.exit(main())
