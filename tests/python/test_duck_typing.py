"""Collaborators of any class, answers and arguments of any kind."""

from collections import deque
from enum import Enum
from fractions import Fraction
from types import SimpleNamespace
from unittest import mock

import host
import pytest


class Level:
    """An ordering key that only knows how to be less than another."""

    def __init__(self, level):
        self.level = level

    def __lt__(self, other):
        return self.level < other.level


class Guarded:
    """Gives the members it was made with and fails the test for any other."""

    def __init__(self, **members):
        self.__dict__.update(members)

    def __getattr__(self, name):
        raise AssertionError(f"{name} was read")


def test_a_step_reads_no_more_than_it_needs(build):
    builder = build.ContextBuilder(host.small_host())
    ranked = Guarded(id=1, file_id=1, name="reader", fqn="a.reader", kind="class", is_export=None)
    assert builder._rank_symbols([ranked], ["reader"])[0].score == 1.25
    assert builder._calculate_name_match(Guarded(name="Reader", fqn="x"), ["read"]) == 0.8
    assert builder._get_related_symbols(Guarded(file_id=None), "src/a.py") is None
    assert builder._get_related_symbols(Guarded(file_id=1, fqn="x"), "src/a.py", limit=1) == [
        {"fqn": "pkg.mod1.reader", "kind": "class"}
    ]
    assert builder._get_usage_example(Guarded(id=0)) is None
    assert builder._tested_sources([Guarded(file_path="src/a.py"), Guarded(file_path=None)]) == ["src/a.py"]
    hits = [Guarded(symbol=Guarded(id=n)) for n in (3, 99, 1)]
    retriever = mock.Mock(**{"retrieve.return_value": Guarded(hits=iter(hits), note="partly")})
    symbols, note = builder._retrieved(retriever, "task", 1, 7, None)
    assert [symbol.id for symbol in symbols] == [3, 1] and note == "partly"
    retriever.retrieve.assert_called_once_with("task", limit=7, include_tests=1)


def test_members_are_read_in_the_order_of_the_steps(build):
    class Traced(host.Symbol):
        def __getattribute__(self, name):
            reads.append((id(self), name))
            return super().__getattribute__(name)

    reads = []
    symbol, other = Traced(1, "reader"), Traced(2, "pool")
    builder = build.ContextBuilder(host.small_host(symbols=[other]))
    reads.clear()
    builder._build_pack([build.RankedSymbol(symbol, 1.0)], 0)
    members = [member for _, member in reads]
    assert members.index("token_count") < members.index("docstring")
    builder.repository.get_symbols_by_file = lambda file_id: [other]
    reads.clear()
    builder._get_related_symbols(symbol, "src/a.py")
    assert [read for read in reads if read[1] == "fqn"][:2] == [(id(other), "fqn"), (id(symbol), "fqn")]


def test_mocks_serve_as_collaborators(build):
    repository = mock.MagicMock()
    repository.search_symbols.return_value = ([host.Symbol(1, "reader")], 1, False)
    repository.get_file_paths_batch.return_value = {1: "src/a.py"}
    repository.production_fan_in.return_value = {}
    repository.get_references.return_value = ([], 0)
    pack = build.ContextBuilder(repository).build_context_pack(task="reader", source_only=0)
    assert [entry["name"] for entry in pack.symbols] == ["reader"]
    repository.search_symbols.assert_called_once_with("reader", limit=50, source_only=0)
    repository.get_file_paths_batch.assert_called_with([host.Symbol(1, "reader")])
    assert isinstance(mock.create_autospec(build.ContextBuilder, instance=True), build.ContextBuilder)


def test_one_pass_answers(build):
    repository = host.small_host()
    repository.search_symbols = lambda pattern, limit, source_only: iter([iter(repository.by_name[pattern]), 0, 0])
    repository.get_references = lambda fqn: (part for part in ([], 0))
    builder = build.ContextBuilder(repository)
    pack = builder.build_context_pack(host.TASK, component_filter="core", prefer_kinds={"class"})
    assert [entry["name"] for entry in pack.symbols] == ["reader", "pool", "budget"]


@pytest.mark.parametrize("make", [tuple, deque, iter, lambda seeds: (seed for seed in seeds)])
def test_seeds_of_any_iterable(build, make):
    repository = host.small_host()
    seeds = make([repository.symbols[2], repository.symbols[0], repository.symbols[2], host.Symbol(None, "x")])
    retriever = mock.Mock()
    pack = build.ContextBuilder(repository, retriever).build_context_pack("zzz", seed_symbols=seeds)
    assert [entry["name"] for entry in pack.symbols] == ["budget", "reader"] and not retriever.mock_calls


def test_seeds_are_walked_at_their_step(build):
    calls = []
    repository = host.Recorder(host.small_host(), calls)

    def seeds():
        calls.append("seeds")
        yield from ()

    with pytest.raises(ValueError):
        build.ContextBuilder(repository).build_context_pack(host.TASK, component_filter="no", seed_symbols=seeds())
    assert "seeds" not in calls
    build.ContextBuilder(repository).build_context_pack(host.TASK, component_filter="core", seed_symbols=seeds())
    assert [call if call == "seeds" else call[0] for call in calls][1:5] == [
        "get_component_by_name", "get_files_by_component", "seeds", "get_file_paths_batch"
    ]  # fmt: skip


@pytest.mark.parametrize("kinds", [["method"], ("method",), {"method"}, frozenset({"method"}), {"method": 1}])
def test_preferred_kinds_of_any_collection(build, kinds):
    builder = build.ContextBuilder(host.small_host())
    assert builder._calculate_relevance_score(host.Symbol(1, "x", "method"), ["x"], kinds) == 0.8 * (1.8 * 1.5)
    assert builder.build_context_pack(host.TASK, prefer_kinds=kinds).symbols[0]["name"] == "budget"


def test_fan_in_and_ranks_are_compared_by_the_host(build):
    symbols = [host.Symbol(n, "reader", file_id=n) for n in range(1, 5)]
    fan_in = {1: Fraction(1, 3), 2: 0.34, 3: Fraction(1, 3), 4: 2**70}
    builder = build.ContextBuilder(host.small_host(symbols=symbols, fan_in=fan_in))
    assert [item.symbol.id for item in builder._rank_symbols(symbols, ["reader"])] == [4, 2, 1, 3]
    records = [
        SimpleNamespace(alone=lambda path, n=n: SimpleNamespace(rank=Level(n % 3), path=f"t{n}")) for n in range(6)
    ]
    repository = host.small_host()
    repository.find_covering_tests = lambda paths: records
    tests = build._CoveringTests(repository, 4)
    assert tests.of("src/a.py") == ["t0", "t3", "t1", "t4"]
    for odd in (float("nan"), None, "x", []):
        records[0].alone = lambda path: SimpleNamespace(rank=odd, path="t")
        try:
            build._CoveringTests(repository, 2).of("src/a.py")
        except (TypeError, AttributeError):
            pass


def test_recommendations_take_any_entries(build):
    class Kind(Enum):
        CLASS = "class"

    recommend = build.ContextBuilder(None)._generate_recommendations
    entries = [{}, {"kind": None}, {"kind": Kind.CLASS}, {"kind": "function"}]
    assert recommend("tests of the api", entries) == [
        "Few symbols matched. Consider exploring related components.",
        "Found functions - consider their test requirements.",
        "Check for related API handlers and middleware.",
    ]
    assert recommend("x", [{}] * 5) == []
