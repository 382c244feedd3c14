# Copyright x

"""Module."""
import os.path as p, sys
from a.b import c as d, e

__all__ = ["Foo", "LIMIT"]
LIMIT = 3

# Comment doc
def f(
    a: int,  # hi
    b: "x" = {1: 2},
) -> Optional[Foo]:
    def inner(): pass
    x = 1
    return g(a.b.c())

@decorator(1)
class Foo(Base[T], m.Other):
    """Doc of foo.

        Indented.
    """
    X = 1
    y: int = 2
    @property
    def z(self): return self.q()
