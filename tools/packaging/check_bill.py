#!/usr/bin/python3
"""Checks a bill of materials (SPDX 2.3) against the files that it lists: check_bill.py FOLDER/VelkSupport.spdx.json

Each licence has to be an expression of SPDX, each reference has to lead to something that is described, each checksum has to be
right, and no file may be missing. The official validator, pyspdxtools, reads it too where it is installed (it is in no release of
Debian's that is built on: pip install spdx-tools); a run of the workflow has to have it.
"""
import hashlib
import json
import os
import shutil
import subprocess
import sys
from pathlib import Path

from license_expression import get_spdx_licensing


def problems(path):
    bill = json.loads(path.read_text(encoding="utf-8"))
    own = {each["licenseId"] for each in bill["hasExtractedLicensingInfos"]}
    for each in bill["packages"] + bill["files"]:
        name = each.get("fileName", each.get("name"))
        for licence in {each["licenseConcluded"], each.get("licenseDeclared", "NOASSERTION")} - {"NOASSERTION"}:
            found = get_spdx_licensing().validate(licence)
            if set(found.invalid_symbols) - own:
                yield f"{name}: {licence}: {'; '.join(found.errors)}"
    known = {bill["SPDXID"], *(each["SPDXID"] for each in bill["packages"] + bill["files"])}
    if len(known) != 1 + len(bill["packages"] + bill["files"]):
        yield "an identifier is used twice"
    for relation in bill["relationships"]:
        yield from (f"{end} is not described" for end in (relation["spdxElementId"], relation["relatedSpdxElement"]) if end not in known)
    for each in bill["files"]:
        content = (path.parent / each["fileName"]).read_bytes()
        for checksum in each["checksums"]:
            if hashlib.new(checksum["algorithm"], content).hexdigest() != checksum["checksumValue"]:
                yield f"{each['fileName']}: another {checksum['algorithm']}"
    listed = {each["fileName"][2:] for each in bill["files"]} | {path.name, "SHA256SUMS"}
    there = {p.relative_to(path.parent).as_posix() for p in path.parent.rglob("*") if p.is_file()}
    yield from (f"{name} is not listed" for name in there ^ listed)


def main():
    path = Path(sys.argv[1])
    found = list(problems(path))
    official = shutil.which("pyspdxtools")
    if official:
        found += [] if subprocess.run([official, "-i", path]).returncode == 0 else ["pyspdxtools refuses it"]
    elif os.environ.get("CI"):
        found.append("pyspdxtools is not installed")
    print("\n".join(found) or f"PASSED: the bill of materials{'' if official else ' (without pyspdxtools)'}")
    return 1 if found else 0


sys.exit(main())
