"""Shell completion of `vrn`. The variable ODD names a program with special characters in its table of commands."""
import os
import re
import shutil
import subprocess
import tempfile
import unittest

from command import VRN, Folder, run
from overview import commands, options

ODD = os.environ["ODD"]


def script(shell, program=VRN):
    return subprocess.run([program, "completion", shell], capture_output=True, check=True).stdout.decode()


class Scripts(unittest.TestCase):
    def test_are_sound_for_their_shells(self):
        for program in (VRN, ODD):
            for shell in ("bash", "fish", "zsh"):
                if shutil.which(shell):
                    with self.subTest(shell):
                        result = subprocess.run([shell, "-n", "/dev/stdin"], input=script(shell, program).encode(),
                                                capture_output=True)
                        self.assertEqual((result.returncode, result.stderr), (0, b""))

    def test_are_for_these_shells_only(self):
        for arguments in (["tcsh"], [], ["bash", "zsh"]):
            result = run("completion", *arguments)
            self.assertEqual((result.returncode, result.stdout), (2, b""))


class Shell(Folder):
    """A folder with scenes, other files and folders."""

    def setUp(self):
        super().setUp()
        (self.folder / "sub").mkdir()
        for name in ("a.vrn", "b c.vrn", "types.json", "sub/d.vrn"):
            self.file(name, "")

    def run_shell(self, *command):
        with tempfile.TemporaryDirectory() as home: # shells write to it
            environment = {"PATH": os.environ["PATH"], "HOME": home}
            result = subprocess.run(command, cwd=self.folder, capture_output=True, env=environment, timeout=60)
        self.assertEqual(result.stderr, b"")
        return result.stdout.decode()


class Bash(Shell):
    def complete(self, *words, program=VRN):
        """The completions of the last word."""
        call = 'COMP_WORDS=(vrn "$@") COMP_CWORD=$#; _vrn; printf "%s\\n" "${COMPREPLY[@]}"'
        output = self.run_shell("bash", "-c", script("bash", program) + call, "bash", *words)
        return sorted(line for line in output.split("\n") if line)

    def test_commands_come_first(self):
        self.assertEqual(self.complete(""), sorted(commands()))
        self.assertEqual(self.complete("che"), ["check"])
        self.assertEqual(self.complete("-"), ["--help", "--version", "-h"])
        self.assertEqual(self.complete("nonsense", ""), [])

    def test_every_option_is_offered(self):
        self.assertGreaterEqual(len(commands()), 5)
        for command in commands():
            with self.subTest(command):
                self.assertEqual(self.complete(command, "-"), options(command))

    def test_scenes_and_folders_are_offered_in_any_place(self):
        self.assertEqual(self.complete("check", ""), ["a.vrn", "b c.vrn", "sub"])
        self.assertEqual(self.complete("check", "a.vrn", "--werror", "sub/"), ["sub/d.vrn"])
        self.assertEqual(self.complete("check", *["a.vrn"] * 12, "b"), ["b c.vrn"])
        self.assertEqual(self.complete("dump", "--types", "x", "b"), ["b c.vrn"])

    def test_values_follow_their_options(self):
        self.assertEqual(self.complete("check", "--format", ""), ["github", "json", "sarif", "text"])
        self.assertEqual(self.complete("check", "--format", "=", "j"), ["json"])
        self.assertEqual(self.complete("check", "--format", "="), ["github", "json", "sarif", "text"])
        self.assertEqual(self.complete("check", "--types", "t"), ["types.json"])
        self.assertEqual(self.complete("check", "--max-array", ""), [])
        self.assertEqual(self.complete("man", "--write", ""), ["sub"])
        self.assertEqual(self.complete("man", "che"), ["check"])
        self.assertEqual(self.complete("man", "check", ""), [])

    def test_no_options_after_two_dashes(self):
        self.assertEqual(self.complete("check", "--", "-"), [])
        self.assertEqual(self.complete("check", "--", "--format", ""), ["a.vrn", "b c.vrn", "sub"])

    def test_arguments_go_by_their_place(self):
        self.assertEqual(self.complete("odd", "t", program=ODD), ["types.json"])
        for before in (1, 2, 9, 10, 11):
            self.assertEqual(self.complete("odd", *["x"] * before, "", program=ODD), ["sub"], before)
        self.assertEqual(self.complete("odd", "-m", "s", program=ODD), ["slow"])
        self.assertEqual(self.complete("odd", "-i", "t", program=ODD), ["types.json"])


@unittest.skipUnless(shutil.which("fish"), "there is no fish")
class Fish(Shell):
    def complete(self, line, program=VRN):
        output = self.run_shell("fish", "--no-config", "-c", script("fish", program) + "complete -C $argv", line)
        return sorted(entry.partition("\t")[0] for entry in output.split("\n") if entry)

    def test_commands_come_first(self):
        self.assertEqual(self.complete("vrn "), sorted(commands()))
        self.assertEqual(self.complete("vrn -"), ["--help", "--version", "-h"])

    def test_every_option_is_offered(self):
        for command in commands():
            with self.subTest(command):
                self.assertEqual(self.complete(f"vrn {command} -"), options(command))

    def test_values_and_files(self):
        self.assertEqual(self.complete("vrn check "), ["a.vrn", "b c.vrn", "sub/"])
        self.assertEqual(self.complete("vrn check a.vrn sub/"), ["sub/d.vrn"])
        self.assertEqual(self.complete("vrn check --format "), ["github", "json", "sarif", "text"])
        self.assertEqual(self.complete("vrn check --types t"), ["types.json"])
        self.assertEqual(self.complete("vrn check --max-array "), [])
        self.assertEqual(self.complete("vrn man --write "), ["sub/"])
        self.assertEqual(self.complete("vrn man check "), [])

    def test_arguments_go_by_their_place(self):
        self.assertEqual(self.complete("vrn odd t", program=ODD), ["types.json"])
        for before in (1, 2, 9, 10, 11):
            self.assertEqual(self.complete("vrn odd " + "x " * before, program=ODD), ["sub/"], before)
        self.assertEqual(self.complete("vrn odd -m s", program=ODD), ["slow"])
        self.assertEqual(self.complete("vrn odd -m fast -i t", program=ODD), ["types.json"])

    def test_texts_are_shown_as_they_are(self):
        output = self.run_shell("fish", "--no-config", "-c", script("fish", ODD) + "complete -C 'vrn odd --in'")
        self.assertEqual(output, "--in-place\tDon't [ever]: \\ `x` $HOME\n")


@unittest.skipUnless(shutil.which("zsh"), "there is no zsh")
class Zsh(Shell):
    def words_for(self, command, program=VRN):
        """The arguments that the script passes to _arguments of zsh for a command."""
        stand_ins = """
            compdef() { : }
            _arguments() { if [[ $1 == -C ]]; then state=argument; else print -rl -- "$@"; fi }
        """
        output = self.run_shell("zsh", "-f", "-c", stand_ins + script("zsh", program) + "words=($1); _vrn", "zsh", command)
        return output.splitlines()

    def test_every_option_is_told_of(self):
        for command in commands():
            with self.subTest(command):
                told = re.findall(r"^(?:\*|\([^)]*\))(-[-\w]+)", "\n".join(self.words_for(command)), re.M)
                self.assertEqual(sorted(told), options(command))

    def test_kinds_of_values(self):
        told = self.words_for("check")
        self.assertIn('*:FILE:_files -g "*.vrn"', told)
        self.assertTrue(any(line.startswith("(--format)--format=[") and line.endswith("]:FORMAT:(text json sarif github)") for line in told))

    def test_texts_are_quoted(self):
        told = self.words_for("odd", ODD)
        self.assertIn("1::FIRST:_files", told)
        self.assertIn("*:REST:_files -/", told)
        self.assertIn("(-i --in-place)-i[Don't \\[ever\\]: \\\\ `x` $HOME]", told)
        self.assertIn("(-m --mode)--mode=[How]:A\\:B:(fast slow)", told)
        self.assertIn("(-m --mode)-m+[How]:A\\:B:(fast slow)", told)


if __name__ == "__main__":
    unittest.main()
