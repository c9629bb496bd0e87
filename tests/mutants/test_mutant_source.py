"""What `make mutants` changes, and what it leaves alone."""
import pathlib
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "scripts"))
sys.dont_write_bytecode = True
import mutant_source  # noqa: E402


class CodeLines(unittest.TestCase):
    def check(self, text, expected):
        self.assertEqual(mutant_source.code_lines(text), expected)

    def test_comments_and_blank_lines_are_left_out(self):
        self.check("// one\nint a;\n\n/* two\nthree */ int b;\n}\n/* four */", {2, 5})

    def test_directives_are_left_out_with_their_continuations(self):
        self.check('#include "a.h"\n#define A(x) \\\n    (x + 1)\nint a;\n  #  pragma once\n', {4})

    def test_static_assertions_are_left_out(self):
        self.check("static_assert(sizeof(int) == 4);\nstatic_assert(f(1) ==\n              2, \"why\");\nint a = 1;", {4})

    def test_literals_are_no_comments(self):
        self.check('f("//");\ng(\'"\'); // "\nh(R"(/*)");\nint n = 1\'000; // \'\nk("*/");', {1, 2, 3, 4, 5})


class Changes(unittest.TestCase):
    def test_of_code_only(self):
        changes = mutant_source.is_change_of_code
        self.assertTrue(changes("a + b; // c\n", "a - b; // c\n"))
        self.assertFalse(changes("a + b; // c + d\n", "a + b; // c - d\n"))
        self.assertFalse(changes("a + b;\n", "a  +  b;\n"))
        self.assertTrue(changes('f("// 1");\n', 'f("// 2");\n'))

    def test_diff_names_file_and_line(self):
        after = mutant_source.mutated("a\nb\nc\n", 2, "B\n")
        self.assertEqual(after, "a\nB\nc\n")
        self.assertEqual(mutant_source.diff("x/y.cpp", "a\nb\nc\n", after),
                         "--- a/x/y.cpp\n+++ b/x/y.cpp\n@@ -1,3 +1,3 @@\n a\n-b\n+B\n c\n")


class Sample(unittest.TestCase):
    def test_larger_ones_begin_with_smaller_ones(self):
        small, large = (mutant_source.sample(range(1000), n, 7) for n in (10, 50))
        self.assertEqual(large[:10], small)
        self.assertEqual(len(set(large)), 50)
        self.assertNotEqual(small, mutant_source.sample(range(1000), 10, 8))


if __name__ == "__main__":
    unittest.main()
