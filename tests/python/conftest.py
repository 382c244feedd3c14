import os
import sys
from pathlib import Path

import pytest

sys.path.insert(0, str(Path(__file__).parent))
import host  # noqa: E402

DIRECTORY = Path(os.environ.get("TARNWICK_PYTHON_DIR", host.ROOT / "build" / "release" / "python"))
RETRIEVAL = host.install_retrieval()
MODULE = host.load_module(DIRECTORY)
PLAIN = host.load_plain()


@pytest.fixture
def module():
    """The extension module."""
    return MODULE


@pytest.fixture
def plain():
    """The same in plain Python."""
    return PLAIN


@pytest.fixture(params=[MODULE, PLAIN], ids=["module", "plain"])
def build(request):
    """Either of the two, for what a host must not be able to tell apart."""
    return request.param


@pytest.fixture
def retrieval():
    """The host's tokenizer functions, as they were before and after the test."""
    before = dict(vars(RETRIEVAL))
    yield RETRIEVAL
    vars(RETRIEVAL).update(before)
    sys.modules[host.RETRIEVAL] = RETRIEVAL


@pytest.fixture
def directory():
    """Where the built package is."""
    return DIRECTORY
