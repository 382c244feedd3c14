"""Errors on their way through a build, and the one place that survives them."""

import logging
import sys
from types import SimpleNamespace
from unittest import mock

import host
import pytest


OPERATIONS = [
    "search_symbols", "get_component_by_name", "get_files_by_component", "get_file_paths_batch",
    "production_fan_in", "test_paths", "symbols_with_paths", "get_symbols_by_file", "get_references",
    "get_symbol_by_fqn",
]  # fmt: skip


@pytest.mark.parametrize("error", [host.Failure("x"), KeyboardInterrupt(), SystemExit(3), KeyError("k"), OSError(2, "no")])
def test_errors_of_the_index_come_through(build, error):
    for operation in OPERATIONS:
        symbol = host.Symbol(1, "reader")
        reference = SimpleNamespace(usage_type="call", caller_symbol={"fqn": "f"}, context="")
        repository = host.small_host(references={symbol.fqn: [reference]}, symbols=[symbol, host.Symbol(2, "reader")])
        setattr(repository, operation, mock.Mock(side_effect=error))
        builder = build.ContextBuilder(repository, host.Retriever([(1.0, symbol)]))
        with pytest.raises(type(error)) as caught:
            builder.build_context_pack("reader", component_filter="core")
        assert caught.value is error, operation


@pytest.mark.parametrize("member", ["name", "fqn", "kind", "is_export", "id", "signature", "docstring", "start_line"])
def test_errors_of_members_come_through(build, member):
    error = host.Failure(member)

    class Broken(host.Symbol):
        def __getattribute__(self, name):
            if name == member and vars(self).get("armed"):
                raise error
            return super().__getattribute__(name)

    symbol = Broken(1, "reader")
    repository = host.small_host(symbols=[symbol])
    symbol.armed = True
    with pytest.raises(host.Failure) as caught:
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

    error = host.Failure("late")
    repository = host.small_host()
    repository.search_symbols = lambda pattern, limit, source_only: (one_and_fail(), 1, False)
    with pytest.raises(host.Failure) as caught:
        build.ContextBuilder(repository).build_context_pack("reader")
    assert caught.value is error

    ranks = [SimpleNamespace(alone=lambda path, rank=rank: SimpleNamespace(rank=rank, path="t")) for rank in (1, "b")]
    repository = host.small_host()
    repository.find_covering_tests = lambda paths: ranks
    with pytest.raises(TypeError, match="'<' not supported"):
        build.ContextBuilder(repository).build_context_pack("reader")


def test_failing_records_leave_what_was_found(build):
    error = LookupError("rank")
    seen = []
    broken = SimpleNamespace(alone=mock.Mock(side_effect=lambda path: seen.append(dict(tests.found)) or failing[path]()))
    failing = {"a": lambda: None, "b": mock.Mock(side_effect=error)}
    tests = build._CoveringTests(host.small_host(test_files={"t"}), 2)
    tests.repository.find_covering_tests = lambda paths: seen.append(dict(tests.found)) or [broken]
    with pytest.raises(LookupError) as caught:
        tests.look_up(["a", "t", "b"])
    assert caught.value is error and tests.found == {"t": [], "a": []} and not tests.failed
    assert seen == [{"t": []}, {"t": []}, {"t": [], "a": []}]  # what is found is there at once


def test_a_failing_walk_of_test_files_leaves_those_before(build):
    class TestFiles:
        def __iter__(self):
            yield "t"
            raise error

    error = host.Failure("walk")
    tests = build._CoveringTests(SimpleNamespace(test_paths=lambda paths: TestFiles()), 2)
    tests.look_up(["t", "a"])
    assert tests.found == {"t": []} and tests.failed and tests.of("t") == []


@pytest.mark.parametrize("answer, error", [((1, 2), ValueError), ((1, 2, 3, 4), ValueError), (None, TypeError)])
def test_answers_are_unpacked_as_python_unpacks(build, answer, error):
    repository = host.small_host()
    repository.search_symbols = lambda pattern, limit, source_only: answer
    with pytest.raises(error, match="unpack") as caught:
        build.ContextBuilder(repository).build_context_pack("reader")
    expected = {2: "not enough values to unpack (expected 3, got 2)", 4: "too many values to unpack (expected 3)"}
    assert str(caught.value) == expected.get(answer and len(answer), "cannot unpack non-iterable NoneType object")


def test_unknown_component(build):
    repository = host.small_host()
    for name in ("nowhere", "nul\0inside", "lone \udcff", "\U0001f600"):
        with pytest.raises(ValueError) as caught:
            build.ContextBuilder(repository, host.Retriever()).build_context_pack(host.TASK, 800, name)
        assert type(caught.value) is ValueError and str(caught.value) == f"Unknown component: {name}"
    repository.components["zero"] = (0, [])
    with pytest.raises(ValueError):
        build.ContextBuilder(repository)._component_files("zero")
    assert build.ContextBuilder(repository)._component_files("") is None


def test_wrong_types_are_named(module):
    builder = module.ContextBuilder(host.small_host())
    with pytest.raises(TypeError, match="token_budget must be an integer, not str"):
        builder.build_context_pack(host.TASK, "800")
    with pytest.raises(TypeError, match="missing required argument"):
        builder.build_context_pack()
    with pytest.raises(OverflowError, match="token_budget does not fit"):
        builder.build_context_pack(host.TASK, 2**64)
    for member, value in (("name", None), ("docstring", 5), ("id", "one"), ("tokens", "ten")):
        symbol = host.Symbol(1, "reader")
        repository = host.small_host(symbols=[symbol])
        setattr(symbol, member, value)
        with pytest.raises(TypeError, match={"tokens": "token_count"}.get(member, member)):
            module.ContextBuilder(repository).build_context_pack("reader")
    with pytest.raises(TypeError, match="a keyword must be a str, not NoneType"):
        builder._calculate_name_match(host.Symbol(1, "reader"), [None, "reader"])
    for function in ("query_names", "query_terms"):
        with mock.patch.object(module, function, lambda task: ["reader", None]):
            with pytest.raises(TypeError, match=f"of {function} must be a str, not NoneType"):
                module.task_keywords("x")


def failing_tests(error, where="find_covering_tests"):
    repository = host.small_host()
    setattr(repository, where, mock.Mock(side_effect=error))
    return repository


def test_failed_look_up_is_logged(build, caplog):
    error = host.Failure("index")

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
    assert record.exc_info == (host.Failure, error, error.__traceback__) and error.__traceback__ is not None
    assert seen == [(False, error)] and tests.failed
    assert tests.of("src/a.py") == [] and len(caplog.records) == 1

    pack = build.ContextBuilder(failing_tests(error)).build_context_pack(host.TASK)
    assert pack.notes == [build._NO_TESTS] and len(pack.symbols) == 3


@pytest.mark.parametrize("interrupt", [KeyboardInterrupt(), SystemExit(1), GeneratorExit()])
def test_interrupts_pass_the_guarded_look_up(build, interrupt, caplog):
    with pytest.raises(type(interrupt)) as caught:
        build.ContextBuilder(failing_tests(interrupt)).build_context_pack(host.TASK)
    assert caught.value is interrupt and not caplog.records


def test_errors_of_the_logger_come_through(build):
    error = host.Failure("log")
    cause = host.Failure("index")
    with mock.patch.object(build, "logger", mock.Mock(warning=mock.Mock(side_effect=error))):
        with pytest.raises(host.Failure) as caught:
            build.ContextBuilder(failing_tests(cause)).build_context_pack(host.TASK)
    assert caught.value is error and error.__context__ is cause
