"""A complete small host: an index, a retriever and tokenizer functions in memory, one pack, its JSON."""

import json
import re
import sys
import types
from types import SimpleNamespace

# A service has this module; here it is made by hand.
retrieval = types.ModuleType("tarnwick.workers.retrieval")
retrieval.query_names = lambda task: re.findall(r"\b\w*[A-Z_]\w*", task)
retrieval.query_terms = lambda task: re.findall(r"[a-z]+", task.lower())
retrieval.is_test_query = lambda terms: "tests" in terms
sys.modules[retrieval.__name__] = retrieval

from tarnwick.workers.context_builder import ContextBuilder  # noqa: E402


class Symbol(SimpleNamespace):
    def token_count(self):
        return 30


def symbol(id, name, line, **more):
    defaults = {"kind": "function", "is_export": True, "docstring": None, "docstring_truncated": False}
    return Symbol(id=id, file_id=1, name=name, fqn=f"cache.{name}", start_line=line, end_line=line + 8,
                  signature=f"def {name}()", **{**defaults, **more})  # fmt: skip


STORE = symbol(1, "store", 4, docstring="Keep a value.\n\n:param key: where to find it again.")
EVICT = symbol(2, "evict", 14)
PATHS = {1: "src/cache.py"}


class Index:
    symbols = [STORE, EVICT]

    def search_symbols(self, pattern, limit, source_only):
        found = [s for s in self.symbols if pattern.strip("%") == s.name]
        return found[:limit], len(found), len(found) > limit

    def get_component_by_name(self, name):
        return None

    def get_files_by_component(self, component_id):
        return []

    def get_file_paths_batch(self, symbols):
        return {s.id: PATHS[s.file_id] for s in symbols}

    def production_fan_in(self, ids):
        return {id: 1 for id in ids}

    def test_paths(self, paths):
        return {path for path in paths if path.startswith("tests/")}

    def symbols_with_paths(self, ids):
        return {s.id: (s, PATHS[s.file_id]) for s in self.symbols if s.id in ids}

    def find_covering_tests(self, paths):
        reach = SimpleNamespace(rank=0, path="tests/test_cache.py")
        return [SimpleNamespace(alone=lambda path: reach)]

    def get_symbols_by_file(self, file_id):
        return [s for s in self.symbols if s.file_id == file_id]

    def get_references(self, fqn):
        call = SimpleNamespace(usage_type="call", caller_symbol=None, context="    evict(oldest)")
        return ([call], 1) if fqn == "cache.evict" else ([], 0)

    def get_symbol_by_fqn(self, fqn):
        return next((s for s in self.symbols if s.fqn == fqn), None)


class Retriever:
    def retrieve(self, task, limit, include_tests):
        return SimpleNamespace(hits=[SimpleNamespace(score=0.9, symbol=EVICT)], note=None)


builder = ContextBuilder(Index(), Retriever(), list_tests=True)
pack = builder.build_context_pack("Let store evict the oldest value", token_budget=400)
print(json.dumps(pack.to_dict(), indent=2))
