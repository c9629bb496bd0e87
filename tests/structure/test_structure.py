"""The rules that keep the folders apart and the library well-behaved."""
import pathlib
import re
import subprocess
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]

# Which folders a folder may include from. The scanner's messages stand in the reader's one table of texts.
CLI_ROOMS = ("arguments", "commands", "diff", "files", "graph", "query", "report", "shell", "terminal")
CONVERT_ROOMS = ("export", "import", "model", "shared")
KNOWS = {
    "scene/core": {"scene/core"},
    "scene": {"scene", "scene/core"},
    "impl/lexer": {"impl/lexer", "scene/core", "impl/Messages.h"},
    "impl/numbers": {"impl/numbers", "impl/lexer/CharClass.h", "scene/core"},
    "impl": {"impl", "impl/lexer", "impl/numbers", "scene", "scene/core"},
    "convert/model": {"convert/model", "convert/shared", "scene", "scene/core"},
    "convert/import": {"convert/import", "convert/shared", "scene", "scene/core"},
    "convert/export": {"convert/export", "convert/model", "convert/shared", "scene", "scene/core"},
    "convert": {"convert", "convert/import", "convert/export", "convert/shared", "scene", "scene/core"},
    "cli/terminal": {"cli/terminal", "scene/core"},
    "cli/arguments": {"cli/arguments", "cli/terminal", "scene/core"},
    "cli/files": {"cli/files", "cli/arguments", "cli/terminal", "impl/Reader.h", "scene", "scene/core"},
    "cli/report": {"cli/report", "cli/files", "cli/terminal", "impl/Reader.h", "scene", "scene/core"},
    "cli/query": {"cli/query", "cli/terminal", "scene", "scene/core"},
    "cli/diff": {"cli/diff", "cli/query", "cli/terminal", "scene", "scene/core"},
    "cli/graph": {"cli/graph", "cli/query", "scene", "scene/core"},
    "cli/shell": {"cli/shell", "cli/arguments", "cli/terminal"},
    "cli/commands": {*("cli/" + room for room in CLI_ROOMS), "convert/Convert.h", "impl/Formatter.h", "scene", "scene/core"},
    "cli": {"cli/arguments", "cli/commands", "cli/files", "cli/terminal"},
    "include/vrn": {"impl/Formatter.h", "impl/Reader.h", "scene", "scene/core"},
}
LIBRARY = ("scene/core", "scene", "impl/lexer", "impl/numbers", "impl")
PROGRAM = ("convert", *("convert/" + room for room in CONVERT_ROOMS), "cli", *("cli/" + room for room in CLI_ROOMS))


def sources(folder):
    return sorted([*(ROOT / folder).glob("*.h"), *(ROOT / folder).glob("*.cpp")])


def code(path):
    """A file without its comments and character literals."""
    return re.sub(r"//.*|/\*.*?\*/|'(?:[^'\\\n]|\\.)'", "", path.read_text())


class Structure(unittest.TestCase):
    def test_includes_point_one_way(self):
        for folder, known in KNOWS.items():
            self.assertTrue(sources(folder), folder)
            for path in sources(folder):
                for include in re.findall(r'#include "(.*)"', path.read_text()):
                    allowed = include in known or str(pathlib.PurePosixPath(include).parent) in known
                    self.assertTrue(allowed, f"{path.relative_to(ROOT)} includes {include}")

    def test_the_reader_includes_no_more_of_the_scene_than_a_host_gives(self):
        given = {"Scene.h", "Node.h", "Input.h", "Interfaces.h", "AttrData.h", "AttrType.h", "DataType.h",
                 "DataTypeTable.h"}
        for path in sources("impl") + sources("impl/lexer") + sources("impl/numbers"):
            for include in re.findall(r'#include "scene/(\w+\.h)"', path.read_text()):
                self.assertIn(include, given, path.name)

    def test_numbers_meet_text_in_one_file(self):
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
        for folder in LIBRARY:
            for path in sources(folder):
                for found in re.findall(banned, code(path)):
                    self.fail(f"{path.relative_to(ROOT)}: {found}")
        printing = [p.name for f in LIBRARY for p in sources(f) if "stderr" in code(p)]
        self.assertEqual(printing, ["Log.cpp"], "only the log's default sink prints")

    def test_headers_say_what_they_are(self):
        for folder in KNOWS:
            for path in sources(folder):
                if path.suffix == ".h":
                    text = path.read_text()
                    self.assertTrue(text.startswith("//"), path.name)
                    self.assertIn("#pragma once", text, path.name)

    def test_files_stay_small(self):
        for folder in (*LIBRARY, *PROGRAM):
            for path in sources(folder):
                self.assertLess(len(path.read_text().splitlines()), 420, path.name)

    def test_messages_stand_in_one_file(self):
        for path in sources("impl") + sources("impl/lexer") + sources("impl/numbers"):
            if path.name == "Messages.h":
                continue
            for text in re.findall(r'"((?:[^"\\\n]|\\.)*)"', code(path)):
                self.assertFalse(" " in text, f"{path.name}: {text!r} looks like a message")

    def test_sources_are_all_built(self):
        cmake = (ROOT / "CMakeLists.txt").read_text()
        for folder in (*LIBRARY, *PROGRAM):
            for path in sources(folder):
                if path.suffix == ".cpp":
                    self.assertIn(str(path.relative_to(ROOT)), cmake)


if __name__ == "__main__":
    unittest.main()
