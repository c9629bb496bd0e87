"""A scene as HTML, for notebooks: nodes that open to their inputs, without script and with everything escaped."""

from __future__ import annotations

import html
import itertools

from ._vrn import Input, Node, Output, Scene

TYPE_CHECKING = False
if TYPE_CHECKING:
    from collections.abc import Collection, Iterator

# A notebook stays usable with any scene.
MAX_NODES = 200
MAX_INPUTS = 100
MAX_CHARACTERS = 100


def scene_html(scene: Scene) -> str:
    """The nodes, each of which opens to its inputs and their values."""
    nodes = [_node_html(node) for node in itertools.islice(scene.values(), MAX_NODES)]
    return f"<div><b>{_escaped(repr(scene))}</b>{''.join(nodes)}{_rest(scene, MAX_NODES, 'nodes')}</div>"


def _node_html(node: Node) -> str:
    kind = "definition" if node.is_definition else node.type
    inputs = node.inputs
    rows = "".join(_row(input) for input in itertools.islice(inputs.values(), MAX_INPUTS))
    return (
        f"<details><summary><b>{_escaped(node.name)}</b> <i>{_escaped(kind)}</i></summary>"
        f"<table>{rows}</table>{_rest(inputs, MAX_INPUTS, 'inputs')}</details>"
    )


def _row(input: Input) -> str:
    texts = (input.name, input.type, _value_text(input))
    cells = "".join(f'<td style="text-align: left">{_escaped(text)}</td>' for text in texts)
    return f"<tr>{cells}</tr>"


def _value_text(input: Input) -> str:
    """The value in one line; of what has many, how many there are."""
    link = f" → {input.connection.label}" if input.connection else ""
    if input.dtype:
        return f"{input.shape[0]} elements{link}"
    value = input.value
    if isinstance(value, Input):
        return f"{len(value)} {'members' if value.type == 'Object' else 'elements'}{link}"
    if isinstance(value, Node):
        return f"{value.name}{link}"
    if isinstance(value, Output):
        return link.strip()
    return f"{value!r}{link}" if value is not None or not link else link.strip()


def _rest(items: Collection[object], shown: int, what: str) -> str:
    return f"<i>and {len(items) - shown} more {what}</i>" if len(items) > shown else ""


def _escaped(text: str) -> str:
    """At most MAX_CHARACTERS, as HTML. Characters that a page cannot show become replacement characters."""
    short = text if len(text) <= MAX_CHARACTERS else text[:MAX_CHARACTERS] + "…"
    return html.escape("".join(_printable(short)))


def _printable(text: str) -> Iterator[str]:
    return (c if c.isprintable() else "\N{REPLACEMENT CHARACTER}" for c in text)
