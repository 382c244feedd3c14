"""The shape of the sources: which folder may use which."""

import re
from collections import defaultdict
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
SOURCES = [p for p in (ROOT / "src").rglob("*") if p.suffix in (".cpp", ".h")]


def room(path):
    return path.relative_to(ROOT).parts[1]


def uses():
    """The rooms that each room includes, with a file that does so."""
    arrows = defaultdict(dict)
    for path in SOURCES:
        for target in re.findall(r'^#include "([a-z_]+)/', path.read_text(), re.M):
            if target not in (room(path), "tarnwick"):
                arrows[room(path)].setdefault(target, path.name)
    return arrows


def test_no_room_includes_one_that_includes_it():
    arrows, done = uses(), set()

    def visit(name, way):
        assert name not in way, "these rooms include each other: " + " -> ".join([*way[way.index(name):], name])
        if name not in done:
            for target in arrows[name]:
                visit(target, [*way, name])
            done.add(name)

    for name in list(arrows):
        visit(name, [])
    assert {"cli", "mcp", "index"} <= done
