"""What a host's objects see of a build. Each case holds for plain Python too, which runs it beside the module."""

import json
import logging
import pickle
import sys
from collections import deque
from enum import Enum
from fractions import Fraction
from pathlib import Path
from types import SimpleNamespace
from unittest import mock

import host
import pytest


def small_host(**changes):
    """Three symbols in two files, one test."""
    symbols = [
        host.Symbol(1, "reader", "class", 1, signature="class reader", docstring="Reads.\n\n:param x: The x."),
        host.Symbol(2, "pool", "function", 1, signature="def pool()"),
        host.Symbol(3, "budget", "method", 2),
    ]
    options = {
        "symbols": symbols,
        "paths": {1: "src/a.py", 2: "src/b.py"},
        "fan_in": {1: 4, 2: 2},
        "components": {"core": (7, [1, 2])},
        "covering": [host.CoveringTest({"src/a.py": (1, "tests/test_a.py"), "src/b.py": (2, "tests/test_a.py")})],
    }
    return host.Repository(**{**options, **changes})


TASK = "reader pool budget"


class Id(int):
    pass


class Word(str):
    pass


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


# --- identity and aliasing


def test_values_are_the_hosts_own_objects(build):
    values = {
        "fqn": Word("src.a.reader"),
        "name": Word("reader"),
        "kind": Word("class"),
        "start_line": Id(4),
        "signature": Word("class Reader"),
        "docstring": Word("Reads."),
        "docstring_truncated": object(),
    }
    path = Word("src/a.py")
    symbol = SimpleNamespace(id=Id(1), file_id=Id(1), is_export=1, token_count=lambda: 5, **values)
    repository = small_host(symbols=[], paths={1: path})
    repository.by_name = {"reader": [symbol]}
    builder = build.ContextBuilder(repository)
    assert builder._rank_symbols([symbol], ["reader"])[0].symbol is symbol
    pack = builder.build_context_pack("reader")
    entry = pack.symbols[0]
    keys = {"line": "start_line"}
    for key in ("fqn", "name", "kind", "line", "signature", "docstring", "docstring_truncated"):
        assert entry[key] is values[keys.get(key, key)], key
    assert entry["file"] is path and pack.files[0] is path
    assert type(entry) is dict
    assert list(entry)[:8] == "fqn name kind file line signature docstring docstring_truncated".split()


@pytest.mark.parametrize("fields", [{"start_line": None, "signature": 0, "docstring": None, "kind": None}])
def test_fixed_keys_hold_whatever_the_symbol_has(build, fields):
    symbol = host.Symbol(1, "reader", docstring_truncated="yes")
    vars(symbol).update(fields)
    entry = build.ContextBuilder(small_host(symbols=[symbol])).build_context_pack("reader").symbols[0]
    assert entry["line"] is None and entry["signature"] == 0 and entry["docstring_truncated"] == "yes"


def test_ids_of_other_integer_types_go_on_as_they_came(build):
    calls = []
    symbols = [host.Symbol(Id(5), "reader", file_id=Id(2)), host.Symbol(True, "reader", file_id=True)]
    repository = host.Recorder(small_host(symbols=symbols, fan_in={}), calls)
    builder = build.ContextBuilder(repository)
    pack = builder.build_context_pack("reader")
    assert len(pack.symbols) == 2
    passed = next(args for name, args, _ in calls if name == "production_fan_in")[0]
    assert [type(value) for value in passed] == [Id, bool]
    assert {type(args[0]) for name, args, _ in calls if name == "get_symbols_by_file"} == {Id, bool}
    assert {type(value) for value in builder._component_files("core")} == {int}


def test_records_are_plain_records(build):
    first, second = build.ContextPack(), build.ContextPack()
    assert first == second and first.symbols is not second.symbols and first.symbols is first.symbols
    held = ["note"]
    pack = build.ContextPack([], notes=held, tokens_used=3)
    assert pack.notes is held and pack != first and "notes=['note']" in repr(pack)
    tree = pack.to_dict()
    assert tree["notes"] is held and list(tree) == [
        "symbols", "files", "tests", "recommendations", "notes", "tokens_used", "indexing_in_progress", "progress"
    ]  # fmt: skip
    held.clear()
    assert "notes" not in pack.to_dict() and len(pack.to_dict()) == 7
    assert build.ContextPack.__doc__ == "A token-budgeted context pack for a coding task."
    assert build.RankedSymbol.__doc__ == "A symbol with its relevance score for ranking."
    assert build.RankedSymbol("s", score=1.0) == build.RankedSymbol(symbol="s", score=1.0, file_path=None)
    with pytest.raises(TypeError):
        build.RankedSymbol("s")
    tests = build._CoveringTests("index", 2)
    assert (tests.repository, tests.per_file, tests.found, tests.failed) == ("index", 2, {}, False)
    assert type(first).__module__ == build.ContextBuilder.__module__
    assert pickle.loads(pickle.dumps(pack)) == pack


def test_covering_tests_keep_the_lists_they_hand_out(build):
    repository = small_host(test_files={"tests/test_a.py"})
    tests = build._CoveringTests(repository, 2)
    tests.look_up(["src/a.py", None, "", "src/a.py", "tests/test_a.py"])
    assert list(tests.found) == ["tests/test_a.py", "src/a.py"]
    assert tests.of("src/a.py") is tests.found["src/a.py"] and tests.of(None) == tests.of("") == []
    own = tests.found["lib/x.py"] = ["t"]
    assert tests.of("lib/x.py") is own  # what is there is not asked for again
    tests.found = {}
    repository.test_paths = lambda paths: ["elsewhere.py"]  # also what was not asked about
    tests.look_up(["src/b.py"])
    assert tests.found == {"elsewhere.py": [], "src/b.py": ["tests/test_a.py"]}
    rows = build.ContextBuilder(repository)._test_rows(["s"], SimpleNamespace(of=lambda path: ["t1", "t2"]))
    assert [row for row, _ in rows] == [{"file": "t1", "for": "s"}, {"file": "t2", "for": "s"}]


def test_failing_records_leave_what_was_found(build):
    error = LookupError("rank")
    broken = SimpleNamespace(alone=mock.Mock(side_effect=[None, error]))
    tests = build._CoveringTests(small_host(covering=[]), 2)
    tests.repository.find_covering_tests = lambda paths: [broken]
    with pytest.raises(LookupError) as caught:
        tests.look_up(["a", "b"])
    assert caught.value is error and tests.found == {"a": []} and not tests.failed


# --- exceptions


OPERATIONS = [
    "search_symbols", "get_component_by_name", "get_files_by_component", "get_file_paths_batch",
    "production_fan_in", "test_paths", "symbols_with_paths", "get_symbols_by_file", "get_references",
    "get_symbol_by_fqn",
]  # fmt: skip


class Failure(Exception):
    pass


@pytest.mark.parametrize("error", [Failure("x"), KeyboardInterrupt(), SystemExit(3), KeyError("k"), OSError(2, "no")])
def test_errors_of_the_index_come_through(build, error):
    for operation in OPERATIONS:
        symbol = host.Symbol(1, "reader")
        reference = SimpleNamespace(usage_type="call", caller_symbol={"fqn": "f"}, context="")
        repository = small_host(references={symbol.fqn: [reference]}, symbols=[symbol, host.Symbol(2, "reader")])
        setattr(repository, operation, mock.Mock(side_effect=error))
        builder = build.ContextBuilder(repository, host.Retriever([(1.0, symbol)]))
        with pytest.raises(type(error)) as caught:
            builder.build_context_pack("reader", component_filter="core")
        assert caught.value is error, operation


@pytest.mark.parametrize("member", ["name", "fqn", "kind", "is_export", "id", "signature", "docstring", "start_line"])
def test_errors_of_members_come_through(build, member):
    error = Failure(member)

    class Broken(host.Symbol):
        def __getattribute__(self, name):
            if name == member and vars(self).get("armed"):
                raise error
            return super().__getattribute__(name)

    symbol = Broken(1, "reader")
    repository = small_host(symbols=[symbol])
    symbol.armed = True
    with pytest.raises(Failure) as caught:
        build.ContextBuilder(repository).build_context_pack("reader")
    assert caught.value is error
    frames = []
    trace = caught.value.__traceback__
    while trace:
        frames.append(trace.tb_frame.f_code.co_name)
        trace = trace.tb_next
    assert frames[-1] == "__getattribute__"


def test_errors_of_comparisons_and_iterators_come_through(build):
    def one_and_fail():
        yield host.Symbol(1, "reader")
        raise error

    error = Failure("late")
    repository = small_host()
    repository.search_symbols = lambda pattern, limit, source_only: (one_and_fail(), 1, False)
    with pytest.raises(Failure) as caught:
        build.ContextBuilder(repository).build_context_pack("reader")
    assert caught.value is error

    ranks = [SimpleNamespace(alone=lambda path, rank=rank: SimpleNamespace(rank=rank, path="t")) for rank in (1, "b")]
    repository = small_host()
    repository.find_covering_tests = lambda paths: ranks
    with pytest.raises(TypeError, match="'<' not supported"):
        build.ContextBuilder(repository).build_context_pack("reader")


@pytest.mark.parametrize("answer, error", [((1, 2), ValueError), ((1, 2, 3, 4), ValueError), (None, TypeError)])
def test_answers_are_unpacked_as_python_unpacks(build, answer, error):
    repository = small_host()
    repository.search_symbols = lambda pattern, limit, source_only: answer
    with pytest.raises(error, match="unpack") as caught:
        build.ContextBuilder(repository).build_context_pack("reader")
    expected = {2: "not enough values to unpack (expected 3, got 2)", 4: "too many values to unpack (expected 3)"}
    assert str(caught.value) == expected.get(answer and len(answer), "cannot unpack non-iterable NoneType object")


def test_unknown_component(build):
    repository = small_host()
    for name in ("nowhere", "nul\0inside", "lone \udcff", "\U0001f600"):
        with pytest.raises(ValueError) as caught:
            build.ContextBuilder(repository, host.Retriever()).build_context_pack(TASK, 800, name)
        assert type(caught.value) is ValueError and str(caught.value) == f"Unknown component: {name}"
    repository.components["zero"] = (0, [])
    with pytest.raises(ValueError):
        build.ContextBuilder(repository)._component_files("zero")
    assert build.ContextBuilder(repository)._component_files("") is None


def test_estimate_tokens(build):
    assert [build.estimate_tokens(text) for text in (None, "", "é" * 8, " ", "\ud800" * 8)] == [0, 0, 2, 1, 2]
    assert build.estimate_tokens("x" * 10, chars_per_token=3) == 3 and build.estimate_tokens("", 0) == 0
    with pytest.raises(ZeroDivisionError):
        build.estimate_tokens("x", 0)
    assert build.estimate_tokens(text="x", chars_per_token=-1.0) == 1


# --- the guarded look-up


def failing_tests(error, where="find_covering_tests"):
    repository = small_host()
    setattr(repository, where, mock.Mock(side_effect=error))
    return repository


def test_failed_look_up_is_logged(build, caplog):
    error = Failure("index")

    class Sees(logging.Handler):
        def emit(self, record):
            seen.append((tests.failed, sys.exc_info()[1]))

    seen = []
    tests = build._CoveringTests(failing_tests(error), 2)
    handler = Sees()
    build.logger.addHandler(handler)
    try:
        tests.look_up(["src/a.py", "src/\udcff.py"])
    finally:
        build.logger.removeHandler(handler)
    (record,) = caplog.records
    assert record.name == "tarnwick.workers.context_builder" and record.levelno == logging.WARNING
    assert record.msg == "context: the tests of %s could not be read"
    assert record.args == ("src/a.py, src/\udcff.py",)
    assert record.exc_info == (Failure, error, error.__traceback__) and error.__traceback__ is not None
    assert seen == [(False, error)] and tests.failed
    assert tests.of("src/a.py") == [] and len(caplog.records) == 1

    pack = build.ContextBuilder(failing_tests(error)).build_context_pack(TASK)
    assert pack.notes == [build._NO_TESTS] and len(pack.symbols) == 3


@pytest.mark.parametrize("interrupt", [KeyboardInterrupt(), SystemExit(1), GeneratorExit()])
def test_interrupts_pass_the_guarded_look_up(build, interrupt, caplog):
    with pytest.raises(type(interrupt)) as caught:
        build.ContextBuilder(failing_tests(interrupt)).build_context_pack(TASK)
    assert caught.value is interrupt and not caplog.records


def test_errors_of_the_logger_come_through(build):
    error = Failure("log")
    cause = Failure("index")
    with mock.patch.object(build, "logger", mock.Mock(warning=mock.Mock(side_effect=error))):
        with pytest.raises(Failure) as caught:
            build.ContextBuilder(failing_tests(cause)).build_context_pack(TASK)
    assert caught.value is error and error.__context__ is cause


# --- duck typing


def test_a_step_reads_no_more_than_it_needs(build):
    builder = build.ContextBuilder(small_host())
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
    repository = small_host()
    repository.search_symbols = lambda pattern, limit, source_only: iter([iter(repository.by_name[pattern]), 0, 0])
    repository.get_references = lambda fqn: (part for part in ([], 0))
    builder = build.ContextBuilder(repository)
    pack = builder.build_context_pack(TASK, component_filter="core", prefer_kinds={"class"})
    assert [entry["name"] for entry in pack.symbols] == ["reader", "pool", "budget"]


@pytest.mark.parametrize("make", [tuple, deque, iter, lambda seeds: (seed for seed in seeds)])
def test_seeds_of_any_iterable(build, make):
    repository = small_host()
    seeds = make([repository.symbols[2], repository.symbols[0], repository.symbols[2], host.Symbol(None, "x")])
    retriever = mock.Mock()
    pack = build.ContextBuilder(repository, retriever).build_context_pack("zzz", seed_symbols=seeds)
    assert [entry["name"] for entry in pack.symbols] == ["budget", "reader"] and not retriever.mock_calls


def test_seeds_are_walked_at_their_step(build):
    calls = []
    repository = host.Recorder(small_host(), calls)

    def seeds():
        calls.append("seeds")
        yield from ()

    with pytest.raises(ValueError):
        build.ContextBuilder(repository).build_context_pack(TASK, component_filter="no", seed_symbols=seeds())
    assert "seeds" not in calls
    build.ContextBuilder(repository).build_context_pack(TASK, component_filter="core", seed_symbols=seeds())
    assert [call if call == "seeds" else call[0] for call in calls][1:5] == [
        "get_component_by_name", "get_files_by_component", "seeds", "get_file_paths_batch"
    ]  # fmt: skip


@pytest.mark.parametrize("kinds", [["method"], ("method",), {"method"}, frozenset({"method"}), {"method": 1}])
def test_preferred_kinds_of_any_collection(build, kinds):
    builder = build.ContextBuilder(small_host())
    assert builder._calculate_relevance_score(host.Symbol(1, "x", "method"), ["x"], kinds) == 0.8 * (1.8 * 1.5)
    assert builder.build_context_pack(TASK, prefer_kinds=kinds).symbols[0]["name"] == "budget"


def test_fan_in_and_ranks_are_compared_by_the_host(build):
    symbols = [host.Symbol(n, "reader", file_id=n) for n in range(1, 5)]
    fan_in = {1: Fraction(1, 3), 2: 0.34, 3: Fraction(1, 3), 4: 2**70}
    builder = build.ContextBuilder(small_host(symbols=symbols, fan_in=fan_in))
    assert [item.symbol.id for item in builder._rank_symbols(symbols, ["reader"])] == [4, 2, 1, 3]
    records = [
        SimpleNamespace(alone=lambda path, n=n: SimpleNamespace(rank=Level(n % 3), path=f"t{n}")) for n in range(6)
    ]
    repository = small_host()
    repository.find_covering_tests = lambda paths: records
    tests = build._CoveringTests(repository, 4)
    assert tests.of("src/a.py") == ["t0", "t3", "t1", "t4"]
    for odd in (float("nan"), None, "x", []):
        records[0].alone = lambda path: SimpleNamespace(rank=odd, path="t")
        try:
            build._CoveringTests(repository, 2).of("src/a.py")
        except (TypeError, AttributeError):
            pass


def test_terms_are_passed_on_as_they_are(build, retrieval):
    class Terms:
        def __iter__(self):
            return iter(["reader", "api"])

        def __contains__(self, word):
            asked.append(word)
            return word == "api"

    asked, seen, terms = [], [], Terms()
    retrieval.query_terms = lambda task: terms
    retrieval.is_test_query = lambda words: seen.append(words) or "yes"
    retriever = mock.Mock(**{"retrieve.return_value": SimpleNamespace(hits=[], note=None)})
    task = object()
    retrieval.query_names = lambda given: [] if given is task else None
    pack = build.ContextBuilder(small_host(), retriever).build_context_pack(task)
    assert all(words is terms for words in seen) and len(seen) == 2
    assert "Check for related API handlers and middleware." in pack.recommendations and "api" in asked
    (positional, named) = retriever.retrieve.call_args
    assert positional == (task,) and list(named.items()) == [("limit", 25), ("include_tests", "yes")]
    keyword = Word("reader")
    retrieval.query_terms = lambda given: [keyword]
    assert build.task_keywords(task)[0] is keyword


def test_tokenizer_functions_are_found_at_each_call(build, retrieval):
    name = build.__name__
    assert build.query_names is retrieval.query_names
    with mock.patch(f"{name}.query_terms", lambda task: ["patched"]):
        assert build.task_keywords("x") == ["patched"]
    retrieval.query_terms = lambda task: ["swapped"]
    assert build.task_keywords("x") == ["swapped"] and "query_terms" not in vars(build)
    build.query_terms = lambda task: ["own"]
    assert build.task_keywords("x") == ["own"]
    del build.query_terms
    assert build.task_keywords("x") == ["swapped"]
    sys.modules[host.RETRIEVAL] = None
    with pytest.raises(ImportError):
        build.task_keywords("x")
    with pytest.raises(AttributeError):
        build.nonsense


def test_fields_and_constants(build):
    repository = small_host()
    builder = build.ContextBuilder(repository, list_tests=True)
    assert vars(builder) == {
        "repository": repository, "retriever": None, "list_tests": True,
        "_indexing_in_progress": False, "_indexing_progress": 100,
    }  # fmt: skip
    with pytest.raises(TypeError):
        build.ContextBuilder(repository, None, True)
    builder.set_indexing_status("half", progress="50")
    pack = builder.build_context_pack(TASK)
    assert (pack.indexing_in_progress, pack.progress) == ("half", "50") and len(pack.tests) == 1
    builder.list_tests = False
    builder.repository = small_host(symbols=[])
    assert builder.build_context_pack(TASK).tests == [] and builder.build_context_pack(TASK).symbols == []
    assert list(build.ContextBuilder.KIND_WEIGHTS)[:3] == ["class", "interface", "struct"]
    assert list(build.ContextBuilder.KIND_PRIORITY)[-3:] == ["field", "constant", "variable"]
    assert (build.ContextBuilder.MAX_SYMBOLS, build.ContextBuilder.TESTS_SHARE, build._MIN_KEYWORD) == (25, 0.15, 3)


def test_set_constants_do_not_change_a_module_build(module):
    builder = module.ContextBuilder(small_host())
    before = builder.build_context_pack(TASK)
    with mock.patch.object(module.ContextBuilder, "MAX_SYMBOLS", 1), mock.patch.object(module, "_NO_TESTS", "x"):
        with mock.patch.object(module.ContextBuilder, "_rank_symbols", None):
            assert builder.build_context_pack(TASK) == before


def test_subclasses(module):
    class Sub(module.ContextBuilder):
        def __init__(self, repository):
            super().__init__(repository, list_tests=True)
            self.extra = 1

        def _get_usage_example(self, symbol):
            raise AssertionError

    assert len(Sub(small_host()).build_context_pack(TASK).symbols) == 3
    with pytest.raises(AttributeError):
        module.ContextBuilder.__new__(module.ContextBuilder).build_context_pack(TASK)


# --- text, numbers, files


def test_any_text_passes_unharmed(build, tmp_path):
    names = ["lone\udcff", "nul\0inside", "\U0001f600smile", "İstanbul", "ΣΊΣΥΦΟΣ"]
    symbols = [host.Symbol(n + 1, name, file_id=n + 1, docstring=f"{name}\n@param {name} d") for n, name in enumerate(names)]
    paths = {n + 1: f"dir/{name}.py" for n, name in enumerate(names)}
    (tmp_path / "dir").mkdir()
    for name in names:
        if "\0" not in name:
            (tmp_path / "dir" / f"{name}.py").write_bytes(b"one\r\ntwo\rthree \xff\n")
    builder = build.ContextBuilder(small_host(symbols=symbols, paths=paths))
    pack = builder.build_context_pack("x", seed_symbols=symbols, include_snippets=True, repo_root=tmp_path)
    assert [entry["name"] for entry in pack.symbols] == names
    assert [entry.get("snippet") for entry in pack.symbols] == [
        None if "\0" in name else "one\ntwo\nthree \ufffd" for name in names
    ]
    assert pack.files == list(paths.values())
    assert builder._calculate_name_match(symbols[4], ["σίσυφος"]) == 1.0


@pytest.mark.parametrize("root", [str, Path, lambda path: SimpleNamespace(x=path)])
def test_roots_and_paths(build, tmp_path, root):
    (tmp_path / "a.py").write_text("1\n2\n3\n")
    given = root(tmp_path)
    builder = build.ContextBuilder(small_host(paths={1: "a.py"}))
    if isinstance(given, SimpleNamespace):
        with pytest.raises(TypeError):
            builder.build_context_pack(TASK, include_snippets=True, repo_root=given)
        builder.build_context_pack(TASK, repo_root=given)  # not looked at without snippets
        return
    pack = builder.build_context_pack(TASK, include_snippets=True, repo_root=given)
    assert pack.symbols[0]["snippet"] == "1\n2\n3"
    assert builder._extract_snippet(root(tmp_path / "a.py"), 2, 9, 0) == ("2\n3", 2)
    assert builder._extract_snippet(root(tmp_path), 1, 9, 0) == (None, 0)


def test_large_numbers_saturate(build):
    symbols = [host.Symbol(2**63 - 1, "reader", tokens=2**62), host.Symbol(2, "pool", tokens=2**62)]
    builder = build.ContextBuilder(small_host(symbols=symbols))
    pack = builder.build_context_pack(TASK, token_budget=2**63 - 1)
    assert len(pack.symbols) == 2 and pack.tokens_used >= 2**63 - 1
    assert builder.build_context_pack(TASK, -100).tokens_used == 0


def test_wrong_types_are_named(module):
    builder = module.ContextBuilder(small_host())
    with pytest.raises(TypeError, match="token_budget must be an integer, not str"):
        builder.build_context_pack(TASK, "800")
    with pytest.raises(TypeError, match="missing required argument"):
        builder.build_context_pack()
    with pytest.raises(OverflowError, match="token_budget does not fit"):
        builder.build_context_pack(TASK, 2**64)
    for member, value in (("name", None), ("docstring", 5), ("id", "one"), ("tokens", "ten")):
        symbol = host.Symbol(1, "reader")
        repository = small_host(symbols=[symbol])
        setattr(symbol, member, value)
        with pytest.raises(TypeError, match={"tokens": "token_count"}.get(member, member)):
            module.ContextBuilder(repository).build_context_pack("reader")


def test_hostile_docstrings_do_not_hang(module):
    for docstring in ("Args:\n" + "\n" * 50000, "Args:\n" + " " * 50000, "@param {" * 20000, ":param " * 20000):
        module.ContextBuilder(small_host())._extract_parameters(docstring)
    many = "Args:\n" + "".join(f"    p{n} (int): The {n}.\n" for n in range(10000))
    assert len(module.ContextBuilder(small_host())._extract_parameters(many)) == 10000


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
    assert recommend("x", []) == ["No matching symbols found. Try broader search terms."]
    assert json.dumps(recommend("x", [{}] * 5)) == "[]"
