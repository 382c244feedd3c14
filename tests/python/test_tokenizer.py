"""The tokenizer functions, which belong to another module, and the two functions of this one."""

import sys
from types import SimpleNamespace
from unittest import mock

import host
import pytest


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
    pack = build.ContextBuilder(host.small_host(), retriever).build_context_pack(task)
    assert all(words is terms for words in seen) and len(seen) == 2
    assert "Check for related API handlers and middleware." in pack.recommendations and "api" in asked
    (positional, named) = retriever.retrieve.call_args
    assert positional == (task,) and list(named.items()) == [("limit", 25), ("include_tests", "yes")]
    keyword = type("Word", (str,), {})("reader")
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


def test_names_of_an_absent_tokenizer_module_are_absent(module, retrieval):
    sys.modules[host.RETRIEVAL] = None
    with pytest.raises(AttributeError, match="has no attribute 'query_names'") as caught:
        module.query_names
    assert isinstance(caught.value.__cause__, ImportError) and not hasattr(module, "query_terms")
    with mock.patch.multiple(module, create=True, query_names=lambda task: [], query_terms=str.split):
        assert module.task_keywords("one two") == ["one", "two"]
    assert not hasattr(module, "query_names")


def test_estimate_tokens(build):
    assert [build.estimate_tokens(text) for text in (None, "", "é" * 8, " ", "\ud800" * 8)] == [0, 0, 2, 1, 2]
    assert build.estimate_tokens("x" * 10, chars_per_token=3) == 3 and build.estimate_tokens("", 0) == 0
    with pytest.raises(ZeroDivisionError):
        build.estimate_tokens("x", 0)
    assert build.estimate_tokens(text="x", chars_per_token=-1.0) == 1
