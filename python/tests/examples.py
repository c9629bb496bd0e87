"""Runs the examples of a file in the current folder, and compares what they print with what the file says.

usage: examples.py FILE [SETTING]

In a document these are its blocks of Python, one after the other in one namespace, in which `print(...)  # text` must
print a line that starts with the text. In a module or a stub these are the sessions (`>>>`) in its docstrings. A
setting is a file of Python that is run first, for the names that the examples take for granted. Any CPython runs this,
without packages.
"""

from __future__ import annotations

import ast
import contextlib
import doctest
import io
import pathlib
import re
import sys
from collections.abc import Iterator


def run_document(path: pathlib.Path, names: dict[str, object]) -> int:
    """Runs the blocks of a document and returns their number. Tracebacks have the lines of the document."""
    text = path.read_text(encoding="utf-8")
    blocks = list(re.finditer(r"^```python\n(.*?)^```", text, re.M | re.S))
    for block in blocks:
        source = "\n" * text.count("\n", 0, block.start(1)) + block[1]
        printed = io.StringIO()
        with contextlib.redirect_stdout(printed):
            exec(compile(source, str(path), "exec"), names)
        lines = iter(printed.getvalue().splitlines())
        for expected in re.findall(r"print\(.*\) +# (.+)", block[1]):
            start = expected.removesuffix(", ...}")
            assert any(line.startswith(start) for line in lines), f"{path}: {expected!r} is not printed"
    return len(blocks)


def run_docstrings(path: pathlib.Path, names: dict[str, object]) -> int:
    """Runs the sessions in the docstrings of a file and returns their number."""
    runner = doctest.DocTestRunner(optionflags=doctest.ELLIPSIS | doctest.REPORT_ONLY_FIRST_FAILURE)
    parser, count = doctest.DocTestParser(), 0
    for line, docstring in docstrings(path):
        session = parser.get_doctest(docstring, dict(names), path.name, str(path), line)
        runner.run(session)
        count += bool(session.examples)
    assert not runner.failures, f"{path}: {runner.failures} examples failed"
    return count


def docstrings(path: pathlib.Path) -> Iterator[tuple[int, str]]:
    """The docstrings of a file with their lines."""
    for node in ast.walk(ast.parse(path.read_text(encoding="utf-8"))):
        if isinstance(node, (ast.Module, ast.ClassDef, ast.FunctionDef)):
            docstring = ast.get_docstring(node)
            if docstring:
                yield node.body[0].lineno - 1, docstring


def main(path: pathlib.Path, setting: pathlib.Path | None = None) -> None:
    names: dict[str, object] = {"__name__": "__main__"}
    if path.suffix != ".md":
        import vrn

        names["vrn"] = vrn
    if setting:
        exec(compile(setting.read_text(encoding="utf-8"), str(setting), "exec"), names)
    run = run_document if path.suffix == ".md" else run_docstrings
    print(run(path, names), "examples ran")


if __name__ == "__main__":
    main(*map(pathlib.Path, sys.argv[1:]))
