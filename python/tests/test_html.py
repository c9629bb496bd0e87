"""Scenes in notebooks: the page of any scene is well formed, short and without script."""

import html.parser
import json

import pytest
import vrn

HOSTILE = [
    "<script>alert(1)</script>",
    '"><img src=x onerror=alert(1)>',
    "&amp;",
    "\x1b[31m\x07\u202e",
    "]]>",
    "x" * 10_000,
]


class Page(html.parser.HTMLParser):
    """The elements, attributes and text of a page. Checks that elements are closed in order."""

    def __init__(self, text):
        super().__init__()
        self.open, self.tags, self.attributes, self.text = [], set(), set(), ""
        self.feed(text)
        self.close()
        assert self.open == []

    def handle_starttag(self, tag, attributes):
        self.open.append(tag)
        self.tags.add(tag)
        self.attributes.update(name for name, _ in attributes)

    def handle_endtag(self, tag):
        assert self.open.pop() == tag

    def handle_data(self, data):
        self.text += data


def test_nodes_open_to_their_inputs(scene):
    page = Page(scene._repr_html_())
    assert page.tags == {"div", "b", "details", "summary", "i", "table", "tr", "td"}
    for words in (
        "3 nodes",
        "box",
        "vec3f[]",
        "8 elements",
        "2.5",
        "'a box'",
        "Vec3(1.0, 2.0, 3.0)",
        "red.outColor",
        "3 elements",
    ):
        assert words in page.text


@pytest.mark.parametrize("text", HOSTILE, ids=range(len(HOSTILE)))
def test_texts_of_a_scene_are_only_text(text):
    inputs = {text: {"type": "Real"}, "o": {"type": "Object", "members": {text: {"type": "String"}}}}
    scene = vrn.Scene(catalogue=vrn.Catalogue.loads(json.dumps({"types": {"t": {"inputs": inputs}}})))
    node = scene.add("t", "a")
    assert text in node
    node["a"] = text
    node["b"] = {"c": text}
    made = scene._repr_html_()
    page = Page(made)
    assert page.tags <= {"div", "b", "details", "summary", "i", "table", "tr", "td"} and page.attributes <= {"style"}
    assert all(c.isprintable() for c in made) and len(made) < 3000


def test_pages_are_short():
    scene = vrn.loads("".join(f"t n{i};" for i in range(1000)) + "".join(f"n0.i{i} = {i};" for i in range(1000)))
    page = Page(scene._repr_html_())
    assert "and 800 more nodes" in page.text and "and 900 more inputs" in page.text
