#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""check_dependencies.py ROOT FLOORS: whether each folder declares what it includes, and includes what it declares.

FLOORS has a line for each target: name|folder or header|sources|DEPENDS|THROUGH, lists with commas. What its own files
include are its DEPENDS; what the headers of those include in turn, and it does not, is its THROUGH. Shows first, on
floors of its own, that it would notice each way to be wrong.
"""
import pathlib
import re
import sys
import tempfile
from typing import NamedTuple

INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"', re.MULTILINE)


class Floor(NamedTuple):
    target: str
    place: str
    sources: list
    depends: set
    through: set


def read_floors(text):
    floors = []
    for line in text.splitlines():
        target, place, sources, depends, through = line.split("|")
        names = [[name for name in part.split(",") if name] for part in (sources, depends, through)]
        floors.append(Floor(target, place, names[0], set(names[1]), set(names[2])))
    return floors


class Project:
    def __init__(self, root, floors):
        self.root = pathlib.Path(root).resolve()
        self.floors = floors
        self.included = {}

    def includes(self, file):
        if file not in self.included:
            path = self.root / file
            self.included[file] = INCLUDE.findall(path.read_text("utf-8")) if path.is_file() else []
        return self.included[file]

    def owner(self, header):
        """The target whose place is the nearest above the header, or None."""
        places = [f for f in self.floors if header == f.place or header.startswith(f.place + "/")]
        return max(places, key=lambda f: len(f.place)).target if places else None

    def own_files(self, floor):
        place = self.root / floor.place
        headers = [place] if place.is_file() else place.rglob("*.h")
        files = [str(h.relative_to(self.root)) for h in headers]
        files = [h for h in files if self.owner(h) == floor.target]
        return files + [str(pathlib.Path(s).resolve().relative_to(self.root)) for s in floor.sources]

    def reached(self, files, target):
        """The targets that the files include, and all that they include in turn."""
        direct = {self.owner(header) for file in files for header in self.includes(file)}
        seen, waiting = set(), list(files)
        while waiting:
            for header in self.includes(waiting.pop()):
                if header not in seen:
                    seen.add(header)
                    waiting.append(header)
        nobodys = {None, target}
        return direct - nobodys, {self.owner(header) for header in seen} - direct - nobodys

    def complaints(self):
        for floor in self.floors:
            direct, through = self.reached(self.own_files(floor), floor.target)
            for kind, declared, used in (("DEPENDS", floor.depends, direct), ("THROUGH", floor.through, through)):
                for name in sorted(used - declared):
                    yield f"{floor.target}: {name} is used, and missing in {kind}"
                for name in sorted(declared - used):
                    yield f"{floor.target}: {name} stands in {kind}, and is not used so"


def prove():
    """Three floors, right and then wrong in each way."""
    right = {"top": ({"middle"}, {"base"}), "middle": ({"base"}, set()), "base": (set(), set())}
    wrong = {
        "top: middle is used, and missing in DEPENDS": {"top": (set(), {"base"})},
        "top: base is used, and missing in THROUGH": {"top": ({"middle"}, set())},
        "middle: top stands in DEPENDS, and is not used so": {"middle": ({"base", "top"}, set())},
        "base: top stands in THROUGH, and is not used so": {"base": (set(), {"top"})},
    }
    files = {
        "top/a.cpp": '#include "middle/m.h"\n',
        "middle/m.h": '#include <string>\n#include "base/b.h"\n',
        "base/b.h": "",
    }
    with tempfile.TemporaryDirectory() as root:
        for name, text in files.items():
            path = pathlib.Path(root, name)
            path.parent.mkdir(exist_ok=True)
            path.write_text(text, "utf-8")

        def said_of(declared):
            sources = {"top": [f"{root}/top/a.cpp"]}
            floors = [Floor(t, t, sources.get(t, []), *declared[t]) for t in right]
            return list(Project(root, floors).complaints())

        assert said_of(right) == [], said_of(right)
        for complaint, change in wrong.items():
            assert said_of({**right, **change}) == [complaint], (complaint, said_of({**right, **change}))


def main():
    prove()
    root, floors = sys.argv[1:]
    project = Project(root, read_floors(pathlib.Path(floors).read_text("utf-8")))
    complaints = list(project.complaints())
    print("\n".join(complaints) or f"{len(project.floors)} targets declare what they include")
    return 1 if complaints else 0


sys.exit(main())
