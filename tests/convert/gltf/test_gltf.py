"""Tests vrn convert with small glTF models, one feature each, and a comparer that reads glTF on its own.

Each model is one test: `python3 test_gltf.py -k texture` runs those with that word in their name.
"""
import pathlib
import unittest

from models import ask, each  # first: it finds the folder of the next one

from importing import Importing


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


if __name__ == "__main__":
    unittest.main()
