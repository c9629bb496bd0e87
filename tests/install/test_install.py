"""The installed files work in other builds, as docs/library.md shows. BUILD is an up-to-date build tree."""
import os
import pathlib
import re
import subprocess
import tempfile
import unittest

BUILD = os.environ["BUILD"]
ROOT = pathlib.Path(__file__).resolve().parents[2]
SCENE = ROOT / "examples" / "first_scene.vrn"
WARNINGS = ["-Wall", "-Wextra", "-Wpedantic", "-Wshadow", "-Wconversion", "-Werror"]


def output(*command, **more):
    """Runs a program that must succeed and returns its output."""
    result = subprocess.run([*map(str, command)], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=300, **more)
    if result.returncode != 0:
        raise AssertionError(f"{command}\n{result.stdout.decode()}")
    return result.stdout.decode()


def blocks(language, document="docs/library.md"):
    return re.findall(rf"^```{language}\n(.*?)^```$", (ROOT / document).read_text(), re.M | re.S)


def setUpModule():
    global TEMPORARY, PREFIX, LIBRARIES, VERSION, SONAME, ENVIRONMENT
    temporary = tempfile.TemporaryDirectory()
    unittest.addModuleCleanup(temporary.cleanup)
    TEMPORARY = pathlib.Path(temporary.name)
    PREFIX = TEMPORARY / "prefix"
    output("cmake", "--install", BUILD, "--prefix", PREFIX)
    LIBRARIES = next(PREFIX.rglob("libvrn.a")).parent  # lib, lib64 or lib/TRIPLET
    VERSION = output(PREFIX / "bin/vrn", "--version").split()[1]
    SONAME = "libvrn.so." + VERSION.rpartition(".")[0]
    ENVIRONMENT = {**os.environ, "PKG_CONFIG_PATH": str(LIBRARIES / "pkgconfig"), "LC_ALL": "C",
                   "LD_LIBRARY_PATH": str(LIBRARIES)}
    (TEMPORARY / "viewer.cpp").write_text(blocks("cpp")[0])


def headers():
    return sorted((PREFIX / "include" / "vrn").rglob("*.h"))


def reader_headers():
    """Those of the library without the converter, which is static."""
    return [header for header in headers() if "vrn/convert" not in str(header)]


def needed_libraries(program):
    return re.findall(r"Shared library: \[(.*?)\]", output("readelf", "-d", program))


class Tree(unittest.TestCase):
    def test_has_the_expected_files(self):
        found = {str(p.relative_to(PREFIX)) for p in PREFIX.rglob("*") if not p.is_dir()}
        folder = LIBRARIES.relative_to(PREFIX)
        commands = re.findall(r"^\.BR vrn\\-(\w+)", (PREFIX / "share/man/man1/vrn.1").read_text(), re.M)
        self.assertGreaterEqual(len(commands), 5)
        expected = {
            "bin/vrn", "include/vrn/vrn.h", *(f"{folder}/{name}" for name in
                                              ("libvrn.a", "libvrn_convert.a", "libvrn.so", SONAME, f"libvrn.so.{VERSION}", "pkgconfig/vrn.pc")),
            "share/doc/vrn/LICENSE", "share/man/man1/vrn.1",
            *(f"share/man/man1/vrn-{command}.1" for command in commands),
            "share/bash-completion/completions/vrn", "share/zsh/site-functions/_vrn",
            "share/fish/vendor_completions.d/vrn.fish",
            *(f"{folder}/cmake/vrn/vrn-{part}.cmake" for part in
              ("config", "config-version", "static", "static-release", "shared", "shared-release", "convert",
               "convert-release")),
            *(f"share/vrn/{p.relative_to(ROOT)}" for p in (ROOT / "catalogues").glob("*.json")),
        }
        self.assertEqual({path for path in found if not re.match(r"include/vrn/(scene|impl|convert)/", path)}, expected)

    def test_command_runs(self):
        self.assertEqual(output(PREFIX / "bin/vrn", "check", SCENE), "1 file checked: 0 errors, 0 warnings\n")
        self.assertNotIn("libvrn", " ".join(needed_libraries(PREFIX / "bin/vrn")))

    def test_respects_destdir(self):
        staged = TEMPORARY / "staged"
        output("cmake", "--install", BUILD, "--prefix", "/opt/vrn", env={**os.environ, "DESTDIR": str(staged)})
        self.assertTrue((staged / "opt/vrn/bin/vrn").exists())
        made = "".join(p.read_text() for p in [*staged.rglob("*.cmake"), *staged.rglob("*.pc")])
        for folder in (str(staged), str(PREFIX), str(ROOT)):
            self.assertNotIn(folder, made)


class Headers(unittest.TestCase):
    def test_include_each_other_and_the_standard_library_only(self):
        self.assertGreater(len(headers()), 20)
        for header in headers():
            for include in re.findall(r'#\s*include "(.*)"', header.read_text()):
                self.assertTrue((PREFIX / "include" / "vrn" / include).exists(), (header.name, include))
            for include in re.findall(r"#\s*include <(.*)>", header.read_text()):
                self.assertRegex(include, r"^[a-z_]+$|^vrn/vrn\.h$", header.name)

    def test_every_header_of_the_readme_is_installed(self):
        named = re.findall(r"`((?:scene|impl)/[\w/]+\.h)`", (ROOT / "README.md").read_text())
        self.assertGreater(len(named), 10)
        for name in named:
            self.assertIn(f'#include "{name}"', "".join(h.read_text() for h in headers()), name)

    def test_every_function_is_marked(self):
        """Free functions, in their declarations; member functions are covered by the mark of their class."""
        declaration = r"^(?: *friend |\[\[nodiscard\]\] )?\w[\w:<>*& ]*[ *&]([\w=]+)\([^{};]*\)[^{};=]*;$"
        found = 0
        for header in reader_headers():
            text = header.read_text()
            for name in re.findall(declaration, text, re.M):
                found += 1
                self.assertRegex(text, rf"VRN_API [^;(]*\b{re.escape(name)}\(", header.name)
        self.assertGreater(found, 25)


class Symbols(unittest.TestCase):
    def setUp(self):
        library = LIBRARIES / "libvrn.so"
        lines = output("nm", "--dynamic", "--defined-only", "--demangle", library).splitlines()
        self.symbols = [line.split(" ", 2)[2] for line in lines]
        self.assertGreater(len(self.symbols), 150)
        self.assertIn(f"Library soname: [{SONAME}]", output("readelf", "-d", library))

    def test_are_declared_in_the_headers(self):
        words = set(re.findall(r"\w+", "".join(header.read_text() for header in headers())))
        for symbol in self.symbols:
            match = re.match(r"(?:(?:typeinfo|typeinfo name|vtable) for |[\w ]+ (?=vor::\w+<))?(vor::[\w:~]+)", symbol)
            self.assertTrue(match, symbol)
            for name in re.findall(r"\w+", match.group(1)):
                self.assertIn(name, words, symbol)

    def test_every_marked_function_is_exported(self):
        declared = [name for header in headers() for name in
                    re.findall(r"(?<!define )VRN_API [\w:<>*& ]*?(\w+)\(", header.read_text())]
        self.assertGreater(len(declared), 25)
        for name in declared:
            self.assertTrue(any(re.search(rf"\b{name}\b", symbol) for symbol in self.symbols), name)


class Builds(unittest.TestCase):
    def viewer_prints_what_is_shown(self, program):
        self.assertEqual(output(program, SCENE, env=ENVIRONMENT), blocks("text")[0])

    def configure(self, name, cmake, *options):
        """Configures a project with the program of the document and returns its build folder."""
        folder = TEMPORARY / name
        folder.mkdir()
        (folder / "CMakeLists.txt").write_text(cmake)
        (folder / "viewer.cpp").write_text(blocks("cpp")[0])
        output("cmake", "-S", folder, "-B", folder / "build", "-DCMAKE_BUILD_TYPE=Release", *options)
        return folder / "build"

    def test_with_cmake(self):
        for kind, shared, libraries in (("static", "OFF", ["libdeflate.so.0"]), ("shared", "ON", [SONAME])):
            with self.subTest(kind):
                build = self.configure(kind, blocks("cmake")[0], f"-DCMAKE_PREFIX_PATH={PREFIX}",
                                       f"-DBUILD_SHARED_LIBS={shared}")
                output("cmake", "--build", build)
                self.viewer_prints_what_is_shown(build / "viewer")
                needed = [name for name in needed_libraries(build / "viewer") if re.match("lib(vrn|deflate)", name)]
                self.assertEqual(needed, libraries)

    def test_conversions(self):
        (TEMPORARY / "converts").mkdir()
        (TEMPORARY / "converts" / "CMakeLists.txt").write_text(blocks("cmake", "docs/convert.md")[0])
        (TEMPORARY / "converts" / "converter.cpp").write_text(blocks("cpp", "docs/convert.md")[0])
        build = TEMPORARY / "converts" / "build"
        output("cmake", "-S", TEMPORARY / "converts", "-B", build, f"-DCMAKE_PREFIX_PATH={PREFIX}")
        output("cmake", "--build", build)
        (TEMPORARY / "a.obj").write_text("v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n")
        output(build / "converter", TEMPORARY / "a.obj", TEMPORARY / "a.stl")
        self.assertEqual((TEMPORARY / "a.stl").stat().st_size, 84 + 50)

    def test_with_other_versions_of_cmakes_package(self):
        asking = 'cmake_minimum_required(VERSION 3.16)\nproject(asks LANGUAGES NONE)\n' \
                 'find_package(vrn ${WANTED} CONFIG QUIET)\nfile(WRITE found "${vrn_CONSIDERED_VERSIONS} ${vrn_VERSION}")\n'
        major, minor, _ = map(int, VERSION.split("."))
        others = [f"{major}.{minor + 1}", f"{major + 1}.0", *([f"{major}.{minor - 1}"] if minor > 0 else [])]
        for wanted, version in ((f"{major}.{minor}", VERSION), *((other, "") for other in others)):
            name = f"asks_{wanted}"
            self.configure(name, asking, f"-Dvrn_DIR={LIBRARIES}/cmake/vrn", f"-DWANTED={wanted}",
                           "-DBUILD_SHARED_LIBS=ON")
            self.assertEqual((TEMPORARY / name / "found").read_text(), f"{VERSION} {version}")

    def test_with_the_sources_in_a_folder(self):
        (TEMPORARY / "sources").mkdir()
        (TEMPORARY / "sources" / "vrn").symlink_to(ROOT)
        folder = TEMPORARY / "carries"
        cmake = blocks("cmake")[1].replace("add_subdirectory(vrn)", f"add_subdirectory({TEMPORARY}/sources/vrn vrn)")
        build = self.configure("carries", cmake)
        targets = output("cmake", "--build", build, "--target", "help")
        self.assertIn("vrn", targets)
        for left_out in ("vrn_command", "vrn_tests", "vrn_shared"):
            self.assertNotIn(left_out, targets)
        self.assertFalse((folder / "build" / "vrn" / "vrn.pc").exists())

    def test_with_pkg_config(self):
        shared, static = blocks("sh")
        output("sh", "-e", "-c", shared.replace("-o viewer", f"-o viewer {' '.join(WARNINGS)}"), cwd=TEMPORARY,
               env=ENVIRONMENT)
        self.assertIn(SONAME, needed_libraries(TEMPORARY / "viewer"))
        self.viewer_prints_what_is_shown(TEMPORARY / "viewer")
        output("sh", "-e", "-c", static, cwd=TEMPORARY, env=ENVIRONMENT)
        self.assertEqual(needed_libraries(TEMPORARY / "viewer"), [])
        self.viewer_prints_what_is_shown(TEMPORARY / "viewer")

    def test_the_readme_begins_with_code_that_works(self):
        (TEMPORARY / "first.cpp").write_text(
            "#include <vrn/vrn.h>\n#include <iostream>\nint main() {\n" + blocks("cpp", "README.md")[0] + "}\n")
        flags = output("pkg-config", "--cflags", "--libs", "vrn", env=ENVIRONMENT).split()
        output("c++", "-std=c++20", *WARNINGS, "first.cpp", *flags, "-o", "first", cwd=TEMPORARY)
        self.assertEqual(output(TEMPORARY / "first", env=ENVIRONMENT, cwd=ROOT), "45\n")

    def test_pieces_print_what_is_shown(self):
        pieces = blocks("cpp")[1:]
        shown = blocks("text")[1:]
        self.assertEqual(len(pieces), len(shown))
        program = "#include <vrn/vrn.h>\n#include <cstdio>\n#include <memory>\n#include <span>\n#include <vector>\n"
        for i, piece in enumerate(pieces):
            program += f"static void piece{i}([[maybe_unused]] vrn::Scene& scene) {{\n{piece}}}\n"
        calls = "".join(f'    piece{i}(scene);\n    std::puts("--");\n' for i in range(len(pieces)))
        program += "int main(int, char** argv) {\n    vrn::Scene scene;\n" \
                   "    if (!vrn::parseVrn(&scene, vrn::File::open(argv[1]), false))\n        return 1;\n" + calls + "}\n"
        (TEMPORARY / "pieces.cpp").write_text(program)
        flags = output("pkg-config", "--cflags", "--libs", "vrn", env=ENVIRONMENT).split()
        output("c++", "-std=c++20", *WARNINGS, "pieces.cpp", *flags, "-o", "pieces", cwd=TEMPORARY)
        self.assertEqual(output(TEMPORARY / "pieces", SCENE, env=ENVIRONMENT), "".join(text + "--\n" for text in shown))


if __name__ == "__main__":
    unittest.main()
