"""A pack costs what it says: checked on this repository itself."""

import json
import statistics

import pytest
from conftest import SOURCE, Shop

TASKS = [
    "Skip entries that do not fit the token budget of a pack",
    "estimate_tokens of a docstring counts code points",
    "Search symbols ignoring case, underscores taken literally",
    "Fix the parameters read from numpy docstrings",
    "Which tests cover a source file",
    "Decode a source file and fold its line ends",
    "Rank candidates by name match and kind",
    "Print the pack as Markdown",
    "Stop indexing when the user interrupts",
    "Split identifiers into words",
    "ContextBuilder::build_context_pack",
    "Cut a snippet within the line caps",
]


@pytest.fixture(scope="module")
def own(tmp_path_factory):
    shop = Shop(tmp_path_factory.mktemp("own"))
    shop.root = SOURCE
    return shop


@pytest.mark.parametrize("arguments", [(), ("--snippets",)], ids=["plain", "snippets"])
def test_packs_cost_what_they_say(own, arguments):
    shares = []
    for task in TASKS:
        printed = own.run("context", "--format", "json", *arguments, task).stdout.decode()
        used = json.loads(printed)["tokens_used"]
        assert 0 < used <= 2100, task
        shares.append(abs(len(printed) / 4 - used) / used)
    shares.sort()
    assert statistics.median(shares) <= 0.15, shares
    assert shares[int(0.9 * len(shares)) - 1] <= 0.25, shares


@pytest.mark.parametrize("budget", [100, 500, 8000])
def test_no_budget_is_passed(own, budget):
    for task in TASKS[:4]:
        assert own.pack("--budget", str(budget), task)["tokens_used"] <= budget * 1.05
