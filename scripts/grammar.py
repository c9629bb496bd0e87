#!/usr/bin/env python3
"""Prints docs/grammar.md from the rules in the `///` comments above the recognisers."""
import pathlib
import sys

ROOT = pathlib.Path(__file__).resolve().parents[1]
SECTIONS = [
    ("Statements", ["impl/VrnParser.cpp", "impl/Comment.cpp", "impl/NodeStatements.cpp", "impl/Assignment.cpp"]),
    ("Paths", ["impl/Path.cpp"]),
    ("Values", ["impl/Value.cpp", "impl/Scalar.cpp", "impl/Buffer.cpp", "impl/BufferReader.cpp"]),
    ("Links", ["impl/Links.cpp"]),
    ("Inside tokens", ["scene/core/NumberText.cpp"]),
    ("Tokens", ["impl/lexer/Lexer.cpp", "impl/lexer/DelimitedTokens.cpp", "scene/syntax/CharClass.h", "scene/core/String.cpp"]),
]
# Rules of the values' routines that describe the characters of one token.
INSIDE_TOKENS = {"index", "components", "count", "numbers", "number", "payload"}
HEAD = """# Grammar

The rules of VRN, one for each recogniser of the reader; `make grammar` collects them from the comments above the
recognisers. `::=` defines a rule, `|` separates alternatives, which are tried in order, `*` means any number, `?` at most
one. Quoted words are keywords, which are not case-sensitive, or characters. Names in capitals are tokens; the last
section defines them. Three spaces separate a rule from its explanation.

[format.md](format.md) explains the language with examples.
"""


def rules(name):
    for line in (ROOT / name).read_text().splitlines():
        if line.startswith("///"):
            yield line[4:]


def document():
    parts = [HEAD]
    found = [line for _, names in SECTIONS for name in names for line in rules(name)]
    inside = [line for line in found if line.split(" ")[0] in INSIDE_TOKENS]
    for title, names in SECTIONS:
        lines = inside if title == "Inside tokens" else []
        lines = lines + [line for name in names for line in rules(name) if line and line not in inside]
        parts.append(f"## {title}\n\n```text\n" + "\n".join(lines) + "\n```\n")
    return "\n".join(parts)


if __name__ == "__main__":
    sys.stdout.write(document())
