#!/usr/bin/env python3
"""Prints docs/grammar.md: the rules that stand as `///` comments above the recognisers."""
import pathlib
import sys

ROOT = pathlib.Path(__file__).resolve().parents[1]
SECTIONS = [
    ("Statements", ["impl/VrnParser.cpp", "impl/Comment.cpp", "impl/NodeStatements.cpp", "impl/Assignment.cpp"]),
    ("Paths", ["impl/Path.cpp"]),
    ("Values", ["impl/Value.cpp", "impl/Scalar.cpp", "impl/Buffer.cpp", "impl/BufferReader.cpp"]),
    ("Numbers", ["scene/core/NumberText.cpp"]),
    ("Links", ["impl/Links.cpp"]),
    ("Tokens", ["impl/lexer/Lexer.cpp", "impl/lexer/CharClass.h", "scene/core/String.cpp"]),
]
HEAD = """# Grammar

The rules of a VRN text, one for each recogniser of the reader; `make grammar` collects them from the
comments above these. `::=` defines, `|` separates alternatives that are tried in their order, `*` is any
number, `?` at most one. Quoted words are keywords or characters; keywords have no case. Names in capitals
are tokens, which the last section makes from characters. What stands behind a rule explains it.

[format.md](format.md) explains the language with examples.
"""


def rules(name):
    for line in (ROOT / name).read_text().splitlines():
        if line.startswith("///"):
            yield line[4:]


def document():
    parts = [HEAD]
    for title, names in SECTIONS:
        lines = [line for name in names for line in rules(name) if line]
        parts.append(f"## {title}\n\n```text\n" + "\n".join(lines) + "\n```\n")
    return "\n".join(parts)


if __name__ == "__main__":
    sys.stdout.write(document())
