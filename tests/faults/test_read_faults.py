"""Read errors: the command reports them and never treats a part of a file as the whole."""
import json
import os
import pathlib
import subprocess
import tempfile
import unittest

VRN = os.environ["VRN"]
FAULTS = os.environ["READ_FAULTS"]
ROOT = pathlib.Path(__file__).resolve().parents[2]
SCENE = ROOT / "examples/first_scene.vrn"


def vrn(fault, *arguments, file=SCENE, **keywords):
    environment = {**os.environ, "LD_PRELOAD": FAULTS, "VRN_READ_FAULT": fault,
                   "VRN_READ_FAULT_SIZE": str(file.stat().st_size)}
    return subprocess.run([VRN, *map(str, arguments)], env=environment, capture_output=True, text=True, **keywords)


class ReadFaults(unittest.TestCase):
    def test_a_failed_read_is_reported_at_any_offset(self):
        size = SCENE.stat().st_size
        for command in (["check"], ["check", "--format", "json"], ["dump"], ["info"]):
            for place in (0, 1, size // 2, size - 1, size):
                with self.subTest(command=command, place=place):
                    result = vrn(f"eio:{place}", *command, SCENE)
                    self.assertEqual(result.returncode, 2)
                    self.assertIn("Input/output error", result.stderr)
                    self.assertIn(SCENE.name, result.stderr)
                    self.assertNotIn("1 file checked", result.stdout)
                    if "json" in command:
                        self.assertFalse(json.loads(result.stdout)["ok"])

    def test_a_failed_read_of_standard_input(self):
        for place in (0, 100):
            with SCENE.open() as scene:
                result = vrn(f"eio:{place}", "check", "-", stdin=scene)
            self.assertEqual(result.returncode, 2)
            self.assertIn("Input/output error", result.stderr)

    def test_a_failed_read_of_a_catalogue(self):
        with tempfile.TemporaryDirectory() as folder:
            catalogue = pathlib.Path(folder, "types.json")
            catalogue.write_text('{"types": {"camera": {}}}' + " " * 777)
            result = vrn("eio:30", "check", "--types", catalogue, SCENE, file=catalogue)
        self.assertEqual(result.returncode, 2)
        self.assertIn("Input/output error", result.stderr)

    def test_the_other_files_are_still_checked(self):
        other = ROOT / "examples/cameras.vrn"
        result = vrn("eio:100", "check", SCENE, other)
        self.assertEqual(result.returncode, 2)
        self.assertIn("1 file checked: 0 errors, 0 warnings; 1 file could not be read", result.stdout)

    def test_short_and_interrupted_reads_change_nothing(self):
        for command in (["check"], ["dump"], ["info"]):
            expected = vrn("", *command, SCENE)
            self.assertEqual(expected.returncode, 0)
            for fault in ("short", "eintr"):
                with self.subTest(command=command, fault=fault):
                    result = vrn(fault, *command, SCENE)
                    self.assertEqual((result.returncode, result.stdout, result.stderr),
                                     (0, expected.stdout, expected.stderr))

    def test_an_end_is_an_end(self):
        # After a complete statement, so that the part is valid by itself.
        text = SCENE.read_bytes()
        place = text.index(b"\n", text.index(b";")) + 1
        with tempfile.TemporaryDirectory() as folder:
            part = pathlib.Path(folder, SCENE.name)
            part.write_bytes(text[:place])
            expected = subprocess.run([VRN, "dump", part], capture_output=True, text=True)
        result = vrn(f"eof:{place}", "dump", SCENE)
        self.assertEqual((result.returncode, result.stdout), (expected.returncode, expected.stdout))


if __name__ == "__main__":
    unittest.main()
