"""The check of the prose: every rule finds what it should, in the parts of a file that are prose and in no others."""
import importlib.machinery
import importlib.util
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.dont_write_bytecode = True
LOADER = importlib.machinery.SourceFileLoader("prose", str(ROOT / "scripts" / "prose"))
prose = importlib.util.module_from_spec(importlib.util.spec_from_loader("prose", LOADER))
LOADER.exec_module(prose)
RULES = {path.stem: prose.Rule(path) for path in (ROOT / "styles" / "vrn").glob("*.yml")}

BAD = {
    "Archaisms": [
        "The scene is read anew.", "It fails anyhow.", "It is slow, albeit correct.", "One is amongst the others.",
        "Elements come to be in order.", "An input comes to be here.", "It waits for\never.", "It is not known hitherto.",
        "Copy it, lest it is lost.", "Mend the link.", "The fault is mended.", "The copy thereof is kept.",
        "The node and the inputs therein.", "It thereupon ends.", "It waits whilst others run.",
    ],
    "Phrases": [
        "It is dropped without\n  a word.", "It lets go of the buffer.",
        "They let go of it.", "The writer hands on the text.", "What is handed on is a copy.", "The log says nothing.",
        "There is nothing to say.", "It takes the next byte for granted.", "What a cache suffers from.",
        "The table is hard on it.", "A node makes up the rest.", "Write it, be there a file or not.",
        "The core knows nobody.", "Use a log of your own.", "One of one's own.",
        "It ends when none is found.", "A value of a type that is none.", "They are kept apart.", "Both are told apart.",
        "An input that is not there yet.", "What is there, counts.", "Inputs and their like.",
    ],
    "Words": [
        "The file is kept as it stands.",
        "The text behind the colon.", "The folder in front of it.", "The rule stands above it.", "They stand here.",
        "It stood there.", "Both run at once.", "The type is asked for once.", "There is room in the buffer.",
        "A foreign node.", "It tells the type.", "It ends, whatever it reads.", "A file from strangers.",
        "It gives the memory back; it gives back a value.", "A value given back.", "The comment speaks of a node.",
        "It is spoken of.", "An input that wants to be linked.",
    ],
    "SuchChains": ["Such a value has such a type."],
    "SentenceLength": ["It reads" + " and reads" * 30 + "."],
}
GOOD = [
    "Read the file again. It is stored forever; an amendment is recommended.",
    "Silently dropped. The handle is on the stack. He said something.",
    "`*` stands for any characters. A stand-alone tool. The standard is outstanding.",
    "If there is none, the result is null. It is there to be read. Apart from that, keep it.",
    "The text after the colon. At the beginning, once. The ballroom is a classroom.",
    "Such a value has a type. Such a type has a value.",
    "A log of its own, empty if none is found. The make target builds it up. Hands are on deck.",
    "It reads" + " and reads" * 20 + ". It reads" + " and reads" * 20 + ".",
    "name" + " and more" * 20 + "\nname   first" + " and more" * 20 + "\n\nname" + " and more" * 20,
]


class Rules(unittest.TestCase):
    def test_all_have_examples(self):
        self.assertEqual(set(BAD), set(RULES))

    def test_find_bad_sentences(self):
        for name, sentences in BAD.items():
            for sentence in sentences:
                found = prose.findings("a.md", sentence, RULES.values())
                self.assertEqual({re.search(r"\[(\w+)\]$", message).group(1) for _, _, message in found}, {name}, sentence)

    def test_every_token_has_a_bad_sentence(self):
        for name, rule in RULES.items():
            settings = prose.read_yaml((ROOT / "styles" / "vrn" / f"{name}.yml").read_text())
            for token in settings.get("tokens") or settings.get("swap") or []:
                pattern = rule.words(token)
                self.assertTrue(any(pattern.search(" ".join(s.split())) for s in BAD[name]), (name, token))

    def test_let_good_sentences_pass(self):
        for sentence in GOOD:
            self.assertEqual(prose.findings("a.md", sentence, RULES.values()), [], sentence)

    def test_a_message_names_the_words_and_the_replacement(self):
        self.assertEqual(prose.findings("a.md", "One.\n\nRead anew.", RULES.values()),
                         [(3, 6, "Use 'again' instead of 'anew'. [Archaisms]")])


class Style(unittest.TestCase):
    def test_yaml_is_read(self):
        self.assertEqual(prose.read_yaml("# a\nextends: existence\nmessage: \"a: 'b'\"\ntokens:\n  - 'it''s: #1'\n  - two\n"),
                         {"extends": "existence", "message": "a: 'b'", "tokens": ["it's: #1", "two"]})
        self.assertEqual(prose.read_yaml("swap:\n  'a(?:b)': \"'c'\"\n  d: e f\n"), {"swap": {"a(?:b)": "'c'", "d": "e f"}})

    def test_what_is_not_understood_is_an_error(self):
        with self.assertRaises(ValueError):
            prose.read_yaml("tokens\n")
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder) / "Odd.yml"
            path.write_text("extends: spelling\nmessage: no\n")
            with self.assertRaises(ValueError):
                prose.Rule(path)


class Parts(unittest.TestCase):
    """Each text has the word `anew` in every part that is no prose, and `behind` once in each part that is."""

    def assert_found(self, name, text):
        found = prose.findings(name, text, RULES.values())
        self.assertEqual([f"{line}:{column}" for line, column, _ in found],
                         [f"{i}:{match.start() + 1}" for i, line in enumerate(text.splitlines(), 1)
                          for match in re.finditer("behind", line)])
        for _, _, message in found:
            self.assertIn("'behind'", message)

    def test_markdown(self):
        self.assert_found("docs/a.md", "# One behind\n\ntwo `anew` [behind](anew.md) <!-- anew -->\n```sh\nanew\n```\n"
                                       "- three ``an ` anew``\n- behind <https://anew.org>\n\n~~~\nanew `\n~~~\n| a | behind |\n")

    def test_cpp(self):
        text = ('// One behind it.\n#include "anew here.h"\n/// rule ::= anew\n/* two\n * behind */ int anew;\n'
                'int a = 1\'000; // three `anew` behind\n//\n//     anew(code);\n//\n// behind\n'
                'char b = \'"\'; auto c = "// anew"; char d = \'\\\'\'; // behind\nauto e = R"(anew // "anew")";\n')
        self.assert_found("scene/A.cpp", text)
        self.assert_found("scene/A.h", text)

    def test_messages(self):
        text = 'auto a = "one word\\nbehind"; auto b = "behind" " two";\nauto c = "anew";\nauto d = "\\"three\\" behind";\n'
        self.assert_found("inspect/path/A.cpp", text.replace('"behind" ', '"behind it" '))
        self.assertEqual(prose.findings("scene/A.cpp", text, RULES.values()), [])
        self.assertEqual([f[:2] for f in prose.findings("convert/A.cpp", 'f("goes without "\n  "a word");', RULES.values())],
                         [(1, 9)])

    def test_python(self):
        text = ('#!/usr/bin/anew\n"""One\nbehind."""\nimport anew\n\n\ndef anew():\n    """Two behind."""\n'
                '    x = "# anew"  # three behind\n    return {"a": "anew"}\n# behind\n')
        self.assert_found("a.py", text)
        self.assert_found("scripts/a", text.replace("/usr/bin/anew", "/usr/bin/env python3"))

    def test_hash_comments(self):
        text = '# One behind\nset(A "a # anew") # behind\nset(B it\'s$#anew)\nanew\n\n#     anew\n# behind\n'
        for name in ("cmake/A.cmake", "tests/CMakeLists.txt", "Makefile", "packages-checks.txt"):
            self.assert_found(name, text)
        self.assert_found("scripts/a", "#!/bin/sh anew\n" + text)

    def test_other_files_are_not_looked_at(self):
        self.assertEqual(prose.findings("tests/data/accept/1.vrn", "# behind", RULES.values()), [])
        self.assertEqual(prose.findings("LICENSE", "behind", RULES.values()), [])


class Script(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.root = pathlib.Path(temporary.name).resolve()
        (self.root / "scripts").mkdir()
        shutil.copy(ROOT / "scripts" / "prose", self.root / "scripts")
        shutil.copytree(ROOT / "styles", self.root / "styles")

    def run_prose(self, *arguments):
        result = subprocess.run([sys.executable, self.root / "scripts" / "prose", *arguments], cwd=self.root,
                                capture_output=True, text=True)
        return result.returncode, result.stdout, result.stderr

    def test_checks_named_files(self):
        (self.root / "bad.md").write_text("Read anew.\n")
        (self.root / "good.md").write_text("Read again.\n")
        self.assertEqual(self.run_prose("good.md"), (0, "", ""))
        self.assertEqual(self.run_prose("bad.md", "good.md"),
                         (1, "bad.md:1:6: Use 'again' instead of 'anew'. [Archaisms]\n", ""))
        self.assertEqual(self.run_prose("nowhere.md")[0], 2)

    @unittest.skipUnless(shutil.which("git"), "Git is not installed")
    def test_checks_the_project_without_what_is_fixed_or_ignored(self):
        subprocess.run(["git", "init", "-q", self.root], check=True, capture_output=True)
        (self.root / ".gitignore").write_text("build/\n")
        for name in ("a.md", "build/b.md", "tests/data/c.md", "examples/d.md"):
            (self.root / name).parent.mkdir(parents=True, exist_ok=True)
            (self.root / name).write_text("Read anew.\n")
        status, output, _ = self.run_prose()
        self.assertEqual((status, re.findall(r"^(.*?):", output, re.M)), (1, ["a.md", "examples/d.md"]))


if __name__ == "__main__":
    unittest.main()
