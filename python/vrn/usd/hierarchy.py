"""Which nodes of a scene have a place, and below which others."""

from __future__ import annotations

from dataclasses import dataclass, field

import vrn

from .losses import Losses

_TRANSFORMS = ("transform", "group", "instance")


def has_transform(node: vrn.Node) -> bool:
    return not node.is_definition and (node.type in _TRANSFORMS or "geometry" in node.inputs)


def elements(found: vrn.Input) -> list[vrn.Input]:
    """The elements of an array."""
    return [found.children[i] for i in range(len(found.children))]


def has_place(node: vrn.Node) -> bool:
    return has_transform(node) or (not node.is_definition and node.type in ("camera", "light"))


@dataclass
class Hierarchy:
    """The parents of the nodes that have a place, and the scene that is shown."""

    parents: dict[str, str | None]
    children: dict[str | None, list[str]] = field(default_factory=dict)
    shown: vrn.Node | None = None


def read_hierarchy(scene: vrn.Scene, losses: Losses) -> Hierarchy:
    placed = {node.name: node for node in scene.nodes() if has_place(node)}
    parents = {name: _declared_parent(node, losses) for name, node in placed.items()}
    for node in placed.values():
        _adopt_children(node, parents, losses)
    _break_cycles(parents, losses)
    result = Hierarchy(parents)
    for name, parent in parents.items():
        result.children.setdefault(parent, []).append(name)
    _choose_scene(scene, result, losses)
    return result


def _declared_parent(node: vrn.Node, losses: Losses) -> str | None:
    for name in ("parent", "worldMatrix"):
        found = node.inputs.get(name)
        if found is None:
            continue
        parent = found.connection.node if found.connection is not None else found.value
        if not isinstance(parent, vrn.Node):
            continue
        if has_transform(parent):
            return parent.name
        losses.add("parents without a transform", found.label)
    return None


def _adopt_children(node: vrn.Node, parents: dict[str, str | None], losses: Losses) -> None:
    found = node.inputs.get("children")
    if found is None or not isinstance(found.value, vrn.Input):
        return
    for entry in elements(found):
        child = entry.value
        if not isinstance(child, vrn.Node):
            continue
        if child.name not in parents or not has_transform(node):
            losses.add("children without a transform", entry.label)
        elif parents[child.name] is None and child != node:
            parents[child.name] = node.name
        elif parents[child.name] != node.name:
            losses.add("further parents of nodes", entry.label)


def _break_cycles(parents: dict[str, str | None], losses: Losses) -> None:
    visited_from: dict[str, str] = {}
    for start in parents:
        current: str | None = start
        while current is not None and current not in visited_from:
            visited_from[current] = start
            parent = parents[current]
            if parent is not None and visited_from.get(parent) == start:
                parents[current] = None
                losses.add("parents that close a cycle", current)
            current = parents[current]


def _choose_scene(scene: vrn.Scene, hierarchy: Hierarchy, losses: Losses) -> None:
    """Keeps the roots of the scene that is shown first; without a scene, all of them."""
    scenes = [node for node in scene.nodes(type="scene") if not node.is_definition]
    if not scenes:
        return
    hierarchy.shown = next((node for node in scenes if node.get("default") is True), scenes[0])
    for other in scenes:
        if other != hierarchy.shown:
            losses.add("scenes after the one that is shown first", other.name)
    roots = hierarchy.children.get(None, [])
    listed = set(_listed(hierarchy.shown))
    hierarchy.children[None] = [name for name in roots if name in listed]
    for name in roots:
        if name not in listed:
            losses.add("nodes outside the scene that is shown first", name)


def _listed(scene: vrn.Node) -> list[str]:
    found = scene.inputs.get("nodes")
    if found is None or not isinstance(found.value, vrn.Input):
        return []
    return [entry.value.name for entry in elements(found) if isinstance(entry.value, vrn.Node)]
