#!/usr/bin/env python3
"""Stages what is delivered and describes it: package.py VERSION STAGE DOCS x86=BUILD x64=BUILD

DOCS holds the built reference: the pages (site/) and the compiled help file (help/).
STAGE/<name>/ receives the files, their checksums and their bill of materials (SPDX 2.3); STAGE/<name>.zip holds the same.
STAGE/files.nsh is the installer's list of them. Everything that varies between two runs (times, orders, folders) is fixed;
SOURCE_DATE_EPOCH is the date of all.
"""
import datetime
import hashlib
import json
import os
import re
import shutil
import subprocess
import sys
import uuid
import zipfile
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
EPOCH = int(os.environ["SOURCE_DATE_EPOCH"])
DATE = datetime.datetime.fromtimestamp(EPOCH, datetime.timezone.utc)

HELP, BILL, SUMS, PASCAL_UNIT = "VelkSupport.chm", "VelkSupport.spdx.json", "SHA256SUMS", "VelkSupport_TLB.pas"
AUTHORS, LICENCE = "The VelkSupport authors", "MIT"
COPYRIGHT = next(line for line in (ROOT / "LICENSE").read_text().splitlines() if line.startswith("Copyright"))
DOC = Path("/usr/share/doc")
LICENCES = {
    "mingw-w64.txt": DOC / "mingw-w64-common/copyright",
    "gcc.txt": DOC / "gcc-mingw-w64-base/copyright",
    "GPL-3.txt": Path("/usr/share/common-licenses/GPL-3"),
    "nsis.txt": DOC / "nsis/copyright",
    **{f"pages/{package}.txt": DOC / package / "copyright"
       for package in ("furo", "sphinx-common", "python3-sphinx-copybutton", "libjs-jquery", "libjs-underscore", "node-normalize.css")},
}
# What the toolchain links in: name, Debian package that knows the version, licence, where it comes from.
LINKED = [
    ("mingw-w64-runtime", "mingw-w64-common", "LicenseRef-mingw-w64-runtime", "https://www.mingw-w64.org/"),
    ("winpthreads", "mingw-w64-common", "MIT AND BSD-3-Clause", "https://www.mingw-w64.org/"),
    ("libgcc", "gcc-mingw-w64-base", "GPL-3.0-or-later WITH GCC-exception-3.1", "https://gcc.gnu.org/"),
    ("libstdc++", "gcc-mingw-w64-base", "GPL-3.0-or-later WITH GCC-exception-3.1", "https://gcc.gnu.org/"),
]
# Scripts and style sheets of the reference's pages.
PAGES = [
    ("Furo", "furo", "MIT", "https://github.com/pradyunsg/furo"),
    ("Sphinx", "sphinx-common", "BSD-2-Clause AND BSD-3-Clause AND MIT", "https://www.sphinx-doc.org/"),
    ("sphinx-copybutton", "python3-sphinx-copybutton", "MIT", "https://github.com/executablebooks/sphinx-copybutton"),
    ("jQuery", "libjs-jquery", "MIT", "https://jquery.com/"),
    ("Underscore", "libjs-underscore", "MIT", "https://underscorejs.org/"),
    ("normalize.css", "node-normalize.css", "MIT", "https://necolas.github.io/normalize.css/"),
]


def shipped(build):
    """The lines of the build's list: (kind, the library's assembly or "-", path)."""
    for line in (Path(build) / "shipped.txt").read_text().splitlines():
        kind, assembly, path = line.split(" ", 2)
        yield kind, assembly, Path(path)


def copy(source, target):
    target.parent.mkdir(parents=True, exist_ok=True)
    shutil.copyfile(source, target)


def stage_width(build, tree, width):
    for kind, assembly, path in shipped(build):
        if kind == "header":
            # The compiler's first line names the folder of the interface file.
            text = re.sub(r"from .*/(?=[\w.]+ - )", "from ", path.read_text(), count=1)
            header = tree / "include" / path.name
            if header.exists() and header.read_text() != text:
                sys.exit(f"{path.name} differs between the widths")
            header.parent.mkdir(exist_ok=True)
            header.write_text(text)
            continue
        copy(path, tree / width / path.name)
        if kind in ("library", "program"):
            subprocess.run([ROOT / "tools/packaging/sign", tree / width / path.name], check=True)
        if kind == "library":
            copy(Path(build) / "manifests" / f"{assembly}.manifest", tree / width / f"{assembly}.manifest")


def read_me(tree):
    """Its links lead to the pages as they are in the package; what is not in it is named only."""
    text = re.sub(r"\]\(docs/([\w/]+)\.md", r"](docs/\1.html", (ROOT / "README.md").read_text())
    for picture in re.findall(r"!\[[^]]*\]\((docs/images/[^)]+)\)", text):
        copy(ROOT / picture, tree / picture)
    return re.sub(r"\[([^]]*)\]\(([^):#]+)(#[^)]*)?\)", lambda m: m[0] if (tree / m[2]).exists() else m[1], text)


def stage(tree, docs, version, builds):
    for width, build in builds.items():
        stage_width(build, tree, width)
        # Where the registered type libraries say that it is.
        copy(docs / "help" / HELP, tree / width / HELP)
    copy(Path(builds["x86"]) / "pascal" / PASCAL_UNIT, tree / "include" / PASCAL_UNIT)
    shutil.copytree(docs / "site", tree / "docs", copy_function=shutil.copyfile,
                    ignore=shutil.ignore_patterns(".buildinfo", "objects.inv"))
    shutil.copytree(ROOT / "samples", tree / "samples", copy_function=shutil.copyfile)
    (tree / "README.md").write_text(read_me(tree))
    subprocess.run([ROOT / "tools/packaging/cmake_package", tree.resolve()], check=True)
    subprocess.run([ROOT / "tools/packaging/constants.py", tree / "include", version, *sorted(docs.glob("*.json"))], check=True)
    for name in ("CHANGELOG.md", "LICENSE"):
        copy(ROOT / name, tree / name)
    for name, source in LICENCES.items():
        copy(source, tree / "licences" / name)


def files_of(tree):
    return sorted((p for p in tree.rglob("*") if p.is_file()), key=lambda p: p.relative_to(tree).as_posix())


def checksum(path, algorithm):
    return hashlib.new(algorithm, path.read_bytes()).hexdigest()


def installed_version(package):
    query = ["dpkg-query", "-W", "-f=${Version}", package]
    return subprocess.run(query, check=True, capture_output=True, text=True).stdout


def identifier(name):
    return "SPDXRef-" + re.sub(r"[^A-Za-z0-9.-]", "-", name)


def licence_of(name):
    """Ours, but for the texts and style sheets that came from elsewhere."""
    if name.startswith(("licences/", "docs/_static/")):
        return "NOASSERTION"
    parts = [LICENCE] + [part for _, _, part, _ in LINKED if name.endswith((".dll", ".exe"))]
    return " AND ".join(f"({part})" if " " in part else part for part in dict.fromkeys(parts))


def spdx_file(tree, number, path):
    name = path.relative_to(tree).as_posix()
    kind = {".dll": "BINARY", ".exe": "BINARY", ".tlb": "BINARY", ".h": "SOURCE", ".c": "SOURCE", ".vbs": "SOURCE",
            ".js": "SOURCE", ".cpp": "SOURCE", ".pas": "SOURCE", ".bas": "SOURCE",
            ".md": "DOCUMENTATION", ".html": "DOCUMENTATION",
            ".chm": "DOCUMENTATION", ".svg": "IMAGE", ".png": "IMAGE"}.get(path.suffix, "TEXT")
    return {
        "SPDXID": identifier(f"File-{number}-{name}"),
        "fileName": f"./{name}",
        "fileTypes": [kind],
        "checksums": [{"algorithm": a, "checksumValue": checksum(path, a.lower())} for a in ("SHA1", "SHA256")],
        "licenseConcluded": licence_of(name),
        "licenseInfoInFiles": ["NOASSERTION"],
        "copyrightText": COPYRIGHT if licence_of(name).startswith(LICENCE) else "NOASSERTION",
    }


def spdx_package(name, version, licence, home, owner="NOASSERTION", **more):
    return {
        "SPDXID": identifier(f"Package-{name}"),
        "name": name,
        "versionInfo": version,
        "downloadLocation": home,
        "licenseConcluded": licence,
        "licenseDeclared": licence,
        "copyrightText": owner,
        **more,
    }


def bill_of_materials(tree, name, version):
    files = [spdx_file(tree, number, path) for number, path in enumerate(files_of(tree))]
    sums = sorted(f["checksums"][0]["checksumValue"] for f in files)
    code = hashlib.sha1("".join(sums).encode()).hexdigest()
    own = spdx_package("VelkSupport", version, LICENCE, "NOASSERTION", COPYRIGHT, primaryPackagePurpose="LIBRARY",
                       supplier=f"Organization: {AUTHORS}",
                       packageVerificationCode={"packageVerificationCodeValue": code,
                                                "packageVerificationCodeExcludedFiles": [f"./{BILL}", f"./{SUMS}"]},
                       licenseInfoFromFiles=["NOASSERTION"])
    linked, pages = ([spdx_package(part, installed_version(debian), licence, home, filesAnalyzed=False)
                      for part, debian, licence, home in parts] for parts in (LINKED, PAGES))
    binaries = [f for f in files if f["fileName"].endswith((".dll", ".exe"))]
    relations = [("SPDXRef-DOCUMENT", "DESCRIBES", own["SPDXID"])]
    relations += [(own["SPDXID"], "CONTAINS", f["SPDXID"]) for f in files]
    relations += [(f["SPDXID"], "STATIC_LINK", p["SPDXID"]) for f in binaries for p in linked]
    relations += [(own["SPDXID"], "CONTAINS", p["SPDXID"]) for p in pages]
    return {
        "spdxVersion": "SPDX-2.3",
        "dataLicense": "CC0-1.0",
        "SPDXID": "SPDXRef-DOCUMENT",
        "name": name,
        # An identifier that follows from the contents, so that two builds have the same.
        "documentNamespace": f"urn:uuid:{uuid.uuid5(uuid.NAMESPACE_OID, name + code)}",
        "creationInfo": {"created": DATE.strftime("%Y-%m-%dT%H:%M:%SZ"), "creators": ["Tool: VelkSupport-package.py"]},
        "packages": [own, *linked, *pages],
        "files": files,
        "hasExtractedLicensingInfos": [{
            "licenseId": "LicenseRef-mingw-w64-runtime",
            "name": "mingw-w64 runtime licences",
            "extractedText": (tree / "licences/mingw-w64.txt").read_text(),
        }],
        "relationships": [{"spdxElementId": a, "relationshipType": r, "relatedSpdxElement": b} for a, r, b in relations],
    }


def describe(tree, name, version):
    spdx = json.dumps(bill_of_materials(tree, name, version), indent=1, ensure_ascii=False) + "\n"
    (tree / BILL).write_text(spdx)
    lines = [f"{checksum(p, 'sha256')}  {p.relative_to(tree).as_posix()}\n" for p in files_of(tree)]
    (tree / SUMS).write_text("".join(lines))


def write_zip(tree, path):
    with zipfile.ZipFile(path, "w", zipfile.ZIP_DEFLATED, compresslevel=9) as archive:
        for file in files_of(tree):
            entry = zipfile.ZipInfo(f"{tree.name}/{file.relative_to(tree).as_posix()}", DATE.timetuple()[:6])
            entry.compress_type = zipfile.ZIP_DEFLATED
            entry.create_system = 3
            entry.external_attr = 0o100644 << 16
            archive.writestr(entry, file.read_bytes())


def installer_list(tree, path):
    """What the installer puts, where, and what the uninstaller takes away: those files and no others."""
    def windows(path, folder=""):
        return "\\".join([folder, *path.relative_to(tree).parts]).lstrip("\\")

    def macro(name, lines):
        return f"!macro {name}\n" + "".join(f"    {line}\n" for line in lines) + "!macroend\n"

    def each(command, files):
        """The 64-bit files exist on 64-bit systems only."""
        wide = [command(f) for f in files if windows(f).startswith("x64\\")]
        return [command(f) for f in files if not windows(f).startswith("x64\\")] + ["${If} ${RunningX64}", *wide, "${EndIf}"]

    files = files_of(tree)
    folders = sorted({tree / p for f in files for p in f.relative_to(tree).parents}, reverse=True)
    text = f'!define STAGED "{tree.name}"\n'
    text += macro("UnpackFiles TARGET", each(
        lambda f: f'SetOutPath "{windows(f.parent, "${TARGET}")}"\n    File "{f.relative_to(tree.parent)}"', files))
    text += macro("CallForEachFile FUNCTION", each(lambda f: f'StrCpy $File "{windows(f)}"\n    Call ${{FUNCTION}}', files))
    text += macro("DeleteFiles", [f'Delete "{windows(f, "$INSTDIR")}"' for f in files])
    text += macro("RemoveEmptyFolders", [f'RMDir "{windows(p, "$INSTDIR")}"' for p in folders])
    text += macro("ForEachLibrary DO", [f"!insertmacro ${{DO}} {p.name}" for p in sorted((tree / "x86").glob("*.dll"))])
    path.write_text(text)


def main():
    version, stage_folder, docs, *builds = sys.argv[1:]
    target = Path(stage_folder)
    shutil.rmtree(target, ignore_errors=True)
    name = f"VelkSupport-{version}"
    tree = target / name
    tree.mkdir(parents=True)
    stage(tree, Path(docs), version, dict(b.split("=", 1) for b in builds))
    describe(tree, name, version)
    write_zip(tree, target / f"{name}.zip")
    installer_list(tree, target / "files.nsh")


main()
