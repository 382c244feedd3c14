"""The context builder in plain Python: what the extension module is timed against and compared with.

It does the same work with the same names and gives equal packs. Written the way such code is usually written,
neither tuned for speed nor slowed down.
"""

from __future__ import annotations

import json
import logging
import re
import sys
from collections import Counter
from dataclasses import dataclass, field
from pathlib import Path

logger = logging.getLogger("tarnwick.workers.context_builder")

MAX_SNIPPET_LINES_PER_SYMBOL = 50
MAX_TOTAL_SNIPPET_LINES = 500
ABS_MAX_TOTAL_SNIPPET_LINES = 2000
_MIN_KEYWORD = 3
_NO_TESTS = "The tests of the files could not be read (see the log)"

_TOKENIZER = ("query_names", "query_terms", "is_test_query")
_RETRIEVAL = "tarnwick.workers.retrieval"

_TYPES = re.compile(r":type\s+(\w+):\s*(.+?)(?=\n|:param|:type|:return|$)", re.DOTALL)
_GOOGLE_SECTION = re.compile(r"Args:\s*\n((?:\s+\w+.*:.+\n?)+)", re.IGNORECASE)
_GOOGLE_LINE = re.compile(r"\s*(\w+)(?:\s*\(([^)]+)\))?:\s*(.+)")
_SPHINX = re.compile(r":param\s+(\w+):\s*(.+?)(?=:param|:type|:return|$)", re.DOTALL)
_TAG = re.compile(r"@param\s+(?:\{([^}]+)\}\s+)?(\w+)\s+(.+?)(?=@|$)", re.DOTALL)


def __getattr__(name):
    if name in _TOKENIZER:
        module = sys.modules.get(_RETRIEVAL) or __import__(_RETRIEVAL, fromlist=[name])
        return getattr(module, name)
    raise AttributeError(f"module {__name__!r} has no attribute {name!r}")


def _tokenizer(name):
    return getattr(sys.modules[__name__], name)


def task_keywords(task):
    """The words of a task that symbol names are matched against."""
    words = [name.lower() for name in _tokenizer("query_names")(task)]
    words.extend(_tokenizer("query_terms")(task))
    return [word for word in dict.fromkeys(words) if len(word) >= _MIN_KEYWORD]


def estimate_tokens(text, chars_per_token=4.0):
    """Roughly how many tokens a text costs."""
    if not text:
        return 0
    return max(1, int(len(text) / chars_per_token))


@dataclass
class RankedSymbol:
    """A symbol with its relevance score for ranking."""

    symbol: object
    score: float
    file_path: str | None = None


@dataclass
class ContextPack:
    """A token-budgeted context pack for a coding task."""

    symbols: list = field(default_factory=list)
    files: list = field(default_factory=list)
    tests: list = field(default_factory=list)
    recommendations: list = field(default_factory=list)
    notes: list = field(default_factory=list)
    tokens_used: int = 0
    indexing_in_progress: bool = False
    progress: int = 100

    def to_dict(self):
        """The pack as it is serialised."""
        result = {
            "symbols": self.symbols,
            "files": self.files,
            "tests": self.tests,
            "recommendations": self.recommendations,
        }
        if self.notes:
            result["notes"] = self.notes
        result["tokens_used"] = self.tokens_used
        result["indexing_in_progress"] = self.indexing_in_progress
        result["progress"] = self.progress
        return result


@dataclass
class _CoveringTests:
    """The covering tests of one pack's files."""

    repository: object
    per_file: int
    found: dict = field(default_factory=dict)
    failed: bool = False

    def look_up(self, paths):
        """Finds the tests of the source files among `paths`, in one query."""
        candidates = [path for path in dict.fromkeys(paths) if path and path not in self.found]
        if not candidates or self.failed:
            return
        try:
            test_files = self.repository.test_paths(candidates)
            for path in test_files:
                self.found[path] = []
            wanted = [path for path in candidates if path not in test_files]
            if not wanted:
                return
            tests = self.repository.find_covering_tests(wanted)
        except Exception as error:
            logger.warning(
                "context: the tests of %s could not be read", ", ".join(candidates), exc_info=error
            )
            self.failed = True
            return
        for path in wanted:
            reaching = [alone for test in tests if (alone := test.alone(path)) is not None]
            reaching.sort(key=lambda alone: alone.rank)
            self.found[path] = [alone.path for alone in reaching[: self.per_file]]

    def of(self, path):
        """The tests of one file, best first."""
        if not path:
            return []
        self.look_up([path])
        if self.failed:
            return []
        return self.found.get(path, [])


class ContextBuilder:
    """Builds context packs."""

    NAME_MATCH_WEIGHT = 0.5
    EXPORT_WEIGHT = 0.3
    PREFERRED_KIND_BOOST = 1.5
    COMPONENT_WIDENING = 4
    TESTED_FILES = 5
    TESTS_PER_FILE = 2
    TESTS_SHARE = 0.15
    MIN_RELEVANCE_SCORE = 0.3
    MAX_SYMBOLS = 25
    SEED_BASE_SCORE = 10.0
    SEED_RANK_STEP = 0.001
    KIND_WEIGHTS = {
        "class": 2.5,
        "interface": 2.5,
        "struct": 2.5,
        "trait": 2.2,
        "enum": 2.0,
        "function": 1.8,
        "method": 1.8,
        "module": 1.5,
        "namespace": 1.5,
        "type": 1.6,
        "variable": 0.3,
        "constant": 0.35,
        "field": 0.35,
        "property": 0.4,
    }
    KIND_PRIORITY = {
        "class": 100,
        "interface": 100,
        "struct": 100,
        "trait": 90,
        "enum": 85,
        "function": 80,
        "method": 80,
        "module": 70,
        "namespace": 70,
        "type": 75,
        "property": 20,
        "field": 15,
        "constant": 10,
        "variable": 5,
    }

    def __init__(self, repository, retriever=None, *, list_tests=False):
        self.repository = repository
        self.retriever = retriever
        self.list_tests = list_tests
        self._indexing_in_progress = False
        self._indexing_progress = 100

    def set_indexing_status(self, in_progress, progress=100):
        """Sets the status that packs built from now on carry."""
        self._indexing_in_progress = in_progress
        self._indexing_progress = progress

    def build_context_pack(
        self,
        task,
        token_budget=800,
        component_filter=None,
        include_snippets=False,
        repo_root=None,
        prefer_kinds=None,
        source_only=True,
        wide_match=False,
        deep_fqns=None,
        seed_symbols=None,
    ):
        """Builds the pack of a task."""
        keywords = task_keywords(task)
        include_tests = _tokenizer("is_test_query")(_tokenizer("query_terms")(task))
        component_files = self._component_files(component_filter)

        notes = []
        if seed_symbols is None and self.retriever is not None:
            widening = self.COMPONENT_WIDENING if component_files is not None else 1
            limit = self.MAX_SYMBOLS * widening
            seed_symbols, note = self._retrieved(self.retriever, task, include_tests, limit, prefer_kinds)
            if note:
                notes.append(note)

        seed_rank = {}
        seeded = []
        for symbol in seed_symbols if seed_symbols is not None else ():
            if symbol.id is None or symbol.id in seed_rank:
                continue
            if component_files is not None and symbol.file_id not in component_files:
                continue
            seed_rank[symbol.id] = len(seed_rank)
            seeded.append(symbol)

        ranked = self._rank_symbols(
            seeded, keywords, include_tests=include_tests, prefer_kinds=prefer_kinds, seed_rank=seed_rank
        )
        if len(ranked) < self.MAX_SYMBOLS:
            candidates = self._get_candidate_symbols(
                keywords, component_filter, source_only, wide_match=wide_match
            )
            candidates = [symbol for symbol in candidates if symbol.id not in seed_rank]
            ranked.extend(
                self._rank_symbols(candidates, keywords, include_tests=include_tests, prefer_kinds=prefer_kinds)
            )

        max_tokens = int(token_budget * 1.05)
        pack = self._build_pack(ranked, max_tokens, include_snippets, repo_root, deep_fqns)
        pack.notes[:0] = notes
        pack.recommendations = self._generate_recommendations(task, pack.symbols)
        pack.indexing_in_progress = self._indexing_in_progress
        pack.progress = self._indexing_progress
        return pack

    def _retrieved(self, retriever, task, include_tests, limit, prefer_kinds):
        result = retriever.retrieve(task, limit=limit, include_tests=include_tests)
        hits = list(result.hits)
        if prefer_kinds:
            hits.sort(
                key=lambda hit: hit.score
                * (self.PREFERRED_KIND_BOOST if hit.symbol.kind in prefer_kinds else 1.0),
                reverse=True,
            )
        ids = [hit.symbol.id for hit in hits]
        found = self.repository.symbols_with_paths(ids)
        return [found[symbol_id][0] for symbol_id in ids if symbol_id in found], result.note

    def _component_files(self, component_filter):
        if not component_filter:
            return None
        component = self.repository.get_component_by_name(component_filter)
        if component is None or not component.id:
            raise ValueError(f"Unknown component: {component_filter}")
        return {file.id for file in self.repository.get_files_by_component(component.id) if file.id}

    def _get_candidate_symbols(self, keywords, component_filter, source_only=True, wide_match=False):
        candidates = []
        seen_ids = set()
        for keyword in keywords[:10]:
            pattern = keyword
            if wide_match and len(keyword) > 2:
                pattern = "%" + keyword.replace("%", "") + "%"
            symbols, _, _ = self.repository.search_symbols(pattern, limit=50, source_only=source_only)
            for symbol in symbols:
                if symbol.id and symbol.id not in seen_ids:
                    seen_ids.add(symbol.id)
                    candidates.append(symbol)
        component_files = self._component_files(component_filter)
        if component_files is not None:
            candidates = [symbol for symbol in candidates if symbol.file_id in component_files]
        return candidates

    def _calculate_name_match(self, symbol, keywords):
        name_lower = symbol.name.lower()
        fqn_lower = symbol.fqn.lower()
        max_score = 0.0
        for keyword in keywords:
            keyword_lower = keyword.lower()
            if keyword_lower == name_lower:
                max_score = max(max_score, 1.0)
            elif name_lower.startswith(keyword_lower):
                max_score = max(max_score, 0.8)
            elif keyword_lower in name_lower:
                max_score = max(max_score, 0.6)
            elif keyword_lower in fqn_lower:
                max_score = max(max_score, 0.4)
        return max_score

    def _calculate_relevance_score(self, symbol, keywords, prefer_kinds=None):
        name_score = self._calculate_name_match(symbol, keywords)
        export_score = 1.0 if symbol.is_export else 0.0
        total = name_score * self.NAME_MATCH_WEIGHT + export_score * self.EXPORT_WEIGHT
        kind_weight = self.KIND_WEIGHTS.get(symbol.kind, 1.0)
        if prefer_kinds and symbol.kind in prefer_kinds:
            kind_weight *= self.PREFERRED_KIND_BOOST
        return total * kind_weight

    def _rank_symbols(self, candidates, keywords, include_tests=False, prefer_kinds=None, seed_rank=None):
        symbol_to_path = self.repository.get_file_paths_batch(candidates)
        seed_rank = seed_rank or {}
        scored = [s.id for s in candidates if s.id is not None and s.id not in seed_rank]
        fan_in = self.repository.production_fan_in(scored) if scored else {}
        test_files = () if include_tests else self.repository.test_paths(list(symbol_to_path.values()))

        ranked = []
        for symbol in candidates:
            score = self._calculate_relevance_score(symbol, keywords, prefer_kinds)
            file_path = symbol_to_path.get(symbol.id) if symbol.id else None
            if file_path is not None and file_path in test_files:
                continue
            if symbol.id is not None and symbol.id in seed_rank:
                score = self.SEED_BASE_SCORE - seed_rank[symbol.id] * self.SEED_RANK_STEP
            elif score < self.MIN_RELEVANCE_SCORE:
                continue
            ranked.append(RankedSymbol(symbol=symbol, score=score, file_path=file_path))
        ranked.sort(
            key=lambda item: (
                round(item.score, 4),
                self.KIND_PRIORITY.get(item.symbol.kind, 0),
                fan_in.get(item.symbol.id or 0, 0),
            ),
            reverse=True,
        )
        return ranked

    def _extract_snippet(
        self,
        file_path,
        start_line,
        end_line,
        total_lines_so_far,
        max_lines=MAX_SNIPPET_LINES_PER_SYMBOL,
        total_cap=MAX_TOTAL_SNIPPET_LINES,
    ):
        remaining_lines = total_cap - total_lines_so_far
        if remaining_lines <= 0:
            return None, 0
        path = Path(file_path)
        try:
            if not path.is_file():
                return None, 0
            with open(path, encoding="utf-8", errors="replace") as file:
                lines = file.readlines()
        except (OSError, ValueError):
            return None, 0
        snippet_start = max(0, start_line - 1)
        snippet_end = min(len(lines), end_line)
        count = snippet_end - snippet_start
        if count > max_lines:
            snippet_end = snippet_start + max_lines
            count = max_lines
        if count > remaining_lines:
            snippet_end = snippet_start + remaining_lines
            count = remaining_lines
        if count <= 0:
            return None, 0
        return "".join(lines[snippet_start:snippet_end]).rstrip(), count

    def _build_pack(
        self, ranked, max_tokens, include_snippets=False, repo_root=None, deep_fqns=None, deep_max_lines=200
    ):
        pack = ContextPack()
        seen_files = set()
        total_snippet_lines = 0
        ranked = ranked[: self.MAX_SYMBOLS]
        tests = _CoveringTests(self.repository, self.TESTS_PER_FILE)
        tested = self._tested_sources(ranked)
        tests.look_up(tested)
        test_rows = self._test_rows(tested, tests) if self.list_tests else []
        kept_for_tests = 0
        if test_rows:
            kept_for_tests = min(sum(cost for _, cost in test_rows), int(max_tokens * self.TESTS_SHARE))
        total_cap = min(ABS_MAX_TOTAL_SNIPPET_LINES, max(MAX_TOTAL_SNIPPET_LINES, max_tokens // 5))

        for item in ranked:
            symbol, file_path = item.symbol, item.file_path
            snippet, snippet_lines = None, 0
            if include_snippets and file_path and repo_root is not None:
                deep = deep_fqns and symbol.fqn in deep_fqns
                snippet, snippet_lines = self._extract_snippet(
                    Path(repo_root) / file_path,
                    symbol.start_line,
                    symbol.end_line,
                    total_snippet_lines,
                    max_lines=deep_max_lines if deep else MAX_SNIPPET_LINES_PER_SYMBOL,
                    total_cap=total_cap,
                )
            token_cost = symbol.token_count()
            if symbol.docstring:
                token_cost += estimate_tokens(symbol.docstring)
            if snippet:
                token_cost += estimate_tokens(snippet)
            if pack.tokens_used + token_cost > max_tokens - kept_for_tests:
                continue
            pack.symbols.append(self._entry(symbol, file_path, snippet, len(pack.symbols), tests))
            if snippet:
                total_snippet_lines += snippet_lines
            pack.tokens_used += token_cost
            if file_path and file_path not in seen_files:
                seen_files.add(file_path)
                pack.files.append(file_path)

        for row, cost in test_rows:
            if row["for"] in seen_files and pack.tokens_used + cost <= max_tokens:
                pack.tests.append(row)
                pack.tokens_used += cost
        if tests.failed:
            pack.notes.append(_NO_TESTS)
        return pack

    def _entry(self, symbol, file_path, snippet, taken, tests):
        entry = {
            "fqn": symbol.fqn,
            "name": symbol.name,
            "kind": symbol.kind,
            "file": file_path or "",
            "line": symbol.start_line,
            "signature": symbol.signature,
            "docstring": symbol.docstring,
            "docstring_truncated": symbol.docstring_truncated,
        }
        if parameters := self._extract_parameters(symbol.docstring):
            entry["parameters"] = parameters
        if taken < 5 and (related := self._get_related_symbols(symbol, file_path)):
            entry["related"] = related
        if taken < 3 and (usage := self._get_usage_example(symbol)):
            entry["usage_example"] = usage
        if taken < 5 and tests.of(file_path):
            entry["has_tests"] = True
        if snippet:
            entry["snippet"] = snippet
        return entry

    def _tested_sources(self, ranked):
        paths = list(dict.fromkeys(item.file_path for item in ranked if item.file_path))
        test_files = self.repository.test_paths(paths)
        return [path for path in paths if path not in test_files][: self.TESTED_FILES]

    def _test_rows(self, sources, tests):
        rows = []
        listed = set()
        for source in sources:
            for test in tests.of(source):
                if test in listed:
                    continue
                listed.add(test)
                row = {"file": test, "for": source}
                rows.append((row, estimate_tokens(json.dumps(row, ensure_ascii=False))))
        return rows

    def _extract_parameters(self, docstring):
        if not docstring:
            return None
        parameters = []
        seen_names = set()
        param_types = {match[1]: match[2].strip() for match in _TYPES.finditer(docstring)}

        def add(name, description, param_type):
            if name in seen_names:
                return
            seen_names.add(name)
            record = {"name": name, "description": description.strip()}
            if param_type is not None:
                record["type"] = param_type.strip()
            parameters.append(record)

        if section := _GOOGLE_SECTION.search(docstring):
            for line in section[1].strip().split("\n"):
                if match := _GOOGLE_LINE.match(line):
                    add(match[1], match[3], match[2])
        for match in _SPHINX.finditer(docstring):
            add(match[1], match[2], param_types.get(match[1]))
        for match in _TAG.finditer(docstring):
            add(match[2], match[3], match[1])
        return parameters or None

    def _get_related_symbols(self, symbol, file_path, limit=3):
        if not file_path or not symbol.file_id:
            return None
        related = [
            {"fqn": other.fqn, "kind": other.kind}
            for other in self.repository.get_symbols_by_file(symbol.file_id)
            if other.fqn != symbol.fqn and other.kind in ("class", "function", "method")
        ]
        return related[:limit] or None

    def _get_usage_example(self, symbol):
        if not symbol.id:
            return None
        references, _ = self.repository.get_references(symbol.fqn)
        if not references:
            return None
        reference = next((r for r in references if r.usage_type == "call"), references[0])
        caller = reference.caller_symbol
        if not caller:
            return reference.context.strip() if reference.context else None
        if caller_fqn := caller.get("fqn"):
            calling = self.repository.get_symbol_by_fqn(caller_fqn)
            if calling is not None and calling.signature:
                return f"Used in: {calling.signature}"
        name = caller["name"] if "name" in caller else reference.context or ""
        if kind := caller.get("kind") or "":
            return f"Called by {kind} `{name}`"
        return name or None

    def _generate_recommendations(self, task, symbols):
        type_counts = Counter(entry.get("kind", "unknown") for entry in symbols)
        recommendations = []
        if not symbols:
            recommendations.append("No matching symbols found. Try broader search terms.")
        elif len(symbols) < 5:
            recommendations.append("Few symbols matched. Consider exploring related components.")
        terms = _tokenizer("query_terms")(task)
        if _tokenizer("is_test_query")(terms) and type_counts["function"] > 0:
            recommendations.append("Found functions - consider their test requirements.")
        if any(word in terms for word in ("endpoint", "api", "endpoints")):
            recommendations.append("Check for related API handlers and middleware.")
        return recommendations[:3]
