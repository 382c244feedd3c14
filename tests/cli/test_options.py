"""What each option of the command line does to a pack."""

import json
import os
import pty
import re
import subprocess

import pytest
from conftest import PROGRAM, names


def test_words_of_a_task_are_joined_and_may_be_anything(indexed_shop):
    whole = indexed_shop.pack("status index of Cart and --dashes")
    assert "shop.cart.Cart" in names(whole)
    assert indexed_shop.pack("--", "status", "index", "of", "Cart", "and", "--dashes") == whole
    assert indexed_shop.pack("status", "index", "of", "Cart", "and", "--budget", "2000", "--", "--dashes") == whole


def test_an_empty_task_is_a_task(indexed_shop):
    empty = indexed_shop.pack("")
    assert list(empty) == [
        "symbols", "files", "tests", "recommendations", "tokens_used", "indexing_in_progress", "progress"]
    assert empty["symbols"] == [] and empty["tokens_used"] == 0


@pytest.mark.parametrize(
    "arguments, holds",
    [
        ((), lambda pack: names(pack) and pack["tests"] and all("snippet" not in e for e in pack["symbols"])),
        (("--budget", "0"), lambda pack: not names(pack)),
        (("--budget", "-5"), lambda pack: not names(pack)),
        (("--no-tests",), lambda pack: names(pack) and not pack["tests"]),
        (("--component", "shop"), lambda pack: "shop.cart.checkout_cart" in names(pack)),
        (("--component", "@shop/web"), lambda pack: all(f.startswith("web/") for f in pack["files"])),
        (("--component", "web"), lambda pack: all(f.startswith("web/") for f in pack["files"])),
        (("--component", ""), lambda pack: names(pack)),
        (("--snippets",), lambda pack: any("return 0" in e.get("snippet", "") for e in pack["symbols"])),
        (("--deep", "shop.cart.checkout_cart"), lambda pack: any("snippet" in e for e in pack["symbols"])),
        (("--seed", "shop.prices.total_price"), lambda pack: names(pack)[0] == "shop.prices.total_price"),
        (("--seed", "shop.cart.Cart", "--seed", "shop.prices.total_price"),
         lambda pack: names(pack)[:2] == ["shop.cart.Cart", "shop.prices.total_price"]),
        (("--prefer", "class"), lambda pack: "shop.cart.Cart" in names(pack)),
        (("--all-files", "--wide"), lambda pack: names(pack)),
        (("--ignored",), lambda pack: any("generated" in f for f in pack["files"])),
    ],
    ids=lambda value: " ".join(value) if isinstance(value, tuple) else "",
)
def test_options_shape_the_pack(shop, arguments, holds):
    pack = shop.pack(*arguments, "Cart", "checkout_cart", "generated_cart")
    assert holds(pack), json.dumps(pack, indent=1)


def test_a_budget_is_decimal(indexed_shop):
    def pack(budget):
        return indexed_shop.pack("--budget", budget, "Cart", "checkout_cart", "total_price")

    assert pack("0400") == pack("400") != pack("256")


def test_wide_matches_inside_names(indexed_shop):
    seeds = ("--seed", "shop.cart.Cart")
    assert "shop.prices.total_price" not in names(indexed_shop.pack(*seeds, "price"))
    assert "shop.prices.total_price" in names(indexed_shop.pack(*seeds, "--wide", "price"))


def test_the_repository_is_the_one_around_the_working_directory(indexed_shop):
    from_inside = indexed_shop.pack("Cart", cwd=indexed_shop.root / "shop")
    assert from_inside == indexed_shop.pack("Cart", "--repo", str(indexed_shop.root), cwd="/")
    assert "shop/cart.py" in from_inside["files"]


def test_the_index_lies_where_it_is_told_to(shop, tmp_path):
    by_option, by_variable = tmp_path / "a" / "index", tmp_path / "b" / "index"
    first = shop.pack("Cart", "--index", str(by_option))
    assert first == shop.pack("Cart", env={"TARNWICK_INDEX": str(by_variable)})
    assert by_option.is_file() and by_variable.is_file() and not shop.cache.exists()
    assert first == shop.pack("Cart") and shop.index_file().is_file()
    assert not any(path.name.startswith("index") for path in shop.root.iterdir())


def test_a_pack_is_fresh_after_an_edit(shop):
    assert "shop.cart.Basket" not in names(shop.pack("Basket"))
    cart = shop.root / "shop/cart.py"
    cart.write_text(cart.read_text().replace("Cart", "Basket"))
    assert "shop.cart.Basket" in names(shop.pack("Basket"))
    cart.unlink()
    assert "shop/cart.py" not in shop.pack("Basket")["files"]


def test_an_explanation_names_every_symbol_and_leaves_the_pack_alone(indexed_shop):
    arguments = ("--budget", "150", "--format", "json", "Cart", "checkout_cart", "total_price", "add_item")
    plain = indexed_shop.run("context", *arguments)
    explained = indexed_shop.run("context", "--explain", *arguments)
    assert explained.stdout == plain.stdout and plain.stderr == b""
    lines = explained.stderr.decode().splitlines()
    for fqn in names(json.loads(plain.stdout)):
        assert any("taken" in line and fqn in line for line in lines), lines
    assert any("skipped" in line for line in lines), lines


def on_terminal(shop, *arguments, env=None):
    """Both outputs of a run whose standard output and error are a terminal."""
    leader, follower = pty.openpty()
    process = subprocess.Popen(
        [PROGRAM, *arguments], cwd=shop.root, env={**shop.env, **(env or {})}, stdout=follower, stderr=follower)
    os.close(follower)
    output = b""
    try:
        while chunk := os.read(leader, 65536):
            output += chunk
    except OSError:  # how Linux says that the other end is closed
        pass
    os.close(leader)
    assert process.wait(timeout=60) == 0, output
    return output.decode()


def test_a_terminal_gets_coloured_text_and_progress(shop):
    first = on_terminal(shop, "context", "Cart")
    assert re.search(r"\r\x1b\[K\d+/\d+ \S+\r", first), "no progress that names a file"
    assert "\x1b[1mshop.cart.Cart\x1b[0m" in first
    plain = on_terminal(shop, "context", "Cart", env={"NO_COLOR": "1"})
    assert "shop.cart.Cart" in plain and "\x1b[1m" not in plain
    assert json.loads(on_terminal(shop, "context", "Cart", "--format", "json"))
    assert shop.run("context", "Cart", "--format", "text").stdout.decode() == plain.replace("\r\n", "\n")


def test_markdown(indexed_shop):
    shown = indexed_shop.run("context", "--format", "markdown", "Cart").stdout.decode()
    assert "class `shop.cart.Cart`" in shown and "`shop/cart.py:4`" in shown


def test_a_symbol_is_shown_in_full(indexed_shop):
    def show(*arguments):
        return indexed_shop.run("symbol", *arguments, "shop.cart.checkout_cart").stdout.decode()

    shown = json.loads(show("--format", "json"))
    assert "return 0" in shown["body"] and shown["tests"] == ["tests/test_cart.py"]
    assert {"shop/prices.py"} <= {reference["file"] for reference in shown["references"]}
    for form in ("text", "markdown"):
        for part in ("return 0", "tests/test_cart.py", "shop.prices.total_price", "shop/prices.py:6"):
            assert part in show("--format", form), (form, part)
    elsewhere = indexed_shop.run("symbol", "--file", "web/x.ts", "shop.cart.checkout_cart")
    assert elsewhere.returncode == 1 and b"not there, but at: shop/cart.py:17\n" in elsewhere.stderr


def test_status_counts_what_is_indexed_and_what_is_not(shop):
    (shop.root / "blob.py").write_bytes(b"\0\1\2" * 100)
    (shop.root / "caf\udce9.py").write_text("def odd_name(): pass\n")
    assert shop.run("index").returncode == 0
    plain = shop.run("status")
    assert plain.returncode == 0 and plain.stderr == b""
    for part in ("python", "typescript", "shop", "@shop/web", str(shop.root), str(shop.index_file())):
        assert part in plain.stdout.decode(), part
    assert b"blob.py" not in plain.stdout and b"blob.py" in shop.run("status", "--skipped").stdout
    assert b"caf\xef\xbf\xbd.py" in shop.run("context", "odd_name").stdout
