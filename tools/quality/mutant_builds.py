"""The builds in which mutants are tried: the plain units natively, the libraries under Wine."""

import json
import os
import re
import resource
import shlex
import subprocess
import sys
from dataclasses import dataclass
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
WORK = ROOT / "build" / "mutate"
NATIVE = WORK / "native"
OVERLAY = WORK / "overlay"
GTEST = WORK / "gtest_first.h"
MEMORY = 2 << 30
# Plain units whose tests are the classes' facts: tried with the libraries.
SEEN_BY_CLIENTS = {ROOT / "src/platform/run_time_error.cpp", ROOT / "src/platform/run_time_error.h"}
SUITE_SETTINGS = {"VELKSPRT_REPORTS": "debugger", "OANOCACHE": "1", "VELK_TIMEOUT": "60"}  # as CTest sets them, but the last


def run(*command: str, build: Path = NATIVE) -> str:
    return subprocess.run(command, cwd=build, check=True, capture_output=True, text=True).stdout


def quietly(command: list[str], seconds: int, build: Path = NATIVE, memory: int = MEMORY) -> bool:
    """Whether the command succeeds within so much processor time and its memory."""
    def limit() -> None:
        resource.setrlimit(resource.RLIMIT_AS, (memory, memory))
        resource.setrlimit(resource.RLIMIT_CPU, (seconds, seconds))

    try:
        return subprocess.run(command, cwd=build, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                              stderr=subprocess.DEVNULL, timeout=20 * seconds, preexec_fn=limit,
                              env=os.environ | SUITE_SETTINGS).returncode == 0
    except subprocess.TimeoutExpired:
        return False


class Unit:
    """A translation unit of a build: how it is compiled and what it includes."""

    def __init__(self, build: Path, entry: dict, included: dict[str, set[str]]) -> None:
        self.build = build
        self.source = Path(entry["file"])
        command = shlex.split(entry["command"])
        at = command.index("-o")
        self.object = command[at + 1]
        self.flags = [part for part in command[:at] if not part.startswith("-W") and "ccache" not in part]
        self.is_test = self.source.name.endswith("_test.cpp")
        self.includes = included.get(self.object, set()) | {str(self.source)}

    def compile(self, *options: str, to: str) -> bool:
        changed = OVERLAY / self.source.relative_to(ROOT)
        source = changed if changed.exists() else self.source
        first = ["-O0", "-include", str(GTEST)] if self.is_test else []
        flags = [self.flags[0], f"-I{OVERLAY / 'src'}", f"-I{OVERLAY}", *self.flags[1:], *first, *options, "-w"]
        return quietly([*flags, "-o", to, "-c", str(source)], 120, self.build)


def units_of(build: Path) -> list[Unit]:
    included: dict[str, set[str]] = {}
    for block in run("ninja", "-t", "deps", build=build).split("\n\n"):
        target, *files = block.strip().split("\n")
        included[target.split(":")[0]] = {str((build / file.strip()).resolve()) for file in files}
    return [Unit(build, entry, included) for entry in json.loads((build / "compile_commands.json").read_text())
            if "googletest" not in entry["file"] and entry["file"].endswith(".cpp")]


class PlainUnits:
    """The native build: a program for each test file."""

    what = "plain units"

    def __init__(self) -> None:
        run("cmake", "-S", str(ROOT), "-B", str(NATIVE), "-G", "Ninja", "-DCMAKE_BUILD_TYPE=", "-DCMAKE_CXX_FLAGS=-O1 -D_GLIBCXX_ASSERTIONS")
        run("ninja", "--quiet", "plain_tests")
        self.units = units_of(NATIVE)
        self.tests = [unit for unit in self.units if unit.is_test]
        # The test framework is read once: a header that every test sees first.
        GTEST.write_text("#include <gtest/gtest.h>\n")
        run(*self.tests[0].flags, "-O0", "-x", "c++-header", "-o", f"{GTEST}.gch", str(GTEST))

    def files(self) -> list[Path]:
        seen = {Path(file) for unit in self.units for file in unit.includes}
        return sorted(file for file in seen - SEEN_BY_CLIENTS
                      if file.is_relative_to(ROOT / "src") or file.is_relative_to(ROOT / "velksub"))

    def tests_of(self, file: Path) -> list[Unit]:
        header = file.with_suffix(".h")
        named = f'#include "{header.relative_to(ROOT / "src" if file.is_relative_to(ROOT / "src") else ROOT)}"'
        return [test for test in self.tests if named in test.source.read_text()] or \
            [test for test in self.tests if str(header) in test.includes] or \
            [test for test in self.tests if test.source.name.startswith(file.name.split("_")[0])]

    def passes(self, test: Unit, objects: dict[str, str]) -> bool:
        """Whether the test still passes with these objects in place of the library's own."""
        program = str(WORK / "mutant_test")
        own = [] if test.object in objects else [test.object]
        return quietly(["c++", "-o", program, *objects.values(), *own, "src/libvelk_plain.a", "lib/libgtest_main.a",
                        "lib/libgtest.a"], 60) and \
            quietly([program, "--gtest_brief=1", "--gtest_fail_fast"], 10)


@dataclass
class Room:
    """A folder of the libraries: the programs and libraries that hold it, and the suites that can notice a fault there."""

    targets: list[str]
    suites: list[str]


FRAME = Room(["VelkSprt", "frame_tests"], ["frame", "library", "registration:Registration", "facts:settings", "facts:containers",
                                           "facts:integrity", "facts:drawing", "facts:winhelpers",
                                           "facts:shell", "trust:*GetNull"])
ROOMS = {
    "src/containers": Room(["VelkSprt"], ["facts:containers", "trust:*GetNull"]),
    "src/drawing": Room(["VelkSprt"], ["facts:drawing", "drawing"]),
    "src/frame": FRAME,
    "src/integrity": Room(["VelkSprt"], ["facts:integrity"]),
    "src/platform": FRAME,
    "src/settings": Room(["VelkSprt"], ["facts:settings", "settings"]),
    "src/shell": Room(["VelkSprt"], ["facts:shell", "shell"]),
    "src/sysinfo": Room(["VelkSprt"], ["facts:sysinfo"]),
    "src/winhelpers/hooks": Room(["VelkSprt"], ["facts:winhelpers", "winhelpers", "library:Library.Stays"]),
    "src/winhelpers/menu": Room(["VelkSprt"], ["facts:winhelpers_cIconMenu", "icon_menu"]),
    "src/winhelpers/support": Room(["VelkSprt", "drawing_support_tests"], ["drawing_support", "icon_menu"]),
    "velksub": Room(["VelkSub"], ["velksub", "winhelpers"]),
}


def room_of(file: Path) -> str:
    name = str(file.relative_to(ROOT))
    return max((room for room in ROOMS if name.startswith(room + "/")), key=len, default="")


class Libraries:
    """A finished build for Windows, whose libraries and programs are linked anew with a mutant's objects. Needs Wine running."""

    what = "libraries"

    def __init__(self, build: Path) -> None:
        self.build = build
        self.units = [unit for unit in units_of(build) if not unit.is_test]
        for unit in self.units:
            unit.flags = ["-O1" if flag == "-O3" else flag for flag in unit.flags]  # a third of the time
        self.own: dict[Path, bytes] = {}

    def files(self) -> list[Path]:
        """Every file of the libraries with code of its own. A header that many include is left out: it takes too long."""
        native = {unit.source for unit in self.units if "velk_plain.dir" in unit.object} - SEEN_BY_CLIENTS
        seen: dict[Path, int] = {}
        for unit in self.units:
            for file in unit.includes:
                seen[Path(file)] = seen.get(Path(file), 0) + 1
        return sorted(file for file, times in seen.items()
                      if file.is_relative_to(ROOT) and file not in native and file.suffix in (".cpp", ".h") and
                      times <= 6 and room_of(file))

    def tests_of(self, file: Path) -> list[Room]:
        return [ROOMS[room_of(file)]]

    def output(self, target: str) -> Path:
        """As the build names it: the suites know the libraries by their paths."""
        return self.build / (f"tests/{target}.exe" if target.endswith("_tests") else f"{target}.dll")

    def link(self, target: str, objects: dict[str, str]) -> bool:
        """The mutant's objects count before those of the archives, and instead of the target's own."""
        last = run("ninja", "-t", "commands", target, build=self.build).strip().split("\n")[-1]
        command = shlex.split(last.removeprefix(": && ").removesuffix(" && :"))
        at = command.index("-o")
        rest = [part for part in command[at + 2:] if part not in objects]
        output = self.output(target)
        self.own.setdefault(output, output.read_bytes())
        output.unlink()
        return quietly([*command[:at], "-o", str(output), *objects.values(), *rest], 60, self.build)

    def suite_passes(self, suite: str) -> bool:
        """A name like facts:containers stands for the facts of that folder."""
        program, _, folder = suite.partition(":")
        return quietly([str(ROOT / "tools/wine_run"), str(self.output(f"{program}_tests")), "--gtest_brief=1", "--gtest_fail_fast",
                        f"--gtest_filter={folder}*"], 60, self.build, -1)

    def passes(self, room: Room, objects: dict[str, str]) -> bool:
        """Whether the room's suites still pass with these objects in place of the build's."""
        try:
            return all(self.link(target, objects) for target in room.targets if objects) and \
                all(self.suite_passes(suite) for suite in room.suites)
        finally:
            for path, content in self.own.items():
                path.write_bytes(content)
            self.own.clear()
