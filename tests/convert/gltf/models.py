"""The small glTF models: server.js builds, compares and validates them."""
import functools
import pathlib
import sys

sys.path += [str(pathlib.Path(__file__).resolve().parents[2] / "cli"), str(pathlib.Path(__file__).resolve().parents[1])]

import node_programs

SERVER = pathlib.Path(__file__).resolve().with_name("server.js")


def ask(request, *values):
    answer = node_programs.ask(SERVER, [request, *map(str, values)])
    if isinstance(answer, dict) and "error" in answer:
        raise RuntimeError(answer["error"])
    return answer


@functools.cache
def names():
    return ask("names")


def each(kind):
    """Gives a class one test for each model of a kind, which calls check."""
    def decorate(case):
        for name in names()[kind]:
            setattr(case, f"test_{name.replace('-', '_')}", lambda self, name=name: self.check(name))
        return case
    return decorate
