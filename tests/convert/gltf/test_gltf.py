"""Tests vrn convert with small glTF models, one feature each, and a comparer that reads glTF on its own.

Each model is one test: `python3 test_gltf.py -k texture` runs those with that word in their name. NODE_MODULES is the
folder of the npm packages.
"""
import atexit
import functools
import json
import os
import pathlib
import subprocess
import sys
import unittest

sys.path += [str(pathlib.Path(__file__).resolve().parents[2] / "cli"), str(pathlib.Path(__file__).resolve().parents[1])]

from command import ROOT
from importing import Importing

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


class Gltf(Importing):
    def convert(self, source, target):
        """Converts successfully; returns the lines on standard error."""
        result = self.run_here("convert", source, target)
        self.assertEqual(result.returncode, 0, result.stderr.decode())
        return result.stderr.decode().splitlines()

    def assert_same(self, file, other):
        found = ask("compare", self.folder / file, self.folder / other)
        if found:
            self.fail(f"{other} differs from {file}:\n" + "\n".join(found))

    def assert_valid(self, file):
        self.assertEqual(ask("validate", self.folder / file), [], file)


@each("models")
class RoundTrips(Gltf):
    def check(self, name):
        source = pathlib.Path(ask("model", name, self.folder)).name
        self.assertEqual(self.convert(source, "model.vrn"), [])
        for target in ("out.glb", "out.gltf"):
            with self.subTest(target):
                self.assertEqual(self.convert("model.vrn", target), [])
                self.assert_valid(target)
                self.assert_same(source, target)


@each("faults")
class Faults(Gltf):
    def check(self, name):
        fault = ask("fault", name, self.folder)
        source = pathlib.Path(fault["file"]).name
        result = self.run_here("convert", source, "out.vrn")
        message = result.stderr.decode()
        self.assertEqual(result.returncode, 1, message)
        self.assertTrue(any(f"vrn: {source}: {pointer}" in message for pointer in fault["pointers"]),
                        f"{message!r} names none of {fault['pointers']}")
        self.assertFalse((self.folder / "out.vrn").exists())


@each("faults")
class FaultyModels(Gltf):
    """The faulty models are rejected by the validator or by the reader of the comparer."""

    def check(self, name):
        self.assertTrue(ask("isFaulty", ask("fault", name, self.folder)["file"]))


@each("losses")
class Losses(Gltf):
    def check(self, name):
        loss = ask("loss", name, self.folder)
        source = pathlib.Path(loss["file"]).name
        reported = self.convert(source, "model.vrn")
        for lost in loss["lost"]:
            start = f"vrn: model.vrn: lost: extension {lost['extension']}: {lost['count']} ("
            self.assertTrue(any(line.startswith(start) and lost["first"] in line for line in reported), reported)
        self.assertEqual(len(reported), len(loss["lost"]), reported)
        self.assertEqual(self.convert("model.vrn", "out.glb"), [])
        self.assert_same(source, "out.glb")


@each("models")
class Models(Gltf):
    """The models are valid, and the comparer reads from them what it must, however they are stored."""

    def check(self, name):
        file = ask("model", name, self.folder)
        self.assert_valid(file)
        self.assertEqual(ask("unexpected", name, file), [])
        self.assertEqual(ask("compare", file, file), [])


class Comparer(Gltf):
    def test_pairs(self):
        self.assertEqual(ask("wrongPairs"), [])

    def test_every_change_is_noticed(self):
        needed = set()
        for name in names()["small"]:
            changes = ask("unnoticed", ask("model", name, self.folder / name))
            self.assertEqual(changes["found"], [], name)
            needed.update(changes["needed"])
        self.assertEqual(needed, set(names()["exemptions"]), "some exemptions are not needed")


if __name__ == "__main__":
    unittest.main()
