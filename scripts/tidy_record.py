#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Remembers which sources clang-tidy has found nothing in, so that only what has changed is checked again.

A source counts as unchanged while it, every header of the project that it reaches and the clang-tidy
configuration are what they were: the record holds one digest of all of these a source.

  tidy_record.py changed FILE...   prints those of the sources that are not as recorded
  tidy_record.py write FILE...     records the sources as they are now, and no others
"""
import hashlib
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
RECORD = ROOT / "scripts" / "tidy-record.txt"
INCLUDE = re.compile(rb'^\s*#\s*include\s+"([^"]+)"', re.MULTILINE)


def included(name):
    """The files of the project that a file includes: by their path from its folder or from one above it."""
    folders = pathlib.PurePosixPath(name).parents
    for include in INCLUDE.findall((ROOT / name).read_bytes()):
        candidates = (folder / include.decode() for folder in folders)
        yield from (str(file) for file in candidates if (ROOT / file).is_file())


def reached(source):
    """The source and every file of the project that it includes, directly or not."""
    found, pending = set(), [source]
    while pending:
        name = pending.pop()
        if name not in found:
            found.add(name)
            pending += included(name)
    return sorted(found)


def configurations(source):
    """The configuration files that hold for the source."""
    folders = pathlib.PurePosixPath(source).parents
    return [str(folder / ".clang-tidy") for folder in folders if (ROOT / folder / ".clang-tidy").is_file()]


def digest(source):
    total = hashlib.sha256()
    for name in configurations(source) + reached(source):
        total.update(name.encode() + b"\0" + hashlib.sha256((ROOT / name).read_bytes()).digest())
    return total.hexdigest()[:32]


def recorded():
    if not RECORD.is_file():
        return {}
    lines = (line.split() for line in RECORD.read_text().splitlines())
    return {name: known for known, name in lines}


def main(arguments):
    if len(arguments) < 2 or arguments[1] not in ("changed", "write"):
        sys.exit(__doc__)
    sources = sorted(arguments[2:])
    if arguments[1] == "write":
        RECORD.write_text("".join(f"{digest(source)} {source}\n" for source in sources))
        return
    known = recorded()
    for source in sources:
        if known.get(source) != digest(source):
            print(source)


main(sys.argv)
