"""What is shipped: the stub, the documentation, the file that is loaded."""

import ast
import importlib
import inspect
import json
import os
import shutil
import subprocess
import sys
from pathlib import Path

import host
import pytest

STUB = ast.parse((host.ROOT / "python" / "context_builder.pyi").read_text())
BUILD = os.environ.get("TARNWICK_BUILD_DIR", str(host.ROOT / "build" / "release"))


def stub_callables():
    """Each function of the stub: its dotted name, its parameters and defaults."""
    for node in STUB.body:
        functions = [node] if isinstance(node, ast.FunctionDef) else getattr(node, "body", [])
        for function in functions:
            if isinstance(function, ast.FunctionDef) and function.name not in host_functions():
                prefix = "" if function is node else f"{node.name}."
                yield prefix + function.name, stub_parameters(function.args)


def host_functions():
    return ("query_names", "query_terms", "is_test_query")


def stub_parameters(args):
    positional = args.posonlyargs + args.args
    defaults = [inspect.Parameter.empty] * (len(positional) - len(args.defaults))
    defaults += [ast.literal_eval(default) for default in args.defaults]
    named = [(arg.arg, "keyword", ast.literal_eval(default)) for arg, default in zip(args.kwonlyargs, args.kw_defaults)]
    return [(arg.arg, "any", default) for arg, default in zip(positional, defaults)] + named


def real_parameters(function):
    kinds = {inspect.Parameter.KEYWORD_ONLY: "keyword"}
    parameters = inspect.signature(function).parameters.values()
    return [(p.name, kinds.get(p.kind, "any"), p.default) for p in parameters]


@pytest.mark.parametrize("name, parameters", stub_callables(), ids=lambda value: value if type(value) is str else "")
def test_stub_module_and_plain_python_have_the_same_signatures(module, plain, name, parameters):
    for build in (module, plain):
        function = build
        for part in name.split("."):
            function = getattr(function, part)
        found = [("self", kind, default) if p == "self" else (p, kind, default) for p, kind, default in real_parameters(function)]
        assert found == parameters, build.__name__


def test_stubtest(directory, tmp_path):
    package = tmp_path / "tarnwick" / "workers"
    package.mkdir(parents=True)
    (package / "retrieval.py").write_text(
        "def query_names(task, /): ...\ndef query_terms(task, /): ...\ndef is_test_query(terms, /): ...\n"
    )
    for file in (directory / "tarnwick" / "workers").iterdir():
        shutil.copy(file, package)
    run = subprocess.run(
        [sys.executable, "-m", "mypy.stubtest", "tarnwick.workers.context_builder"],
        env={**os.environ, "PYTHONPATH": str(tmp_path), "MYPYPATH": str(tmp_path)},
        cwd=tmp_path, capture_output=True, text=True,
    )  # fmt: skip
    assert run.returncode == 0, run.stdout + run.stderr


def test_every_public_item_is_documented(module):
    items = {name: value for name, value in vars(module).items() if callable(value) and name != "__getattr__"}
    for owner in (module.ContextBuilder, module.ContextPack, module._CoveringTests):
        methods = {name: method for name, method in vars(owner).items() if inspect.ismethoddescriptor(method)}
        items.update({f"{owner.__name__}.{name}": method for name, method in methods.items()})
    assert len(items) > 20
    for name, item in items.items():
        if name in ("RankedSymbol", "ContextPack"):
            continue  # their documentation is one set sentence; the fields are in the signature
        words = set(item.__doc__.replace("`", " ").replace(":", " ").split())
        missing = [p for p in inspect.signature(item).parameters if p != "self" and p not in words]
        assert item.__doc__ and not missing, name
    assert "sub-interpreter" in module.__doc__


ALONE = """
import sys
import tarnwick.workers.context_builder as module
assert module.__file__.startswith(sys.argv[1]), module.__file__
assert "tarnwick.workers.retrieval" not in sys.modules
module.query_names, module.query_terms, module.is_test_query = lambda t: [], str.split, lambda t: False
assert module.task_keywords("one two") == ["one", "two"]
try:
    module.nothing
except AttributeError:
    pass
"""


@pytest.mark.parametrize("init", [False, True])
def test_the_module_loads_alone_in_another_tree(module, tmp_path, init):
    package = tmp_path / "tarnwick" / "workers"
    package.mkdir(parents=True)
    shutil.copy(module.__file__, package)
    if init:
        for folder in (package, package.parent):
            (folder / "__init__.py").write_text("")
    run = subprocess.run(
        ["/usr/bin/python3", "-c", ALONE, str(tmp_path)], cwd=tmp_path, capture_output=True, text=True,
        env={**os.environ, "PYTHONPATH": str(tmp_path)},
    )  # fmt: skip
    assert (run.returncode, run.stderr) == (0, "")


def test_the_example_of_the_readme(directory):
    example = host.ROOT / "examples" / "python_host.py"
    assert f"```python\n{example.read_text()}```" in (host.ROOT / "README.md").read_text()
    run = subprocess.run(
        [sys.executable, str(example)], capture_output=True, text=True,
        env={**os.environ, "PYTHONPATH": str(directory)},
    )  # fmt: skip
    assert run.returncode == 0, run.stderr
    pack = json.loads(run.stdout)
    assert [entry["fqn"] for entry in pack["symbols"]] == ["cache.evict", "cache.store"]
    assert pack["tests"] == [{"file": "tests/test_cache.py", "for": "src/cache.py"}]


def test_the_module_exists_once_per_process(module):
    name = module.__name__
    before = sys.modules.pop(name)
    try:
        assert importlib.import_module(name) is module is importlib.reload(module)
        assert module.ContextBuilder is before.ContextBuilder
    finally:
        sys.modules[name] = before


def test_sub_interpreters_get_an_import_error(module, directory):
    interpreters = pytest.importorskip("_xxsubinterpreters")
    interpreter = interpreters.create()
    try:
        with pytest.raises(interpreters.RunFailedError, match="ImportError.*cannot be used in a sub-interpreter"):
            interpreters.run_string(interpreter, f"import sys; sys.path.insert(0, {str(directory)!r}); import {module.__name__}")
    finally:
        interpreters.destroy(interpreter)


def test_installation_forces_no_package_files(tmp_path):
    run = subprocess.run(
        ["cmake", "--install", BUILD, "--component", "python"], capture_output=True, text=True,
        env={**os.environ, "DESTDIR": str(tmp_path)},
    )  # fmt: skip
    assert run.returncode == 0, run.stderr
    files = sorted(file.relative_to(tmp_path) for file in tmp_path.rglob("*") if file.is_file())
    assert len(files) == 2 and {str(file.parent) for file in files} == {str(files[0].parent)}
    assert files[0].parent.parts[-2:] == ("tarnwick", "workers") and files[1] == files[0].parent / "context_builder.pyi"
    assert Path("/", *files[0].parts[:-3]).as_posix() in sys.path
