"""The manual pages. The variable ODD is the path of a program with special characters in its table of commands."""
import os
import re
import shutil
import subprocess
import unittest

from command import VRN, Folder, run
from overview import commands, options

ODD = os.environ["ODD"]


def page(command, program=VRN):
    arguments = ["man", command] if command else ["man"]
    return subprocess.run([program, *arguments], capture_output=True, check=True).stdout


def shown(text):
    """The page as plain text."""
    output = subprocess.run(["mandoc", "-Tascii", "-Owidth=200"], input=text, capture_output=True, check=True).stdout
    return re.sub(".\b", "", output.decode())


@unittest.skipUnless(shutil.which("mandoc"), "there is no mandoc")
class Pages(unittest.TestCase):
    def test_every_option_and_example_has_its_place(self):
        for command in commands():
            text = shown(page(command))
            for option in options(command):
                self.assertRegex(text, rf"\n       (-\S+, )*{option}\b", command)
            help_text = run(command, "--help").stdout.decode()
            for line in re.search(r"^Example:\n((?:  .*\n)+)", help_text, re.M).group(1).splitlines():
                self.assertIn(f"\n       {line[2:]}\n", text, command)

    def test_are_sound(self):
        for text in [page(""), page("odd", ODD), *map(page, commands())]:
            lint = subprocess.run(["mandoc", "-Tlint", "-Wwarning"], input=text, capture_output=True)
            self.assertEqual((lint.returncode, lint.stdout), (0, b""), text)

    def test_texts_are_shown_as_they_are(self):
        text = shown(page("odd", ODD))
        for line in ("Don't [ever]: use \"this\" \\ that `way` $HOME.", ".PP is no macro 'br is none either",
                     "vrn odd 'a b' | tr ' ' '\\n'", ".hidden ~ ^", "The default is 0.1",
                     "vrn odd [OPTION]... [FIRST] REST...", "-m, --mode A:B", "How.  One of fast, slow.  The default is fast"):
            self.assertIn(line, text)
        self.assertIn("A list:\n         -i   indented\n         .x   \\fBnot bold\n", text)


class Man(Folder):
    def test_program_leads_to_its_commands(self):
        text = page("").decode()
        for command in commands():
            self.assertIn(f"\\fB{command}\\fR", text)
            self.assertIn(f".BR vrn\\-{command} (1)", text)

    def test_all_are_written_into_a_folder(self):
        self.assertEqual(self.run_here("man", "--write", ".").returncode, 0)
        names = ["vrn.1", *(f"vrn-{command}.1" for command in commands())]
        self.assertEqual(sorted(p.name for p in self.folder.iterdir()), sorted(names))
        self.assertEqual((self.folder / "vrn-check.1").read_bytes(), page("check"))

    def test_one_is_written_into_a_folder(self):
        self.assertEqual(self.run_here("man", "check", "--write", ".").returncode, 0)
        self.assertEqual([p.name for p in self.folder.iterdir()], ["vrn-check.1"])

    def test_trouble(self):
        result = run("man", "nonsense\x1b")
        self.assertEqual((result.returncode, result.stdout), (2, b""))
        self.assertEqual(result.stderr, b"vrn: nonsense\\x1B: no such command; vrn --help lists all commands\n")
        result = self.run_here("man", "--write", "nowhere")
        self.assertEqual((result.returncode, result.stderr), (2, b"vrn: nowhere/vrn.1: No such file or directory\n"))


if __name__ == "__main__":
    unittest.main()
