"""The documents match the program: their examples are run, their lists compared with the sources."""
import contextlib
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

VRN = os.environ["VRN"]
EXAMPLE = os.environ["EXAMPLE"]
ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "scripts"))
sys.dont_write_bytecode = True
import grammar  # noqa: E402


def blocks(path):
    """Returns the fenced blocks of a document as (language, text)."""
    return re.findall(r"^```(\w+)\n(.*?)^```$", path.read_text(), re.M | re.S)


def messages():
    """Returns every message of the reader by name."""
    found = {}
    for header in ("impl/Messages.h", "scene/core/Decompress.h"):
        text = (ROOT / header).read_text().replace("\\\n", "")
        for name, message in re.findall(r'MESSAGE\((\w+),(?: \w+,)?\s*"((?:[^"\\]|\\.)*)"\)', text):
            found[name] = message
    return found


COMMAND_MESSAGES = (ROOT / "cli/terminal/Messages.h", ROOT / "inspect/path/Messages.h")


def command_messages():
    """Every message of the command, by name."""
    text = "".join(path.read_text() for path in COMMAND_MESSAGES)
    found = re.findall(r'inline constexpr char (\w+)\[\] =\s*"((?:[^"\\]|\\.)*)";', text)
    return {name: message.removesuffix("\\n") for name, message in found}


def check_messages():
    """Every kind of finding of the check by a catalogue, and its text."""
    return dict(re.findall(r'MESSAGE\((\w+), "((?:[^"\\]|\\.)*)"\)', (ROOT / "check/Messages.h").read_text()))


def refusals():
    """The reasons why edits are refused, by name."""
    text = (ROOT / "impl/edit/Refusals.h").read_text()
    return dict(re.findall(r'inline constexpr char (\w+)\[\] =\s*"((?:[^"\\]|\\.)*)";', text))


class Format(unittest.TestCase):
    def test_examples_are_read_as_shown(self):
        examples = blocks(ROOT / "docs" / "format.md")
        self.assertGreater(sum(language == "vrn" for language, _ in examples), 12)
        for (language, text), (next_language, shown) in zip(examples, examples[1:] + [("", "")]):
            if language != "vrn":
                continue
            with self.subTest(text):
                check = subprocess.run([VRN, "check", "-"], input=text.encode(), capture_output=True).stdout.decode()
                diagnostics = check[: check.rindex("1 file checked")]
                self.assertEqual(diagnostics, shown if next_language == "text" else "")
                if next_language == "json":
                    dump = subprocess.run([VRN, "dump", "-"], input=text.encode(), capture_output=True).stdout
                    self.assertEqual(json.loads(dump)["nodes"], json.loads(shown))


class BufferKeywords(unittest.TestCase):
    """The keywords that the reader accepts, the grammar and docs/format.md are the same."""

    def setUp(self):
        source = (ROOT / "scene/DataType.h").read_text()
        names = re.findall(r"^    (\w+),$", source[source.index("enum class DataType"):source.index("dataTypeCount")], re.M)
        self.candidates = [name.lower() for name in names]
        self.assertGreater(len(self.candidates), 50)
        with tempfile.TemporaryDirectory() as folder:
            for keyword in self.candidates:
                (pathlib.Path(folder) / f"{keyword}.vrn").write_text(f"t a; a.x = {keyword}[0] {{}};")
            report = subprocess.run([VRN, "check", "--format", "json", folder], capture_output=True).stdout.decode()
        self.accepted = {pathlib.Path(file["file"]).stem for file in map(json.loads, report.splitlines()) if file["ok"]}
        self.assertGreater(len(self.accepted), 40)

    def test_grammar(self):
        rule = dict(Grammar.rules(grammar.document()))["bufferType"]
        pattern = re.compile(re.sub(r"[ ']", "", rule))
        self.assertEqual({keyword for keyword in self.candidates if pattern.fullmatch(keyword)}, self.accepted)

    def test_table(self):
        section = re.search(r"^## Buffers\n(.*?)^## ", (ROOT / "docs/format.md").read_text(), re.M | re.S).group(1)
        listed = set()
        for keywords, contents in re.findall(r"^\| (`[^|]*) \| ([^|]*) \|$", section, re.M):
            listed |= set(re.findall(r"`(\w+)`", keywords))
            if contents.endswith(" floats"):
                listed |= {keyword[:-1] + "d" for keyword in re.findall(r"`(\w+)`", keywords)}
        self.assertIn("| the same with `d` for `f` |", section)
        self.assertEqual(listed, self.accepted)


class Catalogue(unittest.TestCase):
    def test_example_is_accepted(self):
        examples = [text for language, text in blocks(ROOT / "docs" / "catalogue.md") if language == "json"]
        self.assertEqual(len(examples), 2)
        result = subprocess.run([VRN, "dump", "--types", "/dev/stdin", ROOT / "tests/data/accept/004_declarations.vrn"],
                                input=examples[0].encode(), capture_output=True)
        self.assertEqual(result.returncode, 0, result.stderr)
        names = [i["name"] for i in json.loads(result.stdout)["nodes"][0]["inputs"]]
        self.assertEqual(names, ["fov", "projection", "response", "lenses", "target", "serial"])
        scene = b"patch p; p.sets[1].corners = byte[1] {0}; p.sets[1].coords = vec2f[1] {0 0}; p.opacity = 2;"
        with tempfile.TemporaryDirectory() as folder:
            types = pathlib.Path(folder) / "types.json"
            types.write_text(examples[1])
            result = subprocess.run([VRN, "check", "--format", "json", "--types", types, "-"], input=scene,
                                    capture_output=True)
        self.assertEqual([d["rule"] for d in json.loads(result.stdout)["diagnostics"]], ["outOfRange"])

    def test_members_are_those_of_the_schema(self):
        schema = json.loads((ROOT / "catalogues/catalogue.schema.json").read_text())["definitions"]
        listed = set()
        for cell in re.findall(r"^\| (`[^|]*) \|", (ROOT / "docs/catalogue.md").read_text(), re.M):
            listed |= set(re.findall(r"`(\w+)`", cell))
        of_types = set(schema["nodeType"]["properties"]) - {"inputs", "outputs", "renamedInputs", "renamedOutputs"}
        self.assertEqual(listed, set(schema["input"]["properties"]) | of_types)


@contextlib.contextmanager
def folder_with_vrn():
    """Yields a temporary folder with the files that the documented commands read, and an environment to run them in."""
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        for part in ("examples", "tests", "catalogues"):
            (folder / part).symlink_to(ROOT / part)
        (folder / "bin").mkdir()
        (folder / "bin/vrn").symlink_to(VRN)
        yield folder, {**os.environ, "PATH": f"{folder}/bin:{os.environ['PATH']}"}


class Sessions(unittest.TestCase):
    """The pages of single commands."""

    def test_commands_print_what_is_shown(self):
        with folder_with_vrn() as (folder, environment):
            for page in ("tree", "graph", "diff", "query", "fmt", "edit", "convert"):
                sessions = [text for language, text in blocks(ROOT / "docs" / f"{page}.md") if language == "console"]
                self.assertTrue(sessions, page)
                for command, shown in re.findall(r"^\$ (.*)\n((?:(?!\$ ).*\n)*)", "".join(sessions), re.M):
                    with self.subTest(command):
                        result = subprocess.run(command, shell=True, cwd=folder, env=environment,
                                                stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
                        self.assertEqual(result.stdout.decode(), shown)


class Messages(unittest.TestCase):
    def test_messages_are_those_of_the_sources(self):
        document = (ROOT / "docs" / "messages.md").read_text()
        sections = re.findall(r"^### `([^\n]*)`\n(.*?)(?=^#|\Z)", document, re.M | re.S)
        self.assertGreater(len(messages()), 30)
        self.assertEqual(len(command_messages()), sum(path.read_text().count("constexpr") for path in COMMAND_MESSAGES))
        findings = [text.replace('\\"', '"') for text in check_messages().values()]
        self.assertGreater(len(findings), 10)
        self.assertEqual(len(refusals()), (ROOT / "impl/edit/Refusals.h").read_text().count("constexpr"))
        expected = [*messages().values(), *command_messages().values(), *findings, *refusals().values()]
        self.assertEqual(sorted(title for title, _ in sections), sorted(expected))
        for title, text in sections:
            self.assertIn("Remedy: ", text, title)

    def test_kinds_of_findings_are_listed(self):
        table = re.search(r"^\| kind \|.*?\n\n", (ROOT / "docs/check.md").read_text(), re.M | re.S).group()
        self.assertEqual(re.findall(r"^\| `(\w+)` ", table, re.M), list(check_messages()))
        titles = re.findall(r"^### `([^\n]*)`\n`(\w+)`\.", (ROOT / "docs/messages.md").read_text(), re.M)
        self.assertEqual({name: title for title, name in titles},
                         {name: text.replace('\\"', '"') for name, text in check_messages().items()})

    def test_every_refusal_is_used_and_tested(self):
        sources = "".join(path.read_text() for path in (ROOT / "impl/edit").glob("*.cpp"))
        tests = (ROOT / "tests/impl/edit/EditTest.cpp").read_text()
        for name, reason in refusals().items():
            self.assertRegex(sources, rf"\brefusals::{name}\b")
            self.assertIn(max(reason.split("%s"), key=len).strip("': "), tests)

    def test_the_command_has_its_messages_in_one_file(self):
        sources = {path: path.read_text() for folder in ("cli", "inspect") for path in (ROOT / folder).glob("*/*.cpp")}
        for name in command_messages():
            self.assertRegex("".join(sources.values()), rf"\bmessages::{name}\b")
        for path, text in sources.items():
            for call in re.findall(r"\b(?:complain|trouble|fail|PathError|PictureError)\(([^;]*);", text):
                for literal in re.findall(r'"((?:[^"\\]|\\.)*)"', call):
                    self.assertTrue(" " not in literal or literal == "standard output", f"{path.name}: {literal!r}")

    def test_every_message_is_in_a_golden_log(self):
        logs = "".join(p.read_text(errors="replace") for p in (ROOT / "tests" / "data").glob("*/*.log"))
        # No input causes the first three; the others need a catalogue.
        without = {"inputNotFound", "noScene", "stopped", "badEnumValue", "enumWarning", "cannotConnectOutput"}
        without |= set(re.findall(r"MESSAGE\((\w+), Notice,", (ROOT / "impl/Messages.h").read_text()))
        for name, message in messages().items():
            pattern = "".join(
                {"%s": ".*", "%d": r"\d+", "%c": ".", "%llu": r"\d+"}.get(part, re.escape(part))
                for part in re.split(r"(%s|%d|%c|%llu)", message)
            )
            with self.subTest(name):
                self.assertEqual(bool(re.search(pattern, logs)), name not in without)


class Losses(unittest.TestCase):
    def setUp(self):
        self.rows = [text for line in (ROOT / "docs" / "losses.md").read_text().splitlines() if line.startswith("| `")
                     for text in re.findall(r"`([^`]+)`", line.split(" | ")[0])]
        self.sources = "".join(re.sub(r'"\s*\n\s*"', "", path.read_text()) for path in (ROOT / "convert").rglob("*.[ch]*"))

    def test_every_loss_is_listed(self):
        calls = re.findall(r"(?<!out\.)(?<!out_\.)\b(?:losses_?\.add|add|addLoss|reject)\(([^;]*?)\);", self.sources)
        texts = [text for call in calls for text in re.findall(r'"([a-z][^"]* [^" ][^"]*)"', call) if "refuse" not in call]
        self.assertGreater(len(texts), 100)
        for name in {name for call in calls for name in re.findall(r"^(?:[^,]*, )?(\w+)(?:, |$)", call)}:
            texts += re.findall(rf'constexpr const char\* {name} =\s*"([^"]*)"', self.sources)
        listed = "\n".join(self.rows)
        self.assertEqual([text for text in texts if text.strip() not in listed], [])

    def test_every_row_is_in_the_sources(self):
        prefixes = ("", "meshes with ", "skins with ", "animation channels with ", "targets of ")
        for row in self.rows:
            if not re.search(r"\b[A-Z]{4,}\b(?<!WebP|JPEG|JSON)", row):
                self.assertTrue(any(row.startswith(prefix) and f'"{row.removeprefix(prefix)}"' in self.sources
                                    for prefix in prefixes), row)


class Grammar(unittest.TestCase):
    def test_is_generated_from_the_sources(self):
        self.assertEqual((ROOT / "docs" / "grammar.md").read_text(), grammar.document(), "run `make grammar`")

    # Words that need no definition.
    INFORMAL = {"any"}

    @staticmethod
    def rules(document):
        """Returns (name, right-hand side without explanations) of each rule."""
        found = []
        for line in "\n".join(re.findall(r"^```text\n(.*?)^```$", document, re.M | re.S)).splitlines():
            rule = re.match(r"([\w-]+) ::= (.*)", line)
            if rule:
                found.append([rule.group(1), ""])
            found[-1][1] += " " + (rule.group(2) if rule else line).strip().split("   ")[0]
        return found

    @classmethod
    def faults(cls, document):
        """Returns the names that are used but not defined, and those that are defined more than once."""
        rules = cls.rules(document)
        names = [name for name, _ in rules]
        words = {word for _, right in rules for word in re.findall(r"[A-Za-z][\w-]*", re.sub(r"""'[^']*'|"[^"]*\"""", " ", right))}
        return sorted(words - set(names) - cls.INFORMAL), sorted({name for name in names if names.count(name) > 1})

    def test_every_name_is_defined_once(self):
        self.assertGreater(len(self.rules(grammar.document())), 20)
        self.assertEqual(self.faults(grammar.document()), ([], []))

    def test_missing_and_repeated_rules_are_found(self):
        rules = "# Grammar\nUNUSED prose\n```text\n{}\n```\n"
        self.assertEqual(self.faults(rules.format("a ::= b* 'c' \"'\" | B-c   D\n    | 'e' f   g\nb ::= any\nb ::= a")),
                         (["B-c", "f"], ["b"]))
        self.assertEqual(self.faults(rules.format("a ::= ( B | '\"' )\nB ::= 'x'..'y' a")), ([], []))


class Host(unittest.TestCase):
    def test_every_operation_that_the_reader_calls_is_listed(self):
        listed = (ROOT / "docs" / "host.md").read_text()
        called = set()
        for path in (ROOT / "impl").glob("*.*"):
            called |= set(re.findall(r"\b(?:scene|target|node|input|array|parent|owner|element\(\w+\)|element)->(\w+)\(", path.read_text()))
        self.assertGreater(len(called), 25)
        for name in called - {"parse"}:
            self.assertRegex(listed, rf"`[^`]*\b{name}\(", name)


class Readme(unittest.TestCase):
    README = ROOT / "README.md"

    def test_commands_print_what_is_shown(self):
        sessions = [text for language, text in blocks(self.README) if language == "console"]
        self.assertGreaterEqual(len(sessions), 2)
        commands = re.findall(r"^\$ (vrn .*)\n((?:(?!\$ ).*\n)*)", "\n".join(sessions), re.M)
        self.assertGreaterEqual(len(commands), 5)
        with folder_with_vrn() as (folder, environment):
            for command, shown in commands:
                with self.subTest(command):
                    result = subprocess.run(command, shell=True, cwd=folder, env=environment,
                                            stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
                    self.assertEqual(result.stdout.decode(), shown.rstrip("\n") + "\n")

    def test_run_target_prints_what_is_shown(self):
        session = next(text for _, text in blocks(self.README) if text.startswith("$ make run\n"))
        makefile = (ROOT / "Makefile").read_text()
        lines = [line.strip() for line in re.findall(r"^\tbuild/release/(vrn .*)$", makefile, re.M)]
        self.assertEqual(len(lines), 2)
        for line in lines:
            output = subprocess.run(line.replace("vrn ", VRN + " ", 1), shell=True, cwd=ROOT, capture_output=True)
            self.assertIn(output.stdout.decode(), session)

    def test_program_is_the_example(self):
        self.assertIn((ROOT / "examples" / "read_scene.cpp").read_text(), self.README.read_text())
        shown = [text for language, text in blocks(self.README) if language == "text"]
        for scene, output in zip(("first_scene", "dagger"), shown):
            result = subprocess.run([EXAMPLE, ROOT / "examples" / (scene + ".vrn")], capture_output=True)
            self.assertEqual((result.stdout.decode(), result.returncode), (output, 0))
        self.assertGreaterEqual(len(shown), 1)

    def test_example_program_reports_an_error(self):
        result = subprocess.run([EXAMPLE, "/nowhere"], capture_output=True)
        self.assertEqual((result.stdout.decode(), result.returncode), ("/nowhere: No such file or directory\n", 1))

    def test_every_command_has_a_page(self):
        table = dict(re.findall(r"^\| `vrn (\w+)[^|]*` \|.*\]\((docs/[\w-]+\.md)\) \|$", self.README.read_text(), re.M))
        shell = {"completion": "docs/shell.md", "man": "docs/shell.md"}
        commands = re.findall(r"Command (\w+)Command\(\);", (ROOT / "cli/commands/Commands.h").read_text())
        self.assertEqual(set(commands), {*table, *shell})
        for command, page in {**table, **shell}.items():
            self.assertIn(f"vrn {command}", (ROOT / page).read_text())

    def test_link_targets_exist(self):
        for document in [self.README, *(ROOT / "docs").glob("*.md"), ROOT / "CONTRIBUTING.md", ROOT / "SECURITY.md"]:
            for target in re.findall(r"\]\(([^)#:\s]+)\)", document.read_text()):
                self.assertTrue((document.parent / target).exists(), (document.name, target))


class Packages(unittest.TestCase):
    def test_every_package_has_a_reason(self):
        reasons = (ROOT / "docs" / "dependencies.md").read_text()
        lists = "".join(path.read_text() for path in ROOT.glob("packages*.txt"))
        packages = {l for l in lists.split("\n") if l and not l.startswith("#")}
        for package in packages:
            self.assertIn(f"`{package}`", reasons)
        self.assertEqual(sorted(re.findall(r"`([a-z][a-z0-9+:-]+)`(?=[,| ].* \|)", reasons)), sorted(packages))


if __name__ == "__main__":
    unittest.main()
