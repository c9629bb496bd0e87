"""What a build tree is made of with VRN_ASSIMP off. It is only configured; `without_assimp` tests what it would build."""
import json
import os
import pathlib
import re
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]


class WithoutAssimp(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        temporary = tempfile.TemporaryDirectory()
        cls.addClassCleanup(temporary.cleanup)
        cls.build = pathlib.Path(temporary.name)
        result = subprocess.run([os.environ["CMAKE"], "-S", ROOT, "-B", cls.build, "-G", "Ninja", "-DVRN_ASSIMP=OFF",
                                 "-DCMAKE_DISABLE_FIND_PACKAGE_assimp=ON", "-DCMAKE_BUILD_TYPE=Debug"],
                                stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, timeout=300)
        if result.returncode != 0:
            raise AssertionError(result.stdout)

    def test_only_the_substitute_is_compiled(self):
        units = [pathlib.Path(unit["file"]) for unit in json.loads((self.build / "compile_commands.json").read_text())]
        text = "".join(str(unit) + "\n" + (unit.read_text() if "Unity" in unit.parts else "") for unit in units)
        self.assertIn("convert/import/assimp/WithoutAssimp.cpp", text)
        self.assertIn("convert/import/gltf/GltfImport.cpp", text)
        self.assertNotIn("convert/import/assimp/AssimpImport.cpp", text)
        self.assertNotIn("convert/import/fbx/", text)

    def test_assimp_is_neither_linked_nor_asked_for_by_the_package(self):
        self.assertNotIn("libassimp", (self.build / "build.ninja").read_text())
        exported, = self.build.glob("CMakeFiles/Export/*/vrn-convert.cmake")
        self.assertNotIn("assimp", exported.read_text())
        self.assertRegex((self.build / "vrn-config.cmake").read_text(), r"if\(OFF\)\s+find_dependency\(assimp\)")

    def test_tests_that_need_no_assimp_are_there(self):
        listed = subprocess.run([os.environ["CTEST"], "-N"], cwd=self.build, capture_output=True, text=True, check=True)
        names = re.findall(r"Test +#\d+: (\w+)", listed.stdout)
        self.assertLessEqual({"unit", "convert_unit", "without_assimp", "check_unit", "inspect_unit", "faults"},
                             set(names))
        self.assertNotIn("convert", names)


if __name__ == "__main__":
    unittest.main()
