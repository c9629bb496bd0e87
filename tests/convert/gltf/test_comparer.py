"""Tests what the tests of glTF rely on, without the command: their small models, and the comparer."""
import unittest

from models import ask, each, names

from command import Folder


@each("models")
class Models(Folder):
    """The models are valid, and the comparer reads from them what it must, however they are stored."""

    def check(self, name):
        file = ask("model", name, self.folder)
        self.assertEqual(ask("validate", file), [])
        self.assertEqual(ask("unexpected", name, file), [])
        self.assertEqual(ask("compare", file, file), [])


@each("faults")
class FaultyModels(Folder):
    """The faulty models are rejected by the validator or by the reader of the comparer."""

    def check(self, name):
        self.assertTrue(ask("isFaulty", ask("fault", name, self.folder)["file"]))


class Comparer(Folder):
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
