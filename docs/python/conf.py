"""Sphinx: the reference of the Python package, from its docstrings and stubs, with the documents of the project."""

import importlib.metadata
import importlib.util
import json
import pathlib
import re
import sys
import types

from docutils import nodes
from myst_parser.parsers.sphinx_ import MystParser
from pygments.lexers.special import TextLexer
from sphinx.addnodes import pending_xref
from sphinx.application import Sphinx
from sphinx.environment import BuildEnvironment

project = "vrn"
version = release = importlib.metadata.version("vrn")
extensions = ["myst_parser", "sphinx.ext.autodoc"]
root_doc = "python/index"
source_suffix = {".md": "markdown", ".ipynb": "notebook"}
include_patterns = ["*.md", "python/*.md", "python/*.ipynb"]
html_theme = "alabaster"
html_theme_options = {"description": "VRN scenes in Python", "fixed_sidebar": True}
html_show_copyright = False

default_role = "code"  # docstrings put code in single backquotes, as Markdown does
autodoc_member_order = "bysource"
autodoc_default_options = {"members": True, "special-members": "__getitem__"}
autodoc_typehints_format = "short"
maximum_signature_line_length = 100
myst_heading_anchors = 3

# Every name in a signature must lead to its description, but for those that others describe.
nitpicky = True
nitpick_ignore_regex = [
    (r"py:.*", r"(collections|concurrent|enum|numpy|os|pyarrow|typing|typing_extensions)\..*|ArrayLike|Buffer")
]


def load_stub() -> None:
    """Puts the stub in the place of the module in C++, whose functions and properties show no types."""
    (folder,) = importlib.util.find_spec("vrn").submodule_search_locations or ()
    stub = pathlib.Path(folder, "_vrn.pyi")
    # What it imports from the package imports the module in turn, and is needed for annotations alone.
    text, count = re.subn(r"^from \.\w+ import .*", "", stub.read_text(), flags=re.M)
    assert count
    module = types.ModuleType("vrn._vrn")
    value = type("Value", (), {"__module__": "vrn.typing"})
    vars(module).update(Value=value, __version__=version, readable_formats=(), writable_formats=())
    exec(compile("from __future__ import annotations\n" + text, str(stub), "exec"), vars(module))
    sys.modules[module.__name__] = module


load_stub()


class NotebookParser(MystParser):
    """Shows a notebook as a page, without outputs, which are not stored."""

    supported = ("notebook",)

    def parse(self, text: str, document: nodes.document) -> None:
        cells = ((cell["cell_type"], "".join(cell["source"])) for cell in json.loads(text)["cells"])
        pieces = (f"```python\n{source}\n```" if kind == "code" else source for kind, source in cells)
        super().parse("\n\n".join(pieces), document)


def linked(app: Sphinx, env: BuildEnvironment, node: pending_xref, text: nodes.Element) -> nodes.Element | None:
    """A link for a name that is described by its public path: `vrn.Input` for `Input` and `vrn._vrn.Input`."""
    if node["refdomain"] != "py":
        return None
    domain = env.domains.python_domain
    name = node["reftarget"].rpartition(".")[2]
    homes = [home for home in domain.objects if re.fullmatch(rf"vrn(\.\w+)?\.{name}", home)]
    return domain.resolve_any_xref(env, node["refdoc"], app.builder, homes[0], node, text)[0][1] if homes else None


def setup(app: Sphinx) -> None:
    app.add_source_parser(NotebookParser)
    app.add_lexer("vrn", TextLexer)
    app.connect("missing-reference", linked)
