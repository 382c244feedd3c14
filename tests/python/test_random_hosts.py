"""Random hosts get the same pack, and see the same calls, from the module and from plain Python."""

import tempfile
from pathlib import Path
from random import Random
from types import SimpleNamespace

import host
from hypothesis import HealthCheck, given, settings
from hypothesis import strategies as st

WORDS = ["reader", "Reader", "read_er", "pool", "API", "api", "test", "tests", "endpoint", "endpoints", "of", "İx", "σς", "ab"]
KINDS = ["class", "function", "method", "variable", "property", "trait", "other", ""]
PATHS = ["src/a.py", "src/b.py", "src/ü.py", "tests/test_a.py", "tests/test_b.py", ""]
DOCSTRINGS = st.none() | st.sampled_from(
    ["", " ", "Args:\n    x (int): The x.\n    y: The y.\n\nReturns: z", ":param a: b\n:type a: c\n:param a: d", "\udcff"]
) | st.text("Args: \n:paramtypeturn{}@()xy\u00e9\udc80", max_size=60)  # fmt: skip

names = st.sampled_from(WORDS) | st.builds("{}_{}".format, st.sampled_from(WORDS), st.integers(0, 3))
symbols = st.builds(
    host.Symbol,
    id=st.none() | st.integers(0, 12),
    name=names,
    kind=st.sampled_from(KINDS),
    file_id=st.none() | st.integers(0, 6),
    fqn=st.sampled_from(["", "x.Reader", "api.y"]),
    is_export=st.sampled_from([True, False, None, 1]),
    start_line=st.integers(-1, 12),
    end_line=st.integers(-1, 14),
    signature=st.sampled_from([None, "", "def f()"]),
    docstring=DOCSTRINGS,
    tokens=st.integers(0, 60),
)
numbers = st.integers(0, 5) | st.floats(0, 5) | st.booleans() | st.fractions(0, 5)
callers = st.none() | st.dictionaries(st.sampled_from(["fqn", "kind", "name"]), st.sampled_from(["", "x.Reader", "f"]))
references = st.builds(
    SimpleNamespace,
    usage_type=st.sampled_from(["call", "import"]),
    caller_symbol=callers,
    context=st.sampled_from([None, "", "  ", "  x = f() "]),
)
paths = st.sampled_from(PATHS)
repositories = st.builds(
    host.Repository,
    symbols=st.lists(symbols, max_size=40),
    paths=st.dictionaries(st.integers(0, 6), paths),
    test_files=st.sets(st.sampled_from(PATHS[3:])),
    fan_in=st.dictionaries(st.integers(0, 12), numbers),
    components=st.just({"core": (3, [1, 2, 0, None, 4]), "empty": (4, []), "zero": (0, [])}),
    covering=st.lists(
        st.builds(host.CoveringTest, st.dictionaries(paths, st.tuples(st.integers(0, 3), paths))), max_size=6
    ),
    references=st.dictionaries(st.sampled_from(["x.Reader", "api.y"]), st.lists(references, max_size=3)),
)
rankings = st.lists(st.tuples(st.sampled_from([0.2, 0.4, 0.6, 0.9]), symbols), max_size=30)
retrievers = st.none() | st.builds(host.Retriever, rankings, st.sampled_from([None, "", "partly ranked"]))
kinds = st.none() | st.lists(st.sampled_from(KINDS), max_size=3) | st.sets(st.sampled_from(KINDS), max_size=3)
options = st.fixed_dictionaries(
    {},
    optional={
        "token_budget": st.integers(-50, 300),
        "component_filter": st.sampled_from([None, "", "core", "empty", "zero", "missing"]),
        "include_snippets": st.booleans(),
        "prefer_kinds": kinds,
        "source_only": st.booleans(),
        "wide_match": st.booleans(),
        "deep_fqns": st.none() | st.sets(st.sampled_from(["x.Reader", "api.y"])),
        "seed_symbols": st.none() | st.lists(symbols, max_size=30),
    },
)
tasks = st.lists(st.sampled_from(WORDS), max_size=12).map(" ".join)

SOURCE = "".join(f"line {number}\n" for number in range(8)) + "   \n\n\tend"


def outcome(build, repository, retriever, list_tests, task, choices):
    """What a build gave, or the error it ended with, and the calls that the host saw."""
    calls = []
    index = host.Recorder(repository, calls)
    ranker = None if retriever is None else host.Recorder(retriever, calls)
    builder = build.ContextBuilder(index, ranker, list_tests=list_tests)
    try:
        result = builder.build_context_pack(task, **choices).to_dict()
        result = (list(result), [list(entry) for entry in result["symbols"]], result)
    except ValueError as error:
        result = str(error)
    return result, calls


def check_invariants(pack, choices):
    files = [entry["file"] for entry in pack["symbols"] if entry["file"]]
    assert pack["files"] == list(dict.fromkeys(files))
    assert len(pack["symbols"]) <= 25 and len(pack["recommendations"]) <= 3 and len(pack["tests"]) <= 10
    assert {row["for"] for row in pack["tests"]} <= set(files)
    assert pack["tokens_used"] <= max(0, int(choices.get("token_budget", 800) * 1.05))


@settings(max_examples=400, deadline=None, suppress_health_check=list(HealthCheck))
@given(repository=repositories, retriever=retrievers, list_tests=st.booleans(), task=tasks, choices=options)
def test_module_and_plain_python_agree(repository, retriever, list_tests, task, choices):
    from conftest import MODULE, PLAIN

    with tempfile.TemporaryDirectory() as root:
        for path in PATHS[:3]:
            file = Path(root, path)
            file.parent.mkdir(exist_ok=True)
            file.write_text(SOURCE)
        choices["repo_root"] = root
        arguments = (repository, retriever, list_tests, task, choices)
        expected, expected_calls = outcome(PLAIN, *arguments)
        found, found_calls = outcome(MODULE, *arguments)
    assert found_calls == expected_calls
    assert found == expected
    if not isinstance(found, str):
        check_invariants(found[2], choices)


@settings(max_examples=300, deadline=None)
@given(st.text("Args: \n\t:paramtypeturn{}@()xy\u00e9\u2003\x1c\udc80\ufdd0", max_size=120))
def test_docstrings_are_read_alike(docstring):
    for text in (docstring, "Args:\n  " + docstring, ":param x: " + docstring, "@param {" + docstring):
        check_docstring(text)


def check_docstring(text):
    from conftest import MODULE, PLAIN

    found, expected = (build.ContextBuilder(None)._extract_parameters(text) for build in (MODULE, PLAIN))
    assert found == expected, text


PIECES = ["Args:", "args:", "\n", "\n", "\n", " ", "  ", "x", "yy", ":", ":", "(", ")", "{", "}", "@", "@param",
          "@param ", ":param ", ":type ", "\x1c", "\u2003", "\u00e9", "*"]  # fmt: skip


def test_docstrings_made_of_what_the_patterns_speak_of_are_read_alike():
    random = Random(11)
    for run in range(60_000):
        check_docstring(("Args:", "@param {", ":param ")[run % 3] + "".join(random.choices(PIECES, k=random.randrange(16))))
