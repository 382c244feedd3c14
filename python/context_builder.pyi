"""Builds context packs: the code symbols most relevant to a coding task, within a token budget."""

import logging
import os
from collections.abc import Collection, Iterable, Mapping, Sequence
from dataclasses import dataclass, field
from typing import Any

# The objects of the host: asked for nothing but what a step uses, so any object with those members serves.
_Repository = Any
_Retriever = Any
_Symbol = Any

MAX_SNIPPET_LINES_PER_SYMBOL: int
MAX_TOTAL_SNIPPET_LINES: int
ABS_MAX_TOTAL_SNIPPET_LINES: int
_MIN_KEYWORD: int
_NO_TESTS: str
logger: logging.Logger

def task_keywords(task: str) -> list[str]: ...
def estimate_tokens(text: str | None, chars_per_token: float = 4.0) -> int: ...

# Those of tarnwick.workers.retrieval, unless the host has set its own here.
def query_names(task: str, /) -> Sequence[str]: ...
def query_terms(task: str, /) -> Collection[str]: ...
def is_test_query(terms: Collection[str], /) -> bool: ...

@dataclass
class RankedSymbol:
    symbol: _Symbol
    score: float
    file_path: str | None = None

@dataclass
class ContextPack:
    symbols: list[dict[str, Any]] = field(default_factory=list)
    files: list[str] = field(default_factory=list)
    tests: list[dict[str, str]] = field(default_factory=list)
    recommendations: list[str] = field(default_factory=list)
    notes: list[str] = field(default_factory=list)
    tokens_used: int = 0
    indexing_in_progress: bool = False
    progress: int = 100

    def to_dict(self) -> dict[str, Any]: ...

@dataclass
class _CoveringTests:
    repository: _Repository
    per_file: int
    found: dict[str, list[str]] = field(default_factory=dict)
    failed: bool = False

    def look_up(self, paths: Iterable[str | None]) -> None: ...
    def of(self, path: str | None) -> list[str]: ...

class ContextBuilder:
    NAME_MATCH_WEIGHT: float
    EXPORT_WEIGHT: float
    PREFERRED_KIND_BOOST: float
    COMPONENT_WIDENING: int
    TESTED_FILES: int
    TESTS_PER_FILE: int
    TESTS_SHARE: float
    MIN_RELEVANCE_SCORE: float
    MAX_SYMBOLS: int
    SEED_BASE_SCORE: float
    SEED_RANK_STEP: float
    KIND_WEIGHTS: dict[str, float]
    KIND_PRIORITY: dict[str, int]

    repository: _Repository
    retriever: _Retriever | None
    list_tests: bool
    _indexing_in_progress: bool
    _indexing_progress: int

    def __init__(
        self, repository: _Repository, retriever: _Retriever | None = None, *, list_tests: bool = False
    ) -> None: ...
    def set_indexing_status(self, in_progress: bool, progress: int = 100) -> None: ...
    def build_context_pack(
        self,
        task: str,
        token_budget: int = 800,
        component_filter: str | None = None,
        include_snippets: bool = False,
        repo_root: str | os.PathLike[str] | None = None,
        prefer_kinds: Collection[str] | None = None,
        source_only: bool = True,
        wide_match: bool = False,
        deep_fqns: Collection[str] | None = None,
        seed_symbols: Iterable[_Symbol] | None = None,
    ) -> ContextPack: ...
    def _component_files(self, component_filter: str | None) -> set[int] | None: ...
    def _get_candidate_symbols(
        self,
        keywords: Sequence[str],
        component_filter: str | None,
        source_only: bool = True,
        wide_match: bool = False,
    ) -> list[_Symbol]: ...
    def _retrieved(
        self,
        retriever: _Retriever,
        task: str,
        include_tests: bool,
        limit: int,
        prefer_kinds: Collection[str] | None,
    ) -> tuple[list[_Symbol], str | None]: ...
    def _calculate_name_match(self, symbol: _Symbol, keywords: Sequence[str]) -> float: ...
    def _calculate_relevance_score(
        self, symbol: _Symbol, keywords: Sequence[str], prefer_kinds: Collection[str] | None = None
    ) -> float: ...
    def _rank_symbols(
        self,
        candidates: Sequence[_Symbol],
        keywords: Sequence[str],
        include_tests: bool = False,
        prefer_kinds: Collection[str] | None = None,
        seed_rank: Mapping[int, int] | None = None,
    ) -> list[RankedSymbol]: ...
    def _extract_snippet(
        self,
        file_path: str | os.PathLike[str],
        start_line: int,
        end_line: int,
        total_lines_so_far: int,
        max_lines: int = 50,
        total_cap: int = 500,
    ) -> tuple[str | None, int]: ...
    def _build_pack(
        self,
        ranked: Sequence[RankedSymbol],
        max_tokens: int,
        include_snippets: bool = False,
        repo_root: str | os.PathLike[str] | None = None,
        deep_fqns: Collection[str] | None = None,
        deep_max_lines: int = 200,
    ) -> ContextPack: ...
    def _tested_sources(self, ranked: Sequence[RankedSymbol]) -> list[str]: ...
    def _test_rows(self, sources: Sequence[str], tests: _CoveringTests) -> list[tuple[dict[str, str], int]]: ...
    def _extract_parameters(self, docstring: str | None) -> list[dict[str, str]] | None: ...
    def _get_related_symbols(
        self, symbol: _Symbol, file_path: str | None, limit: int = 3
    ) -> list[dict[str, str]] | None: ...
    def _get_usage_example(self, symbol: _Symbol) -> str | None: ...
    def _generate_recommendations(self, task: str, symbols: Sequence[Mapping[str, Any]]) -> list[str]: ...
