"""What the program says and returns when something is wrong."""

import json
import os
import shutil
import signal
import subprocess
import time
from pathlib import Path

import pytest
from conftest import PROGRAM, Shop, names, write_tree


@pytest.mark.parametrize(
    "arguments, culprit",
    [
        ((), ""),
        (("nonsense",), "nonsense"),
        (("context",), "TASK"),
        (("context", "--budget", "many", "x"), "many"),
        (("context", "--budget", "99999999999999999999", "x"), "budget"),
        (("context", "--budget", "", "x"), "budget"),
        (("context", "--budget", "0x10", "x"), "0x10"),
        (("context", "--format", "xml", "x"), "xml"),
        (("context", "--prefer", "klass", "x"), "klass"),
        (("context", "--nope", "x"), "--nope"),
        (("context", "--repo"), "--repo"),
        (("context", "--repo", "", "x"), "--repo"),
        (("context", "--index", "", "x"), "--index"),
        (("mcp", "--repo", ""), "--repo"),
        (("mcp", "--index", ""), "--index"),
        (("index", "extra"), "extra"),
        (("status", "--full"), "--full"),
    ],
)
def test_wrong_command_lines(indexed_shop, arguments, culprit):
    done = indexed_shop.run(*arguments)
    assert (done.returncode, done.stdout) == (2, b"")
    assert culprit in done.stderr.decode().splitlines()[0]


@pytest.mark.parametrize("command", [(), ("context",), ("symbol",), ("index",), ("status",)])
def test_help_teaches(indexed_shop, command):
    done = indexed_shop.run(*command, "--help")
    assert done.returncode == 0 and done.stderr == b""
    assert b"Examples:" in done.stdout


@pytest.mark.parametrize(
    "arguments, line, help_line",
    [
        (("--component", "shpo"), "Unknown component: shpo", "shop"),
        (("--component", "web/src/x"), "Unknown component: web/src/x", None),
        (("--component", b"\xff"), "Unknown component: \udcff", None),
        (("--seed", b"\xff"), "Unknown symbol: \udcff", None),
        (("--seed", "shop.Cart"), "Unknown symbol: shop.Cart", "shop.cart.Cart"),
        (("--repo", "no/where"), "no/where: No such file or directory", None),
        (("--repo", "pyproject.toml"), "pyproject.toml: not a directory", None),
    ],
)
def test_names_that_lead_nowhere(indexed_shop, arguments, line, help_line):
    done = indexed_shop.run("context", *arguments, "Cart")
    assert (done.returncode, done.stdout) == (1, b"")
    said = os.fsdecode(done.stderr).splitlines()
    assert said[0] == line
    assert help_line is None or help_line in said[1]


def test_an_unknown_deep_symbol_is_a_warning(indexed_shop):
    done = indexed_shop.run("context", "--deep", "no.such", "Cart")
    assert done.returncode == 0 and json.loads(done.stdout)
    assert b"no.such" in done.stderr


def test_nothing_to_index(shop, tmp_path):
    (tmp_path / "empty").mkdir()
    done = shop.run("context", "--repo", str(tmp_path / "empty"), "x")
    assert (done.returncode, done.stdout) == (1, b"")
    assert str(tmp_path / "empty") in done.stderr.decode().splitlines()[0]


def test_a_machine_or_a_home_is_indexed_only_when_it_is_named(shop):
    home = {"HOME": str(shop.root)}
    for command in (("context", "Cart"), ("mcp",)):
        for place in ("/", shop.root):
            done = shop.run(*command, cwd=place, env=home)
            assert (done.returncode, done.stdout) == (1, b""), place
            assert done.stderr.decode().splitlines()[0] == f"{place}: no repository to index"
    assert not shop.cache.exists()
    assert "shop.cart.Cart" in names(shop.pack("Cart", "--repo", str(shop.root), env=home))


def test_a_damaged_index_is_set_aside_and_rebuilt(shop):
    before = shop.pack("Cart")
    file = shop.index_file()
    whole = file.read_bytes()
    for damage in (b"no database at all" * 500, whole[:4096] + b"\xff" * 60000, whole[: len(whole) // 2]):
        for extra in ("-wal", "-shm"):
            Path(str(file) + extra).unlink(missing_ok=True)
        file.write_bytes(damage)
        done = shop.run("context", "--format", "json", "Cart")
        assert done.returncode == 0 and json.loads(done.stdout) == before
        assert str(file) in done.stderr.decode()
    assert any("damaged" in path.name for path in file.parent.iterdir())


def test_a_file_of_the_users_own_is_no_index(shop):
    file = shop.root / "shop/cart.py"
    before = file.read_bytes()
    for arguments, env in ((("--index", "shop/cart.py"), {}), ((), {"TARNWICK_INDEX": "shop/cart.py"})):
        done = shop.run("context", *arguments, "Cart", env=env)
        assert (done.returncode, done.stdout) == (1, b"")
        assert done.stderr.decode() == "shop/cart.py: not an index; it is left alone\n"
    assert file.read_bytes() == before and len(list(file.parent.iterdir())) == 3
    empty = shop.root / "empty"
    empty.write_bytes(b"")
    assert names(shop.pack("--index", "empty", "Cart"))


def test_a_faulty_own_language_is_left_out_and_listed(shop, tmp_path):
    write_tree(tmp_path / "tarnwick" / "languages", {"zig/language.json": '{"extensions": [".zig"]}'})
    configuration = {"XDG_CONFIG_HOME": str(tmp_path)}
    assert shop.run("index", env=configuration).returncode == 0
    status = shop.run("status", env=configuration).stdout.decode()
    assert f"left out: {tmp_path}/tarnwick/languages/zig/zig.so: there is no such grammar library" in status


def test_a_cache_that_cannot_be_made_or_written(shop, tmp_path):
    (tmp_path / "file").write_text("")
    for place in (tmp_path / "file" / "cache", Path("/proc/none")):
        done = shop.run("context", "Cart", env={"XDG_CACHE_HOME": str(place)})
        assert (done.returncode, done.stdout) == (1, b"")
        assert str(place) in done.stderr.decode().splitlines()[0]


def test_a_read_only_cache(shop):
    shop.pack("Cart")
    (shop.root / "shop/cart.py").write_text("class NewCart: pass\n")
    folder = shop.index_file().parent
    for path in [folder, *folder.iterdir()]:
        path.chmod(path.stat().st_mode & ~0o222)
    # Root may write anywhere, so become somebody else, who can read everything here, and the program too,
    # wherever it was built.
    program = shutil.copy(PROGRAM, shop.cache / "program")
    for path in [shop.root, *shop.root.rglob("*")]:
        path.chmod(path.stat().st_mode | (0o055 if path.is_dir() else 0o044))
    for path in (shop.root, shop.cache, *shop.root.parents):
        if path.is_relative_to("/tmp/pytest-of-root") or path == shop.cache:
            path.chmod(path.stat().st_mode | 0o011)
    user = {"user": 65534, "group": 65534, "extra_groups": []} if os.getuid() == 0 else {}
    done = shop.run("context", "Cart", executable=program, **user)
    folder.chmod(0o755)
    assert (done.returncode, done.stdout) == (1, b""), done
    assert str(folder) in done.stderr.decode().splitlines()[0]


def test_a_full_disk(shop, tmp_path):
    place = tmp_path / "small"
    place.mkdir()
    command = f'mount -t tmpfs -o size=100k tmpfs "{place}" && exec "$@"'
    inside = ["unshare", "--user", "--map-root-user", "--mount", "sh", "-c", command, "sh"]
    if subprocess.run([*inside, "true"], capture_output=True).returncode != 0:
        pytest.skip("no small file system can be mounted here")
    done = subprocess.run(
        [*inside, PROGRAM, "context", "--index", str(place / "index"), "Cart"],
        cwd=shop.root, env=shop.env, capture_output=True)
    assert (done.returncode, done.stdout) == (1, b"")
    assert str(place) in done.stderr.decode().splitlines()[0]
    assert "full" in done.stderr.decode().lower() or "space" in done.stderr.decode()


def test_output_that_cannot_be_written(indexed_shop):
    for arguments in (("context", "Cart"), ("context", "--help"), ("--version",)):
        with open("/dev/full", "wb") as full:
            done = indexed_shop.run(*arguments, stdout=full, stderr=subprocess.PIPE)
        assert done.returncode == 1 and done.stderr, arguments


def test_calls_at_once_all_succeed(shop):
    write_tree(shop.root, {f"many/m{i}.py": f"def made_{i}(): return {i}\n" * 20 for i in range(200)})
    running = [shop.start("context", "--format", "json", "Cart made_7") for _ in range(4)]
    packs = set()
    for process in running:
        out, err = process.communicate(timeout=120)
        assert process.returncode == 0, err.decode()
        packs.add(out)
    assert len(packs) == 1 and b"made_7" in packs.pop()


@pytest.mark.parametrize("number, status", [(signal.SIGINT, 130), (signal.SIGTERM, 143)])
def test_an_interrupt_leaves_a_usable_index(shop, number, status):
    body = "\n".join(f"def helper_{{0}}_{i}(first, second):\n    return first + second\n" for i in range(200))
    write_tree(shop.root, {f"many/m{i}.py": body.format(i) for i in range(400)})
    process = shop.start("context", "helper_3_7")
    while not (shop.cache / "tarnwick").exists() and process.poll() is None:
        time.sleep(0.005)
    time.sleep(0.1)
    process.send_signal(number)
    out, err = process.communicate(timeout=60)
    assert (process.returncode, out) == (status, b""), err.decode()
    assert "nterrupt" in err.decode()
    assert names(shop.pack("helper_3_7"))[0].endswith("helper_3_7")
    fresh = Path(str(shop.cache) + "-fresh")
    assert shop.pack("helper_3_7") == shop.pack("helper_3_7", env={"XDG_CACHE_HOME": str(fresh)})
