"""Which lines of a C++ file are worth mutating, and what a mutant looks like as a diff."""
import difflib
import random
import re

TOKEN = re.compile(r"""
    (?P<line_comment>//[^\n]*)
  | (?P<block_comment>/\*.*?\*/)
  | (?P<raw_string>R"(?P<delimiter>[^(\s]*)\(.*?\)(?P=delimiter)")
  | (?P<string>"(?:[^"\\\n]|\\.)*")
  | (?P<character>(?<![0-9A-Za-z_])'(?:[^'\\\n]|\\.)+')
""", re.S | re.X)


def without_comments(text):
    """The text with blanks in place of comments, so that lines and columns stay where they are."""
    def blank(match):
        is_comment = match.lastgroup in ("line_comment", "block_comment")
        return re.sub(r"[^\n]", " ", match.group()) if is_comment else match.group()
    return TOKEN.sub(blank, text)


def without_strings(text):
    """The same for what is inside string and character literals; their quotes stay."""
    def blank(match):
        body = match.group()
        return body[0] + re.sub(r"[^\n]", " ", body[1:-1]) + body[-1] if len(body) > 1 else body
    return TOKEN.sub(blank, without_comments(text))


def code_lines(text):
    """The numbers, from 1, of the lines that hold code: no comments, preprocessor directives or static assertions."""
    code = without_strings(text)
    code = re.sub(r"^[ \t]*#(?:[^\n]*\\\n)*[^\n]*", lambda m: re.sub(r"[^\n]", " ", m.group()), code, flags=re.M)
    code = re.sub(r"\bstatic_assert\s*\(.*?\)\s*;", lambda m: re.sub(r"[^\n]", " ", m.group()), code, flags=re.S)
    return {number for number, line in enumerate(code.split("\n"), 1)
            if re.search(r"\w", line) and not re.match(r"\s*(?:using\s|namespace\s|template\s*<[^()]*>\s*$|public:|private:)", line)}


def is_change_of_code(before, after):
    """Whether two versions of a line differ in more than blanks and comments."""
    return "".join(without_comments(before).split()) != "".join(without_comments(after).split())


def mutated(text, line, replacement):
    lines = text.splitlines(keepends=True)
    lines[line - 1] = replacement
    return "".join(lines)


def diff(path, before, after):
    """A unified diff, which also identifies the mutant."""
    return "".join(difflib.unified_diff(before.splitlines(keepends=True), after.splitlines(keepends=True),
                                        f"a/{path}", f"b/{path}"))


def sample(mutants, count, seed):
    """`count` of the mutants; with the same seed, a larger sample begins with the smaller one."""
    shuffled = list(mutants)
    random.Random(seed).shuffle(shuffled)
    return shuffled[:count]
