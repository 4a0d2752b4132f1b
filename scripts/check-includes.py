#!/usr/bin/env python3
"""Looks at what the sources include: no folder may reach itself by way of another one, and only platform/ and the tests
may know a system's backend. Prints what is wrong; the exit status is 1 then.

    check-includes.py [PROJECT]
"""

import re
import sys
from pathlib import Path

PROJECT = Path(sys.argv[1] if len(sys.argv) > 1 else Path(__file__).parents[1]).resolve()
PROGRAMS = ("ctl", "companions/updateqm")  # their sources name each other from here on
BACKEND = re.compile(r"src/platform/(linux|macos)\b")


def sources(*folders):
    return [path for folder in folders for path in (PROJECT / folder).rglob("*") if path.suffix in (".cpp", ".h", ".mm")]


def included(path):
    """The project's own files that a source includes, by their paths from the project on."""
    program = next((PROJECT / program for program in PROGRAMS if path.is_relative_to(PROJECT / program)), path.parent)
    for name in re.findall(r'^#include "(.+)"', path.read_text(), re.MULTILINE):
        found = [folder / name for folder in (path.parent, program, PROJECT / "src") if (folder / name).is_file()]
        yield from (str(file.relative_to(PROJECT)) for file in found[:1])


def ways_past_a_port():
    for path in sources("src", "ctl", "companions"):
        source = str(path.relative_to(PROJECT))
        if not source.startswith("src/platform/"):
            yield from (f"{source} includes {file}: only a port may be used" for file in included(path) if BACKEND.match(file))


def circles():
    below = {}
    for path in sources("src", "ctl", "companions"):
        folder = str(path.parent.relative_to(PROJECT))
        below.setdefault(folder, set()).update(str(Path(file).parent) for file in included(path))
    for top in sorted(below):
        reached, waiting = {}, [(lower, [top, lower]) for lower in below[top] if lower != top]
        while waiting:
            folder, way = waiting.pop()
            if folder == top:
                yield "a circle of folders: " + " -> ".join(way)
                break
            if folder not in reached:
                reached[folder] = way
                waiting += [(lower, way + [lower]) for lower in below.get(folder, ()) if lower != folder]


faults = [*ways_past_a_port(), *circles()]
print("\n".join(faults))
sys.exit(1 if faults else 0)
