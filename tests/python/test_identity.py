"""Whose objects a build hands on and hands out. Each case holds for plain Python too, which runs it beside the module."""

import pickle
import typing
from pathlib import Path
from types import SimpleNamespace
from unittest import mock

import host
import pytest


class Id(int):
    pass


class Word(str):
    pass


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
    repository = host.small_host(symbols=[], paths={1: path})
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
    symbol.start_line, symbol.signature = None, 0  # what an entry shows is not looked into
    entry = builder.build_context_pack("reader").symbols[0]
    assert entry["line"] is None and entry["signature"] == 0
    assert list(entry)[:8] == "fqn name kind file line signature docstring docstring_truncated".split()


def test_ids_of_other_integer_types_go_on_as_they_came(build):
    calls = []
    symbols = [host.Symbol(Id(5), "reader", file_id=Id(2)), host.Symbol(True, "reader", file_id=True)]
    repository = host.Recorder(host.small_host(symbols=symbols, fan_in={}), calls)
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


def test_annotations_of_records_can_be_resolved(module):
    hints = [typing.get_type_hints(record) for record in (module.ContextPack, module.RankedSymbol, module._CoveringTests)]
    assert hints[0]["symbols"] == list[dict[str, typing.Any]]
    assert hints[1] == {"symbol": typing.Any, "score": float, "file_path": str | None}
    assert hints[2]["found"] == dict[str, list[str]]


def test_covering_tests_keep_the_lists_they_hand_out(build):
    repository = host.small_host(test_files={"tests/test_a.py"})
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


def test_fields_and_constants(build):
    repository = host.small_host()
    builder = build.ContextBuilder(repository, list_tests=True)
    assert vars(builder) == {
        "repository": repository, "retriever": None, "list_tests": True,
        "_indexing_in_progress": False, "_indexing_progress": 100,
    }  # fmt: skip
    with pytest.raises(TypeError):
        build.ContextBuilder(repository, None, True)
    builder.set_indexing_status("half", progress="50")
    pack = builder.build_context_pack(host.TASK)
    assert (pack.indexing_in_progress, pack.progress) == ("half", "50") and len(pack.tests) == 1
    builder.list_tests = False
    builder.repository = host.small_host(symbols=[])
    assert builder.build_context_pack(host.TASK).tests == [] and builder.build_context_pack(host.TASK).symbols == []
    assert list(build.ContextBuilder.KIND_WEIGHTS)[:3] == ["class", "interface", "struct"]
    assert list(build.ContextBuilder.KIND_PRIORITY)[-3:] == ["field", "constant", "variable"]
    assert (build.ContextBuilder.MAX_SYMBOLS, build.ContextBuilder.TESTS_SHARE, build._MIN_KEYWORD) == (25, 0.15, 3)


def test_what_a_host_overrides_does_not_change_a_build(module):
    class Sub(module.ContextBuilder):
        def __init__(self, repository):
            super().__init__(repository, list_tests=True)
            self.extra = 1

        def _get_usage_example(self, symbol):
            raise AssertionError

    builder = Sub(host.small_host())
    with mock.patch.object(module.ContextBuilder, "MAX_SYMBOLS", 1), mock.patch.object(Sub, "_rank_symbols", None):
        assert len(builder.build_context_pack(host.TASK).symbols) == 3
    with pytest.raises(AttributeError):
        module.ContextBuilder.__new__(module.ContextBuilder).build_context_pack(host.TASK)


def test_any_text_passes_unharmed(build, tmp_path):
    names = ["lone\udcff", "nul\0inside", "\U0001f600smile", "İstanbul", "ΣΊΣΥΦΟΣ"]
    symbols = [host.Symbol(n + 1, name, file_id=n + 1, docstring=f"{name}\n@param {name} d") for n, name in enumerate(names)]
    paths = {n + 1: f"dir/{name}.py" for n, name in enumerate(names)}
    (tmp_path / "dir").mkdir()
    for name in names:
        if "\0" not in name:
            (tmp_path / "dir" / f"{name}.py").write_bytes(b"one\r\ntwo\rthree \xff\n")
    builder = build.ContextBuilder(host.small_host(symbols=symbols, paths=paths))
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
    builder = build.ContextBuilder(host.small_host(paths={1: "a.py"}))
    if isinstance(given, SimpleNamespace):
        with pytest.raises(TypeError):
            builder.build_context_pack(host.TASK, include_snippets=True, repo_root=given)
        builder.build_context_pack(host.TASK, repo_root=given)  # not looked at without snippets
        return
    pack = builder.build_context_pack(host.TASK, include_snippets=True, repo_root=given)
    assert pack.symbols[0]["snippet"] == "1\n2\n3"
    assert builder._extract_snippet(root(tmp_path / "a.py"), 2, 9, 0) == ("2\n3", 2)
    assert builder._extract_snippet(root(tmp_path / "a.py"), -(2**70), 2**70, 0, 2**70, 2**70) == ("1\n2\n3", 3)
    assert builder._extract_snippet(root(tmp_path), 1, 9, 0) == (None, 0)


def test_large_numbers_saturate(build):
    symbols = [host.Symbol(2**63 - 1, "reader", tokens=2**62), host.Symbol(2, "pool", tokens=2**62)]
    builder = build.ContextBuilder(host.small_host(symbols=symbols))
    pack = builder.build_context_pack(host.TASK, token_budget=2**63 - 1)
    assert len(pack.symbols) == 2 and pack.tokens_used >= 2**63 - 1
    assert builder.build_context_pack(host.TASK, -100).tokens_used == 0
