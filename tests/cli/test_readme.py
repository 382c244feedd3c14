"""The README shows what is there."""

from conftest import SOURCE


def test_the_example_is_the_one_that_the_tests_build():
    readme = (SOURCE / "README.md").read_text()
    example = (SOURCE / "examples/in_memory.cpp").read_text()
    assert f"```cpp\n{example}```" in readme
