"""Threads, reference counts, and the end of the process."""

import gc
import subprocess
import sys
import threading
import weakref

import host


def a_world(module):
    """A host with everything, and its builds: good, refused, failing early, failing late."""
    symbol = host.Symbol(1, "reader\udcff", docstring="Args:\n  x: The x.\u00e9", signature="s")
    repository = host.small_host(symbols=[symbol, host.Symbol(2, "reader")])
    builder = module.ContextBuilder(repository, host.Retriever([(1.0, symbol)], "note"), list_tests=True)
    error = host.Failure("kept")

    def failing(operation):
        def fail(*args, **kwargs):
            raise error

        setattr(repository, operation, fail)
        try:
            builder.build_context_pack("reader", prefer_kinds=["class"])
        except host.Failure as caught:
            assert caught is error
        finally:
            error.__traceback__ = None  # an error that is raised again and again gathers frames
            delattr(repository, operation)

    def refused():
        try:
            builder.build_context_pack("reader", component_filter="missing")
        except ValueError:
            pass

    builds = [
        lambda: builder.build_context_pack("reader", component_filter="core").to_dict(),
        refused,
        lambda: failing("find_covering_tests"),
        lambda: failing("get_references"),
        lambda: failing("symbols_with_paths"),
        lambda: builder._rank_symbols(repository.symbols, ["reader"], seed_rank={1: 0}),
        lambda: module._CoveringTests(repository, 2).of("src/a.py"),
    ]
    return [symbol, repository, builder, error, symbol.name, symbol.docstring, repository.paths[1]], builds


def test_no_reference_leaks_or_is_lost_over_ten_thousand_builds(module, caplog):
    caplog.set_level("CRITICAL", logger=module.__name__)
    shared, builds = a_world(module)
    singles = [None, True, False, module.ContextPack, module.ContextBuilder, module]

    def rounds(count):
        for _ in range(count):
            for build in builds:
                build()
        gc.collect()
        return [sys.getrefcount(one) for one in shared + singles], len(gc.get_objects()), sys.getallocatedblocks()

    counts, objects, blocks = rounds(20)
    after_counts, after_objects, after_blocks = rounds(10_000 // len(builds))
    assert after_counts[: len(shared)] == counts[: len(shared)]
    # Those that the interpreter itself takes and drops may drift; one lost per round would be 1,400.
    assert all(abs(after - before) < 500 for before, after in zip(counts, after_counts))
    assert after_objects - objects < 50 and after_blocks - blocks < 500


def test_nothing_of_a_host_outlives_its_builds(module):
    shared, builds = a_world(module)
    for build in builds[:2]:
        build()
    watched = [weakref.ref(one) for one in shared[:3]]
    del shared, builds, build
    gc.collect()
    assert [reference() for reference in watched] == [None] * 3


def test_builds_on_several_threads(module):
    symbols = [host.Symbol(n + 1, f"reader_{n}", docstring="Args:\n" + f"    x{n}: y\n" * 2000) for n in range(30)]
    builder = module.ContextBuilder(host.small_host(symbols=symbols))
    choices = {"token_budget": 10**6, "wide_match": True}
    expected = builder.build_context_pack("reader", **choices).symbols
    failures, statuses, start = [], set(), threading.Barrier(5)

    def work():
        start.wait()
        for _ in range(25):
            pack = builder.build_context_pack("reader", **choices)
            statuses.add((pack.indexing_in_progress, pack.progress))
            if pack.symbols != expected:
                failures.append(pack)

    def report():
        start.wait()
        for progress in range(2000):
            builder.set_indexing_status(progress % 2 == 0, progress)

    threads = [threading.Thread(target=target) for target in [work] * 4 + [report]]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join(60)
    assert not failures and not any(thread.is_alive() for thread in threads)
    assert all(progress in range(2000) or progress == 100 for _, progress in statuses)


def test_other_threads_run_while_a_long_docstring_is_searched(module):
    docstring = "@param {a} b c\n" * 200_000
    begun, done = threading.Event(), threading.Event()

    def search():
        begun.set()
        module.ContextBuilder(None)._extract_parameters(docstring)
        done.set()

    interval = sys.getswitchinterval()
    sys.setswitchinterval(100)  # the lock is handed over only where it is released
    try:
        thread = threading.Thread(target=search)
        thread.start()
        begun.wait()
        assert not done.is_set(), "the search kept the lock to its end"
        thread.join()
    finally:
        sys.setswitchinterval(interval)


ENDING = """
import sys, threading, time
sys.path[:0] = {paths!r}
import conftest, host
symbols = [host.Symbol(n + 1, f"reader_{{n}}", docstring="Args:\\n" + "    x: y\\n" * 3000) for n in range(20)]
builder = conftest.MODULE.ContextBuilder(host.small_host(symbols=symbols))
def work():
    while True:
        builder.build_context_pack("reader", 10**6, wide_match=True)
for _ in range(4):
    threading.Thread(target=work, daemon=True).start()
time.sleep(0.1)
"""


def test_a_process_may_end_during_builds(directory):
    code = ENDING.format(paths=[str(host.ROOT / "tests" / "python"), str(directory)])
    for _ in range(5):
        ended = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, timeout=60)
        assert (ended.returncode, ended.stderr) == (0, "")
