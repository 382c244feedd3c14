"""Runs the program the way its users do: a process, in a repository of the test's own, with a cache of its own."""

import json
import os
import subprocess
from pathlib import Path

import pytest

PROGRAM = os.environ["TARNWICK_PROGRAM"]
SOURCE = Path(__file__).resolve().parents[2]

FILES = {
    "pyproject.toml": '[project]\nname = "shop"\n',
    "shop/__init__.py": "",
    "shop/cart.py": '''\
"""Shopping carts."""


class Cart:
    """Holds what a customer wants to buy."""

    def add_item(self, product: str, count: int = 1) -> None:
        """Puts a product into the cart.

        Args:
            product: what to buy
            count (int): how many of it
        """
        self.items[product] = count


def checkout_cart(cart: Cart) -> int:
    """Sums up the prices of a cart."""
    cart.add_item("bag")
    return 0
''',
    "shop/prices.py": '''\
from shop.cart import checkout_cart


def total_price(cart):
    """The price of a whole cart."""
    return checkout_cart(cart)
''',
    "tests/test_cart.py": '''\
from shop.cart import Cart, checkout_cart


def test_checkout_cart_of_nothing():
    assert checkout_cart(Cart()) == 0
''',
    "web/package.json": '{"name": "@shop/web"}',
    "web/src/button.ts": "export function renderButton(label: string): string {\n  return label;\n}\n",
    ".gitignore": "generated/\n",
    "generated/extra_cart.py": "def generated_cart():\n    return 1\n",
}


def write_tree(root: Path, files) -> None:
    for name, text in files.items():
        path = root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(text if isinstance(text, bytes) else text.encode())


class Shop:
    """A small repository and the program's answers about it."""

    def __init__(self, folder: Path):
        self.root = folder / "repository"
        self.cache = folder / "cache"
        self.root.mkdir()
        self.env = {key: value for key, value in os.environ.items() if key not in ("TARNWICK_INDEX", "NO_COLOR")}
        self.env.update(XDG_CACHE_HOME=str(self.cache), LC_ALL="C.UTF-8", TERM="xterm")
        write_tree(self.root, FILES)
        subprocess.run(["git", "init", "-q"], cwd=self.root, check=True)

    def run(self, *arguments, cwd=None, env=None, **options):
        return subprocess.run(
            [PROGRAM, *arguments],
            cwd=cwd or self.root,
            env={**self.env, **(env or {})},
            stdin=subprocess.DEVNULL,
            capture_output="stdout" not in options,
            timeout=120,
            **options,
        )

    def start(self, *arguments):
        return subprocess.Popen(
            [PROGRAM, *arguments], cwd=self.root, env=self.env, stdout=subprocess.PIPE, stderr=subprocess.PIPE
        )

    def pack(self, *arguments, **options) -> dict:
        done = self.run("context", "--format", "json", *arguments, **options)
        assert done.returncode == 0, done.stderr.decode()
        return json.loads(done.stdout)

    def index_file(self) -> Path:
        (file,) = [path for path in (self.cache / "tarnwick").iterdir() if path.suffix == ".db"]
        return file


def names(pack) -> list:
    return [entry["fqn"] for entry in pack["symbols"]]


@pytest.fixture
def shop(tmp_path):
    return Shop(tmp_path)


@pytest.fixture(scope="module")
def indexed_shop(tmp_path_factory):
    """Shared by tests that change nothing."""
    shop = Shop(tmp_path_factory.mktemp("shop"))
    assert shop.run("index").returncode == 0
    return shop
