"""A small host in memory: an index, a retriever and tokenizer functions, for the tests and the benchmark."""

from __future__ import annotations

import importlib
import importlib.util
import re
import sys
import types
from dataclasses import dataclass, field
from pathlib import Path
from types import SimpleNamespace
from typing import Any

ROOT = Path(__file__).resolve().parents[2]
MODULE = "tarnwick.workers.context_builder"
RETRIEVAL = "tarnwick.workers.retrieval"

COMMON_WORDS = frozenset("a an and are for from how in is of on or the to with".split())
TEST_WORDS = frozenset(("test", "tests", "testing"))


def query_names(task):
    return [word for word in re.findall(r"\w+", task) if "_" in word or word != word.lower()]


def query_terms(task):
    return [word for word in re.findall(r"[^\W_]+", task.lower()) if word not in COMMON_WORDS]


def is_test_query(terms):
    return any(term in TEST_WORDS for term in terms)


@dataclass
class Symbol:
    id: Any
    name: str
    kind: str = "function"
    file_id: Any = 1
    fqn: str = ""
    is_export: Any = True
    start_line: int = 1
    end_line: int = 3
    signature: Any = None
    docstring: Any = None
    docstring_truncated: bool = False
    tokens: int = 10

    def __post_init__(self):
        self.fqn = self.fqn or f"pkg.mod{self.file_id}.{self.name}"

    def token_count(self):
        return self.tokens


@dataclass
class CoveringTest:
    """A test record: what it has to do with each source file, as (rank, path)."""

    reaches: dict

    def alone(self, path):
        found = self.reaches.get(path)
        return None if found is None else SimpleNamespace(rank=found[0], path=found[1])


@dataclass
class Repository:
    """An index over plain dicts. Answers are made anew at each call."""

    symbols: list = field(default_factory=list)
    paths: dict = field(default_factory=dict)  # by file id
    test_files: set = field(default_factory=set)
    fan_in: dict = field(default_factory=dict)  # by symbol id
    components: dict = field(default_factory=dict)  # name to (id, file ids)
    covering: list = field(default_factory=list)
    references: dict = field(default_factory=dict)  # by fqn

    def __post_init__(self):
        self.by_id = {symbol.id: symbol for symbol in self.symbols if symbol.id is not None}
        self.by_fqn = {symbol.fqn: symbol for symbol in self.symbols}
        self.by_name = {}
        for symbol in self.symbols:
            self.by_name.setdefault(symbol.name.lower(), []).append(symbol)

    def search_symbols(self, pattern, limit=50, source_only=True):
        if "%" in pattern:
            inside = pattern.strip("%").lower()
            found = [symbol for symbol in self.symbols if inside in symbol.name.lower()]
        else:
            found = self.by_name.get(pattern.lower(), [])
        return found[:limit], len(found), len(found) > limit

    def get_component_by_name(self, name):
        component = self.components.get(name)
        return None if component is None else SimpleNamespace(id=component[0], name=name)

    def get_files_by_component(self, component_id):
        files = next(files for known, files in self.components.values() if known == component_id)
        return (SimpleNamespace(id=file_id) for file_id in files)

    def get_file_paths_batch(self, symbols):
        paths = self.paths
        return {symbol.id: paths[symbol.file_id] for symbol in symbols if symbol.file_id in paths}

    def production_fan_in(self, ids):
        fan_in = self.fan_in
        return {symbol_id: fan_in[symbol_id] for symbol_id in ids if symbol_id in fan_in}

    def test_paths(self, paths):
        return self.test_files.intersection(paths)

    def symbols_with_paths(self, ids):
        known = self.by_id
        return {i: (known[i], self.paths.get(known[i].file_id)) for i in ids if i in known}

    def find_covering_tests(self, paths):
        return [test for test in self.covering if any(path in test.reaches for path in paths)]

    def get_symbols_by_file(self, file_id):
        return iter([symbol for symbol in self.symbols if symbol.file_id == file_id])

    def get_references(self, fqn):
        found = self.references.get(fqn, [])
        return found, len(found)

    def get_symbol_by_fqn(self, fqn):
        return self.by_fqn.get(fqn)


@dataclass
class Retriever:
    """Ranks what it was given: pairs of a score and a symbol."""

    ranking: list = field(default_factory=list)
    note: Any = None

    def retrieve(self, task, limit, include_tests):
        hits = [
            SimpleNamespace(score=score, symbol=SimpleNamespace(id=symbol.id, kind=symbol.kind))
            for score, symbol in self.ranking[:limit]
        ]
        return SimpleNamespace(hits=iter(hits), note=self.note)


def small_host(**changes):
    """An index of three symbols in two files, with one test."""
    symbols = [
        Symbol(1, "reader", "class", 1, signature="class reader", docstring="Reads.\n\n:param x: The x."),
        Symbol(2, "pool", "function", 1, signature="def pool()"),
        Symbol(3, "budget", "method", 2),
    ]
    options = {
        "symbols": symbols,
        "paths": {1: "src/a.py", 2: "src/b.py"},
        "fan_in": {1: 4, 2: 2},
        "components": {"core": (7, [1, 2])},
        "covering": [CoveringTest({"src/a.py": (1, "tests/test_a.py"), "src/b.py": (2, "tests/test_a.py")})],
    }
    return Repository(**{**options, **changes})


TASK = "reader pool budget"  # finds the three


class Failure(Exception):
    pass


class Recorder:
    """Stands before a collaborator and writes down each call: name, arguments by position, arguments by name."""

    def __init__(self, target, calls):
        self._target = target
        self._calls = calls

    def __getattr__(self, name):
        operation = getattr(self._target, name)

        def recorded(*args, **kwargs):
            self._calls.append((name, [list(a) if isinstance(a, list) else a for a in args], list(kwargs.items())))
            return operation(*args, **kwargs)

        return recorded


def install_retrieval():
    """Puts the tokenizer functions where a service has them."""
    retrieval = types.ModuleType(RETRIEVAL)
    retrieval.query_names = query_names
    retrieval.query_terms = query_terms
    retrieval.is_test_query = is_test_query
    sys.modules[RETRIEVAL] = retrieval
    return retrieval


def load_plain():
    """The plain-Python build of the same work."""
    spec = importlib.util.spec_from_file_location(
        "plain_context_builder", ROOT / "bench" / "plain_context_builder.py"
    )
    module = importlib.util.module_from_spec(spec)
    sys.modules[spec.name] = module
    spec.loader.exec_module(module)
    return module


def load_module(directory):
    """The extension module that was built below `directory`."""
    if str(directory) not in sys.path:
        sys.path.insert(0, str(directory))
    return importlib.import_module(MODULE)
