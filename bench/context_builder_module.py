#!/usr/bin/python3
"""Times the extension module against a plain-Python build of the same work.

Usage: /usr/bin/python3 bench/context_builder_module.py [DIRECTORY]

DIRECTORY holds the package with the module, by default build/release/python. Both builds run in this process, in
turn, over one host in memory, and must give equal packs. Reported per case: the median of the rounds of each, the
median of the ratios of neighbouring rounds, the host's own time (the same collaborator calls, replayed without a
builder), which both builds pay, and the ratio of what is left when it is taken off both.
"""

import argparse
import statistics
import sys
import tempfile
import time
from pathlib import Path
from types import SimpleNamespace

ROOT = Path(__file__).resolve().parents[1]
sys.path.insert(0, str(ROOT / "tests" / "python"))

import host  # noqa: E402

KEYWORDS = [
    "reader", "pool", "context", "builder", "budget", "token", "snippet", "packer", "ranking", "keyword",
]  # fmt: skip
KINDS = ["function", "method", "class", "interface", "variable", "constant", "struct", "module"]
DOCSTRINGS = [
    None,
    "Reads what is asked for and returns it.",
    """Packs entries until the budget is spent.

    Args:
        entries (list): what to pack, best first.
        budget: tokens that the pack may cost.

    Returns:
        The pack.
    """,
    """Opens a reader.

    :param path: where to read from, relative to
        the root.
    :type path: str
    :param mode: how to open it.
    :return: the reader.
    """,
    "Ranks.\n\n@param {string} query What to rank for.\n@param limit How many to return.\n@returns The ranking.",
]


def make_symbols():
    """500 symbols: for each keyword 50 that a wide search for it finds."""
    symbols = []
    for index in range(500):
        keyword = KEYWORDS[index // 50]
        file_id = index % 100 + 1
        name = keyword if index % 50 == 0 else f"{keyword.title()}{'Part' if index % 2 else '_entry'}{index}"
        symbols.append(
            host.Symbol(
                id=index + 1,
                name=name,
                kind=KINDS[index % len(KINDS)],
                file_id=file_id,
                fqn=f"service.storage.module_{file_id}.{name}",
                is_export=index % 3 != 0,
                start_line=index % 100 * 2 + 1,
                end_line=index % 100 * 2 + 20 + index % 30,
                signature=f"def {name}(self, argument: int) -> str",
                docstring=DOCSTRINGS[index % len(DOCSTRINGS)],
                tokens=20,
            )
        )
    return symbols


class CannedRepository(host.Repository):
    """Answers what would take a walk over all symbols from what was found before."""

    def __post_init__(self):
        super().__post_init__()
        self.answers = {}

    def search_symbols(self, pattern, limit=50, source_only=True):
        if pattern not in self.answers:
            self.answers[pattern] = super().search_symbols(pattern, limit, source_only)
        return self.answers[pattern]

    def get_symbols_by_file(self, file_id):
        if file_id not in self.answers:
            self.answers[file_id] = list(super().get_symbols_by_file(file_id))
        return self.answers[file_id]


def make_repository(symbols):
    paths = {file_id: f"service/storage/module_{file_id}.py" for file_id in range(1, 101)}
    references = {}
    for symbol, caller in zip(symbols, symbols[1:] + symbols[:1]):
        holder = {"fqn": caller.fqn, "kind": caller.kind, "name": caller.name}
        references[symbol.fqn] = [
            SimpleNamespace(usage_type="import", caller_symbol=None, context=f"from x import {symbol.name}"),
            SimpleNamespace(usage_type="call", caller_symbol=holder, context=f"    {symbol.name}(1)"),
        ]
    covering = [
        host.CoveringTest({path: (n % 3, f"tests/test_{n}.py") for path in list(paths.values())[n : n + 12]})
        for n in range(0, 96, 4)
    ]
    test_files = {f"service/storage/module_{file_id}.py" for file_id in range(96, 101)}
    fan_in = {symbol.id: symbol.id % 17 for symbol in symbols if symbol.id % 5}
    return CannedRepository(symbols, paths, test_files, fan_in, {}, covering, references)


def write_sources(root, repository):
    for number, path in repository.paths.items():
        file = root / path
        file.parent.mkdir(parents=True, exist_ok=True)
        lines = [f"    value_{line} = compute({line}, 'of module {number}')  # as before" for line in range(300)]
        file.write_text("\n".join(lines) + "\n", encoding="utf-8")


def cases(root):
    symbols = make_symbols()
    repository = make_repository(symbols)
    write_sources(root, repository)
    task = " ".join(KEYWORDS)
    hits = [(1.0 - n / 100, symbols[n * 7]) for n in range(25)]
    options = {"repo_root": root, "include_snippets": True, "token_budget": 20000}
    yield "keyword candidates, 25 entries", repository, None, task, {"wide_match": True, "token_budget": 4000}
    yield "keyword candidates, snippets", repository, None, task, {"wide_match": True, **options}
    yield "25 retriever seeds, snippets", repository, host.Retriever(hits), task, options
    yield "25 retriever seeds, no snippets", repository, host.Retriever(hits), task, {"token_budget": 4000}


def timed(build, rounds):
    start = time.process_time()  # what others do on the machine does not count
    for _ in range(rounds):
        build()
    return (time.process_time() - start) / rounds


def compare(plain, module, rounds=9):
    inner = max(1, int(0.05 / timed(module, 3)))
    pairs = [(timed(plain, max(1, inner // 4)), timed(module, inner)) for _ in range(rounds)]
    ratio = statistics.median(slow / fast for slow, fast in pairs)
    return statistics.median(p[0] for p in pairs), statistics.median(p[1] for p in pairs), ratio


def replayed(builder, repository, task, options):
    """The seconds that the host itself takes for the calls of one build."""
    calls = []
    recorder = host.Recorder(repository, calls)
    retriever = builder.retriever
    type(builder)(recorder, retriever, list_tests=True).build_context_pack(task, **options)

    def replay():
        for name, args, kwargs in calls:
            getattr(repository, name)(*args, **dict(kwargs))
        for _ in range(3):
            host.is_test_query(host.query_terms(task))
        host.query_names(task)
        if retriever is not None:
            retriever.retrieve(task, limit=25, include_tests=False)

    return timed(replay, 200)


def main():
    parser = argparse.ArgumentParser(description="Times the extension module against plain Python.")
    parser.add_argument("directory", nargs="?", default=str(ROOT / "build" / "release" / "python"))
    arguments = parser.parse_args()
    host.install_retrieval()
    plain, module = host.load_plain(), host.load_module(arguments.directory)

    with tempfile.TemporaryDirectory() as directory:
        print(f"{'case':34}{'plain ms':>10}{'module ms':>11}{'ratio':>8}{'host ms':>9}{'without host':>14}")
        for name, repository, retriever, task, options in cases(Path(directory)):
            builders = [m.ContextBuilder(repository, retriever, list_tests=True) for m in (plain, module)]
            builds = [lambda b=b: b.build_context_pack(task, **options) for b in builders]
            packs = [build().to_dict() for build in builds]
            if packs[0] != packs[1] or len(packs[0]["symbols"]) != 25:
                sys.exit(f"{name}: the packs differ or are short")
            slow, fast, ratio = compare(*builds)
            shared = replayed(builders[1], repository, task, options)
            print(
                f"{name:34}{slow * 1e3:10.3f}{fast * 1e3:11.3f}{ratio:7.1f}x"
                f"{shared * 1e3:9.3f}{(slow - shared) / (fast - shared):13.1f}x"
            )


if __name__ == "__main__":
    main()
