"""The shape of the sources: which folder may use which, and where SQL lives."""

import re
from collections import defaultdict
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
SOURCES = [p for folder in ("src", "python") for p in (ROOT / folder).rglob("*") if p.suffix in (".cpp", ".h")]
STRING = re.compile(r'"(?:\\.|[^"\\\n])*"')
SQL = re.compile(r"\b(SELECT .* FROM|INSERT (OR \w+ )?INTO|UPDATE \w+ SET|DELETE FROM|CREATE (TABLE|INDEX)|PRAGMA)\b")


def room(path):
    return path.relative_to(ROOT).parts[1]


def uses():
    """The rooms that each room includes, with a file that does so."""
    arrows = defaultdict(dict)
    for path in SOURCES:
        for target in re.findall(r'^#include "([a-z_]+)/', path.read_text(), re.M):
            if path.is_relative_to(ROOT / "src") and target not in (room(path), "tarnwick"):
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


def test_sql_stays_in_the_room_of_the_index():
    strangers = {}
    for path in SOURCES:
        text = path.read_text()
        held = [s for s in STRING.findall(text) if SQL.search(s)] + re.findall(r"SQLite::\w+|sqlite3_\w+", text)
        if held and room(path) != "index":
            strangers[str(path.relative_to(ROOT))] = held[0]
    assert not strangers


def test_no_two_rooms_have_a_file_of_one_name():
    rooms = defaultdict(set)
    for path in SOURCES:
        if path.is_relative_to(ROOT / "src"):
            rooms[path.stem].add(room(path))
    assert not {stem: sorted(of) for stem, of in rooms.items() if len(of) > 1}
