"""Variants of a scene: a set of variants of the root prim, which bind other materials to meshes.

A mesh with variants has its material in the variant `default`, and none of its own, which would be stronger.
"""

from __future__ import annotations

from collections.abc import Iterator
from typing import TYPE_CHECKING, Any

from pxr import Sdf, Usd, UsdGeom, UsdShade, Vt

import vrn

from .given import Given
from .names import UniqueNames, prim_name, text_for_usd

if TYPE_CHECKING:
    from .materials import MaterialWriter
    from .reading import Reader
    from .writing import Writer

SET = "materials"
DEFAULT = "default"
_LAYER_KEY = "variants"
_BINDING = "material:binding"


# --- writing


class VariantWriter:
    """Collects the materials of meshes with variants, and writes them when all prims exist."""

    def __init__(self, writer: Writer) -> None:
        self._writer = writer
        self._node = next((node for node in writer.scene.nodes(type="variants") if not node.is_definition), None)
        self._names = self._read_names()
        self._bindings: list[tuple[Usd.Prim, list[vrn.Node | None]]] = []

    def _read_names(self) -> list[str]:
        if self._node is None:
            return []
        self._writer.visited.add(self._node.name)
        given = Given(self._node, self._writer.losses)
        names = [given.text(f"names[{i}]") for i in range(given.count("names"))]
        given.add_unread()
        for i, name in enumerate(names):
            if text_for_usd(name).encode() != name.encode("utf-8", "surrogateescape"):
                given.lose("bytes of texts that are not UTF-8", f"names[{i}]")
        return names

    def add(self, prim: Usd.Prim, given: Given, material: vrn.Node | None) -> bool:
        """Whether a mesh has variants, so that its material is bound later."""
        materials = [material] * len(self._names)
        taken: set[int] = set()
        for i in range(given.count("variants")):
            index = given.number(f"variants[{i}].variant", -1)
            other = given.link(f"variants[{i}].material")
            if other is None or index not in range(len(self._names)):
                given.lose("variants of meshes without a material or a name", f"variants[{i}]")
                continue
            if int(index) in taken:
                given.lose("further materials of a mesh in a variant", f"variants[{i}]")
                continue
            taken.add(int(index))
            materials[int(index)] = other
        if taken:
            self._bindings.append((prim, [material, *materials]))
        return bool(taken)

    def write(self, materials: MaterialWriter) -> None:
        if self._node is None:
            return
        for _, bound in self._bindings:
            for material in bound:
                if material is not None:
                    materials.path_of(material)
        keys = UniqueNames()
        variants = [keys.take(name) for name in (DEFAULT, *map(prim_name, self._names))]
        root = self._writer.stage.GetPrimAtPath(self._writer.root)
        made = root.GetVariantSets().AddVariantSet(SET)
        for i, variant in enumerate(variants):
            made.AddVariant(variant)
            made.SetVariantSelection(variant)
            with made.GetVariantEditContext():
                for prim, bound in self._bindings:
                    self._bind(materials, prim, bound[i])
        made.SetVariantSelection(DEFAULT)
        titles = Vt.StringArray([text_for_usd(name) for name in self._names])
        kept = {"node": self._node.name, "variants": Vt.StringArray(variants[1:]), "names": titles}
        self._writer.keep_in_layer(_LAYER_KEY, kept)

    def _bind(self, materials: MaterialWriter, prim: Usd.Prim, material: vrn.Node | None) -> None:
        if material is not None:
            materials.bind(prim, material)
            self._writer.set_sides(prim, material)


# --- reading


class VariantReader:
    """Reads the variants of the root prim, if they change nothing but the materials of meshes."""

    def __init__(self, reader: Reader) -> None:
        self._reader = reader
        self._root = reader.stage.GetDefaultPrim()
        self._set = self._root.GetVariantSet(SET) if self._root else None
        self._meshes: list[tuple[vrn.Node, Usd.Prim, bool, list[str]]] = []
        self._is_read = bool(self._set) and SET in self._root.GetVariantSets().GetNames() and self._is_known()

    def sets_of(self, prim: Usd.Prim) -> tuple[str, ...]:
        """The sets of variants of a prim that become variants of the scene."""
        return (SET,) if self._is_read and prim == self._root else ()

    def add(self, mesh: vrn.Node, owner: Usd.Prim, is_part: bool, uv_names: list[str]) -> None:
        """A mesh, and the prim that its material is bound to."""
        self._meshes.append((mesh, owner, is_part, uv_names))

    def finish(self) -> None:
        if not self._is_read or self._set is None:
            return
        kept = self._reader.layer_data(_LAYER_KEY)
        initial = self._set.GetVariantSelection()
        variants = _texts(kept.get("variants"))
        if sorted([DEFAULT, *variants]) != sorted(self._set.GetVariantNames()):  # somebody else has made them
            variants = [name for name in self._set.GetVariantNames() if name != DEFAULT]
        titles = _texts(kept.get("names"))
        node = self._reader.add("variants", str(kept.get("node", "variants")))
        node.add("names", "String[]", titles if len(titles) == len(variants) else variants)
        with Usd.EditContext(self._reader.stage, self._reader.stage.GetSessionLayer()):
            for i, variant in enumerate(variants):
                self._set.SetVariantSelection(variant)
                for mesh, owner, is_part, uv_names in self._meshes:
                    self._read(mesh, i, owner, is_part, uv_names)
            self._set.SetVariantSelection(initial)

    def _read(self, mesh: vrn.Node, index: int, owner: Usd.Prim, is_part: bool, uv_names: list[str]) -> None:
        material = bound_material(owner, is_part)
        if not material:
            return
        found = self._reader.materials.node_of(material, uv_names)
        own = mesh.inputs.get("material")
        if own is not None and own.connection is not None and own.connection.node == found:
            return
        gprim = owner if owner.IsA(UsdGeom.Gprim) else owner.GetParent()
        if UsdGeom.Gprim(gprim).GetDoubleSidedAttr().Get() is True and "doubleSided" not in found.inputs:
            found.add("doubleSided", "Bool", True)
        entries = mesh.inputs["variants"] if "variants" in mesh.inputs else mesh.add("variants", "Object[]")
        entry = entries.append()
        entry.add("variant", "UInt", index)
        entry.add("material", "Null").connection = found.outputs["outColor"]

    def _is_known(self) -> bool:
        """Whether the variants hold nothing but the materials and the sides of prims."""
        for opinion in self._root.GetPrimStack():
            found = opinion.variantSets.get(SET)
            for variant in found.variants.values() if found else ():
                if not all(_binds_only(below) for below in _opinions(variant.primSpec)):
                    return False
        return True


def bound_material(owner: Usd.Prim, is_part: bool) -> UsdShade.Material:
    """The material of a mesh itself, or of a part of it, which may have that of the mesh."""
    binding = UsdShade.MaterialBindingAPI(owner)
    return binding.ComputeBoundMaterial()[0] if is_part else binding.GetDirectBinding().GetMaterial()


def _opinions(opinion: Any) -> Iterator[Any]:
    """What a layer says about a prim, and about those below it."""
    pending = [opinion]
    while pending:
        found = pending.pop()
        yield found
        pending += list(found.nameChildren)


def _binds_only(opinion: Any) -> bool:
    names = {found.name for found in opinion.properties}
    metadata = set(opinion.ListInfoKeys()) - {"specifier", "apiSchemas"}
    return opinion.specifier == Sdf.SpecifierOver and names <= {_BINDING, "doubleSided"} and not metadata


def _texts(value: Any) -> list[str]:
    return [str(each) for each in value] if isinstance(value, Vt.StringArray) else []
