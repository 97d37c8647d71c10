#!/usr/bin/env python3
"""What the places want from which developers get libraries: channels.py VERSION STAGE HOME

STAGE holds the staged package, its zip and its installer. STAGE/channels receives a NuGet package, a vcpkg port, and manifests for
winget and Chocolatey, all made from templates in tools/packaging/channels. The files are looked for at HOME/releases/VERSION.
"""
import hashlib
import os
import sys
import time
import zipfile
from pathlib import Path
from string import Template

TEMPLATES = Path(__file__).resolve().parent / "channels"
DATE = time.gmtime(int(os.environ["SOURCE_DATE_EPOCH"]))


def nuget_files(tree):
    """Path in the package and bytes: headers, libraries, descriptions and what a project imports."""
    wanted = {"include": ["*"], "x86": ["*.dll", "*.manifest", "*.tlb"], "x64": ["*.dll", "*.manifest", "*.tlb"]}
    for folder, patterns in wanted.items():
        for path in sorted(p for pattern in patterns for p in (tree / folder).glob(pattern)):
            yield f"build/native/{folder}/{path.name}", path.read_bytes()
    yield "LICENSE", (tree / "LICENSE").read_bytes()


def write_nuget(tree, target, values):
    """A package is a zip with two descriptions of its parts, which packing programs add."""
    files = dict(nuget_files(tree))
    for name in ("VelkSupport.nuspec", "build/native/VelkSupport.targets", "_rels/.rels", "[Content_Types].xml"):
        files[name] = Template((TEMPLATES / "nuget" / Path(name).name.replace("[", "").replace("]", "").lstrip("."))
                               .read_text()).substitute(values).encode()
    with zipfile.ZipFile(target / f"VelkSupport.{values['version']}.nupkg", "w", zipfile.ZIP_DEFLATED) as package:
        for name, content in sorted(files.items()):
            package.writestr(zipfile.ZipInfo(name, DATE[:6]), content, zipfile.ZIP_DEFLATED)


def main():
    version, stage, home = sys.argv[1:]
    stage = Path(stage)
    archive, setup = (stage / f"VelkSupport-{version}{end}" for end in (".zip", "-setup.exe"))
    values = {"version": version, "home": home, "releases": f"{home}/releases/{version}", "zip": archive.name, "setup": setup.name,
              "setup_sha256": hashlib.sha256(setup.read_bytes()).hexdigest().upper(),
              "zip_sha512": hashlib.sha512(archive.read_bytes()).hexdigest(), "date": time.strftime("%Y-%m-%d", DATE)}
    target = stage / "channels"
    for template in sorted(p for p in TEMPLATES.rglob("*") if p.is_file() and p.parent.name != "nuget"):
        text = Template(template.read_text()).substitute(values)
        made = target / template.relative_to(TEMPLATES)
        made.parent.mkdir(parents=True, exist_ok=True)
        made.write_text(text)
    write_nuget(stage / f"VelkSupport-{version}", target, values)


main()
