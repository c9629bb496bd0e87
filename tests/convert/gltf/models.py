"""The small glTF models, and the process that builds, compares and validates them (server.js).

NODE_MODULES is the folder of the npm packages."""
import atexit
import functools
import json
import os
import pathlib
import subprocess
import sys

sys.path.append(str(pathlib.Path(__file__).resolve().parents[2] / "cli"))

from command import ROOT

HERE = pathlib.Path(__file__).resolve().parent
MODULES = os.environ.get("NODE_MODULES", str(ROOT / "build" / "node_modules"))


@functools.cache
def server():
    """The process of server.js, one for all tests."""
    process = subprocess.Popen(["node", HERE / "server.js", MODULES], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                               text=True)
    atexit.register(process.communicate)
    return process


def ask(request, *values):
    process = server()
    process.stdin.write(json.dumps([request, *map(str, values)]) + "\n")
    process.stdin.flush()
    line = process.stdout.readline()
    if not line:
        raise RuntimeError("no answer from server.js (make build/node_modules fetches what it needs)")
    answer = json.loads(line)
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
