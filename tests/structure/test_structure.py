"""The rules between the folders of the sources, and for the sources of the library."""
import fnmatch
import pathlib
import re
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]

# Which folders and single headers a folder may include from. The lexer shares the message table of the reader.
CLI_FOLDERS = ("arguments", "commands", "files", "graph", "shell", "terminal")
INSPECT_FOLDERS = tuple("inspect/" + folder for folder in ("diff", "path", "read", "report", "summary", "text", "tree",
                                                         "value"))
MAY_INCLUDE = {
    "scene/core": {"scene/core"},
    "scene/syntax": {"scene/syntax", "scene/core", "scene/AttrType.h"},
    "scene": {"scene", "scene/core", "scene/syntax"},
    "impl/lexer": {"impl/lexer", "scene/core", "scene/syntax", "scene/AttrType.h",
                   "impl/Messages.h"},
    "impl/numbers": {"impl/numbers", "scene/syntax/CharClass.h", "scene/core"},
    "impl": {"impl", "impl/lexer", "impl/numbers", "scene", "scene/core", "scene/syntax"},
    "impl/edit": {"impl/edit", "impl", "impl/lexer", "scene", "scene/core", "scene/syntax"},
    "convert/shared": {"convert/shared", "scene", "scene/core", "scene/syntax"},
    "convert/scenes": {"convert/scenes", "convert/shared", "scene", "scene/core"},
    "convert/model": {"convert/model", "convert/shared", "scene", "scene/core"},
    "convert/import": {"convert/import", "convert/scenes", "convert/shared", "scene", "scene/core"},
    "convert/import/assimp": {"convert/import/assimp", "convert/import/fbx", "convert/import", "convert/scenes",
                              "convert/shared", "scene", "scene/core"},
    "convert/import/fbx": {"convert/import/fbx", "convert/scenes", "convert/shared", "scene", "scene/core"},
    "convert/import/gltf": {"convert/import/gltf", "convert/import", "convert/shared", "scene", "scene/core"},
    "convert/export": {"convert/export", "convert/model", "convert/shared", "scene", "scene/core"},
    "convert": {"convert", "convert/import", "convert/import/assimp", "convert/import/gltf", "convert/export",
                "convert/model", "convert/scenes", "convert/shared", "scene", "scene/core"},
    "check": {"check", "impl/SourceMap.h", "impl/TypeRules.h", "scene", "scene/core"},
    "inspect/text": {"inspect/text", "scene/core"},
    "inspect/value": {"inspect/value", "inspect/text", "scene", "scene/core"},
    "inspect/path": {"inspect/path", "inspect/value", "scene", "scene/core"},
    "inspect/diff": {"inspect/diff", "inspect/text", "inspect/value", "scene", "scene/core"},
    "inspect/tree": {"inspect/tree", "inspect/path/Glob.h", "inspect/text", "inspect/value", "scene", "scene/core"},
    "inspect/read": {"inspect/read", "inspect/text", "check/Findings.h", "check/SceneCheck.h", "impl/Reader.h",
                     "impl/SourceMap.h", "scene", "scene/core"},
    "inspect/report": {"inspect/report", "inspect/read", "inspect/text", "check/Findings.h", "scene", "scene/core"},
    "inspect/summary": {"inspect/summary", "scene"},
    "cli/terminal": {"cli/terminal", "scene/core"},
    "cli/arguments": {"cli/arguments", "cli/terminal", "scene/core"},
    "cli/files": {"cli/files", "cli/arguments", "cli/terminal", "inspect/read", "inspect/text", "scene",
                  "scene/core"},
    "cli/graph": {"cli/graph", "cli/terminal", "inspect/value/ValueText.h", "scene", "scene/core"},
    "cli/shell": {"cli/shell", "cli/arguments", "cli/terminal"},
    "cli/commands": {*("cli/" + folder for folder in CLI_FOLDERS), *INSPECT_FOLDERS, "check/SceneCheck.h",
                     "convert/Conversion.h", "convert/Convert.h", "convert/Measure.h", "impl/Edit.h",
                     "impl/Formatter.h", "scene", "scene/core"},
    "cli": {"cli/arguments", "cli/commands", "cli/files", "cli/terminal"},
    "python/src": {"python/src", *INSPECT_FOLDERS, "check/Findings.h", "check/SceneCheck.h", "convert/Conversion.h",
                   "impl/BufferType.h", "impl/Formatter.h", "impl/TypeRules.h", "scene", "scene/core",
                   "scene/syntax/Identifier.h"},
    "include/vrn": {"impl/Edit.h", "impl/Formatter.h", "impl/Reader.h", "impl/SourceMap.h", "scene", "scene/core"},
}
LIBRARY = [folder for folder in MAY_INCLUDE if folder.split("/")[0] in ("scene", "impl")]
PROGRAM = [folder for folder in MAY_INCLUDE if folder.split("/")[0] in ("check", "convert", "inspect", "cli", "python")]
# Separate programs, which may include everything.
UNRESTRICTED = ("bench", "examples", "tests")

# Sources of the command and the converter without a header of the same name, and the header that declares them.
SHARED_HEADERS = {
    "cli/commands/*.cpp": "cli/commands/Commands.h",
    "cli/shell/Completion?*.cpp": "cli/shell/Completion.h",
    "convert/import/assimp/WithoutAssimp.cpp": "convert/import/assimp/AssimpImport.h",
    "inspect/report/*Report.cpp": "inspect/report/Report.h",
    "python/src/Bind*.cpp": "python/src/Module.h",
}


def sources(folder):
    return sorted([*(ROOT / folder).glob("*.h"), *(ROOT / folder).glob("*.cpp")])


def folders_with_sources():
    """Every folder of the project that contains C++ sources, except those of builds."""
    tops = [top for top in ROOT.iterdir() if top.is_dir() and not top.name.startswith(".")
            and top.name not in ("build", *UNRESTRICTED)]
    return {path.parent.relative_to(ROOT).as_posix() for top in tops for path in top.rglob("*")
            if path.suffix in (".h", ".hpp", ".c", ".cc", ".cpp")}


def code(path):
    """A file without its comments and character literals."""
    return re.sub(r"//.*|/\*.*?\*/|'(?:[^'\\\n]|\\.)'", "", path.read_text())


class Structure(unittest.TestCase):
    def test_every_folder_has_a_rule(self):
        self.assertEqual(folders_with_sources(), set(MAY_INCLUDE))

    def test_includes_are_allowed(self):
        for folder, allowed in MAY_INCLUDE.items():
            for path in sources(folder):
                for include in re.findall(r'#\s*include "(.*)"', path.read_text()):
                    is_allowed = include in allowed or str(pathlib.PurePosixPath(include).parent) in allowed
                    self.assertTrue(is_allowed, f"{path.relative_to(ROOT)} includes {include}")

    def test_every_source_has_a_header(self):
        for folder in PROGRAM:
            for path in sources(folder):
                name = path.relative_to(ROOT).as_posix()
                if path.suffix != ".cpp" or name == "cli/main.cpp" or path.with_suffix(".h").exists():
                    continue
                shared = [header for pattern, header in SHARED_HEADERS.items() if fnmatch.fnmatch(name, pattern)]
                self.assertEqual(len(shared), 1, f"{name} has no header")
                self.assertIn(f'#include "{shared[0]}"', path.read_text(), name)

    def test_shared_headers_are_still_needed(self):
        lonely = [path.relative_to(ROOT).as_posix() for folder in PROGRAM for path in sources(folder)
                  if path.suffix == ".cpp" and not path.with_suffix(".h").exists()]
        for pattern, header in SHARED_HEADERS.items():
            self.assertTrue((ROOT / header).exists(), header)
            self.assertTrue(fnmatch.filter(lonely, pattern), f"{pattern} matches no source without a header")

    def test_headers_have_no_using_directives(self):
        found = [path.relative_to(ROOT).as_posix() for folder in MAY_INCLUDE
                 for path in (ROOT / folder).rglob("*.h") if re.search(r"\busing\s+namespace\b", code(path))]
        self.assertEqual(set(found), {"include/vrn/vrn.h"})

    def test_the_reader_includes_only_scene_headers_of_a_host(self):
        given = {"Scene.h", "Node.h", "Input.h", "Interfaces.h", "AttrData.h", "AttrType.h", "DataType.h",
                 "DataTypeTable.h"}
        for path in sources("impl") + sources("impl/lexer") + sources("impl/numbers"):
            for include in re.findall(r'#include "scene/(\w+\.h)"', path.read_text()):
                self.assertIn(include, given, path.name)

    def test_numbers_are_converted_in_one_file(self):
        banned = r"\b(strtod|strtof|strtol\w*|strtoul\w*|ato[fil]\w*|sto[fdil]\w*|from_chars|to_chars|sscanf)\b|%[-+ #0-9.]*l?[eEfFgGaA]\b"
        for folder in (*LIBRARY, *PROGRAM):
            for path in sources(folder):
                if path.name == "NumberText.cpp":
                    continue
                found = re.search(banned, code(path))
                integer_only = path.name == "String.cpp" and found and found.group() == "to_chars"
                self.assertTrue(not found or integer_only, f"{path.relative_to(ROOT)}: {found and found.group()}")

    def test_the_library_never_prints_aborts_or_touches_the_locale(self):
        banned = r"\b(setlocale|std::locale|printf|puts|fputs|fwrite|std::cout|std::cerr|std::clog|abort|std::terminate|exit)\b *[(<:]"
        for folder in (*LIBRARY, "check", *INSPECT_FOLDERS):
            for path in sources(folder):
                for found in re.findall(banned, code(path)):
                    self.fail(f"{path.relative_to(ROOT)}: {found}")
        printing = [p.name for f in LIBRARY for p in sources(f) if "stderr" in code(p)]
        self.assertEqual(printing, ["Log.cpp"], "only the log's default sink prints")

    def test_headers_start_with_a_comment(self):
        for folder in MAY_INCLUDE:
            for path in sources(folder):
                if path.suffix == ".h":
                    text = path.read_text()
                    self.assertTrue(text.startswith("//"), path.name)
                    self.assertIn("#pragma once", text, path.name)

    def test_files_stay_small(self):
        for folder in (*LIBRARY, *PROGRAM):
            for path in sources(folder):
                self.assertLess(len(path.read_text().splitlines()), 420, path.name)

    def test_messages_are_in_one_file(self):
        for path in sources("impl") + sources("impl/lexer") + sources("impl/numbers"):
            if path.name == "Messages.h":
                continue
            for text in re.findall(r'"((?:[^"\\\n]|\\.)*)"', re.sub(r"static_assert\(.*?\);", "", code(path), flags=re.S)):
                self.assertFalse(" " in text, f"{path.name}: {text!r} looks like a message")

    def test_sources_are_all_built(self):
        for folder in (*LIBRARY, *PROGRAM):
            base = ROOT / "python" if folder == "python/src" else ROOT
            cmake = (base / "CMakeLists.txt").read_text()
            for path in sources(folder):
                if path.suffix == ".cpp":
                    self.assertIn(str(path.relative_to(base)), cmake)


if __name__ == "__main__":
    unittest.main()
