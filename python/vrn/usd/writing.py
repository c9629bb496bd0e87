"""From a scene to a stage."""

from __future__ import annotations

import os
from pathlib import Path
from typing import Any

import numpy as np
from pxr import Sdf, Usd, UsdGeom, UsdSkel

import vrn

from . import animations, instancers, morphs
from .aim import has_aim, write_aim
from .animations import Channels
from .arrays import Array
from .cameras import write_camera
from .files import checked_path, quiet, save, staging_folder
from .given import Given
from .hierarchy import Hierarchy, elements, has_transform, read_hierarchy
from .keys import BARE, KEPT, NAME, PART, ROOT, SCENE, SCOPE, TYPE
from .lights import light_type, write_light
from .losses import Losses
from .materials import MaterialWriter
from .meshes import write_mesh
from .names import UniqueNames, prim_name, text_for_usd
from .skins import SkeletonWriter
from .textures import Images
from .transforms import write_transform
from .variants import VariantWriter

_SHAPE_INPUTS = ("geometry", "parts[]", "material", "skin", "parent", "children[]", "name", "worldMatrix")


def write(
    scene: vrn.Scene, path: str | os.PathLike[str], folder: str | os.PathLike[str] | None
) -> tuple[vrn.Loss, ...]:
    target = checked_path(path, "write")
    losses = Losses()
    source = Path(folder) if folder is not None else target.absolute().parent
    with staging_folder(target) as staging, quiet(target, losses):
        images = Images(source, target, staging, losses)
        writer = Writer(scene, losses, images)
        writer.write()
        save(writer.stage, images.folder, staging, target)
    return losses.all()


class Writer:
    """Makes the stage of a scene."""

    def __init__(self, scene: vrn.Scene, losses: Losses, images: Images) -> None:
        self.scene = scene
        self.losses = losses
        self.images = images
        self.stage = Usd.Stage.CreateInMemory()
        self.root = Sdf.Path("/Root")
        self.prims: dict[str, Sdf.Path] = {}
        self.visited: set[str] = set()
        self.textures: set[str] = set()
        self._names: dict[Sdf.Path, UniqueNames] = {}
        self._scopes: dict[str, Sdf.Path] = {}
        self._channels = Channels(scene, losses)
        self._materials = MaterialWriter(self)
        self._variants = VariantWriter(self)
        self._skeletons = SkeletonWriter(self)
        self._prototypes: dict[str, Sdf.Path | None] = {}
        self._shapes: dict[str, list[Usd.Prim]] = {}

    def write(self) -> None:
        self._write_root()
        hierarchy = read_hierarchy(self.scene, self.losses)
        placed = self._define_placed(hierarchy)
        uses = self._count_uses(placed)
        for node in placed:
            if has_transform(node):
                self._write_shapes(node, uses)
        for node in self._bare_meshes(hierarchy, uses):
            self._write_bare(node)
        for node in placed:
            if has_transform(node):
                self._bind_skin(node)
            else:
                self._aim(node)
        self._write_rest(hierarchy)

    # --- what all parts use

    def define(self, schema: Any, node: vrn.Node, parent: Sdf.Path) -> Usd.Prim:
        """A prim for a node, which keeps its name."""
        prim = schema.Define(self.stage, self.new_path(parent, node.name)).GetPrim()
        self.keep_name(prim, node)
        return prim

    def new_path(self, parent: Sdf.Path, name: str) -> Sdf.Path:
        return parent.AppendChild(self._names.setdefault(parent, UniqueNames()).take(prim_name(name)))

    def keep_name(self, prim: Usd.Prim, node: vrn.Node) -> None:
        """Keeps the name, the display name and the texts of an application of a node."""
        if prim.GetName() != node.name:
            prim.SetCustomDataByKey(NAME, text_for_usd(node.name))
        for path, key in (("name", None), *KEPT.items()):
            found = node.inputs.get(path)
            if found is None or not isinstance(found.value, str) or (not found.value and key):
                continue
            text = text_for_usd(found.value)
            if "\N{REPLACEMENT CHARACTER}" in text and text != found.value:
                self.losses.add("bytes of texts that are not UTF-8", found.label)
            if key:
                prim.SetCustomDataByKey(key, text)
            else:
                prim.SetDisplayName(text)

    def scope(self, name: str) -> Sdf.Path:
        """A prim for what is not part of the hierarchy."""
        if name not in self._scopes:
            path = self.new_path(self.root, name)
            prim = UsdGeom.Scope.Define(self.stage, path).GetPrim()
            prim.SetCustomDataByKey(SCOPE, True)
            self._scopes[name] = path
        return self._scopes[name]

    # --- the order of things

    def _write_root(self) -> None:
        is_skinned = any(node.type == "skin" or "skin" in node or "targets" in node for node in self.scene.nodes())
        schema = UsdSkel.Root if is_skinned else UsdGeom.Xform
        prim = schema.Define(self.stage, self.root).GetPrim()
        prim.SetCustomDataByKey(ROOT, True)
        self.stage.SetDefaultPrim(prim)
        UsdGeom.SetStageUpAxis(self.stage, UsdGeom.Tokens.y)
        UsdGeom.SetStageMetersPerUnit(self.stage, 1.0)
        self.stage.SetTimeCodesPerSecond(animations.CODES_PER_SECOND)
        self.stage.SetFramesPerSecond(animations.CODES_PER_SECOND)
        if self._channels.last_code > 0:
            self.stage.SetStartTimeCode(0)
            self.stage.SetEndTimeCode(self._channels.last_code)
        if self._channels.details:
            self.keep_in_layer("animation", self._channels.details)

    def keep_in_layer(self, key: str, value: Any) -> None:
        data = dict(self.stage.GetRootLayer().customLayerData)
        data["vrn"] = {**data.get("vrn", {}), key: value}
        self.stage.GetRootLayer().customLayerData = data

    def _define_placed(self, hierarchy: Hierarchy) -> list[vrn.Node]:
        """Makes the prims of all nodes that have a place. Returns the nodes, parents before children."""
        placed = self._find_places(hierarchy)
        # All prims in one change: a stage composes all children of a prim again for each one that is added alone.
        with Sdf.ChangeBlock():
            for node in placed:
                made = Sdf.CreatePrimInLayer(self.stage.GetRootLayer(), self.prims[node.name])
                made.specifier = Sdf.SpecifierDef
                made.typeName = self._type_of(node)
        for node in placed:
            self._write_placed(node)
        return placed

    def _find_places(self, hierarchy: Hierarchy) -> list[vrn.Node]:
        placed = []
        pending = [(name, self.root) for name in reversed(hierarchy.children.get(None, []))]
        while pending:
            name, parent = pending.pop()
            path = self.prims[name] = self.new_path(parent, name)
            placed.append(self.scene[name])
            pending += [(child, path) for child in reversed(hierarchy.children.get(name, []))]
        return placed

    def _type_of(self, node: vrn.Node) -> str:
        if node.type == "light":
            return light_type(node, self.losses)
        return "Camera" if node.type == "camera" else "Xform"

    def _write_placed(self, node: vrn.Node) -> None:
        self.visited.add(node.name)
        prim = self.stage.GetPrimAtPath(self.prims[node.name])
        self.keep_name(prim, node)
        if has_transform(node):
            self._write_transform(node, prim)

    def _write_transform(self, node: vrn.Node, prim: Usd.Prim) -> None:
        if node.type not in ("transform", "instance"):
            prim.SetCustomDataByKey(TYPE, text_for_usd(node.type))
        given = Given(node, self.losses)
        channels = self._channels.of(node)
        write_transform(prim, given, {path: channel.write for path, channel in channels.items()})
        if not given.flag("visible", True):
            UsdGeom.Imageable(prim).MakeInvisible()
        shown = ("weights", "instances.translation", "instances.rotation", "instances.scale")
        given.add_unread(*_SHAPE_INPUTS, *KEPT, *(shown if self._meshes_of(node) else ()))

    # --- meshes

    def _count_uses(self, placed: list[vrn.Node]) -> dict[str, int]:
        uses: dict[str, int] = {}
        for node in placed:
            for mesh, _ in self._meshes_of(node):
                uses[mesh.name] = uses.get(mesh.name, 0) + 1
        return uses

    def _meshes_of(self, node: vrn.Node) -> list[tuple[vrn.Node, str]]:
        """The meshes that a node shows, and the inputs that say so."""
        entries = [node.inputs["geometry"]] if "geometry" in node.inputs else []
        parts = node.inputs.get("parts")
        if parts is not None and isinstance(parts.value, vrn.Input):
            entries += elements(parts)
        return [(entry.value, entry.label) for entry in entries if isinstance(entry.value, vrn.Node)]

    def _write_shapes(self, node: vrn.Node, uses: dict[str, int]) -> None:
        given = Given(node, self.losses)
        repeated = instancers.read_given(given)
        owner = self.prims[node.name]
        parent = self._define_instancer(owner) if repeated and self._meshes_of(node) else owner
        shapes: list[Usd.Prim] = []
        for mesh, label in self._meshes_of(node):
            prim = self._write_shape(mesh, label, parent, uses[mesh.name] > 1)
            if prim:
                prim.SetCustomDataByKey(PART, len(shapes))
                shapes.append(prim)
        if repeated and shapes:
            instancer = self.stage.GetPrimAtPath(parent.GetParentPath())
            instancers.write_instancer(instancer, parent, repeated)
        self._bind_override(node, given, shapes)
        self._shapes[node.name] = shapes

    def _define_instancer(self, owner: Sdf.Path) -> Sdf.Path:
        """The prim below an instancer that has the meshes to repeat."""
        instancer = UsdGeom.PointInstancer.Define(self.stage, self.new_path(owner, "instances")).GetPrim()
        instancer.SetCustomDataByKey(PART, 0)
        return UsdGeom.Xform.Define(self.stage, self.new_path(instancer.GetPath(), "prototype")).GetPath()

    def _write_shape(self, mesh: vrn.Node, label: str, parent: Sdf.Path, is_shared: bool) -> Usd.Prim | None:
        if "points" not in mesh.inputs:
            self.losses.add("geometries that are not meshes", label)
            return None
        if not is_shared:
            return self._write_mesh(mesh, self.new_path(parent, mesh.name))
        if mesh.name not in self._prototypes:
            prim = self._write_mesh(mesh, self.new_path(self._class("Prototypes"), mesh.name))
            self._prototypes[mesh.name] = prim.GetPath() if prim else None
        prototype = self._prototypes[mesh.name]
        if prototype is None:
            return None
        kind = self.stage.GetPrimAtPath(prototype).GetTypeName()
        prim = self.stage.DefinePrim(self.new_path(parent, mesh.name), kind)
        prim.GetReferences().AddInternalReference(prototype)
        return prim

    def _class(self, name: str) -> Sdf.Path:
        """A prim for what is only shown where it is referred to."""
        if name not in self._scopes:
            self._scopes[name] = self.new_path(self.root, name)
            self.stage.CreateClassPrim(self._scopes[name])
        return self._scopes[name]

    def _write_mesh(self, mesh: vrn.Node, path: Sdf.Path) -> Usd.Prim | None:
        self.visited.add(mesh.name)
        prim = write_mesh(self.stage, path, mesh, self.losses)
        if prim is None:
            return None
        self.keep_name(prim, mesh)
        material = Given(mesh, Losses()).link("material")
        has_variants = self._variants.add(prim, Given(mesh, self.losses), material)
        if material is not None and not has_variants:
            self._materials.bind(prim, material)
            self.set_sides(prim, material)
        return prim

    def set_sides(self, prim: Usd.Prim, material: vrn.Node) -> None:
        is_double_sided = material.name in self._materials.double_sided
        if prim.IsA(UsdGeom.Gprim) and UsdGeom.Gprim(prim).GetDoubleSidedAttr().Get() != is_double_sided:
            UsdGeom.Gprim(prim).CreateDoubleSidedAttr(is_double_sided)

    def _bind_override(self, node: vrn.Node, given: Given, shapes: list[Usd.Prim]) -> None:
        material = given.link("material")
        if material is None:
            return
        if not shapes:
            return given.lose("materials of nodes without a mesh", "material")
        if len({prim.GetPath().GetParentPath() for prim in shapes}) == 1:
            self._materials.bind(self.stage.GetPrimAtPath(shapes[0].GetPath().GetParentPath()), material, True)
        for prim in shapes:
            self.set_sides(prim, material)

    def _bare_meshes(self, hierarchy: Hierarchy, uses: dict[str, int]) -> list[vrn.Node]:
        """The meshes that no node shows: they are shown as they are, unless a scene says what is shown."""
        meshes = [node for node in self.scene.nodes(type="mesh") if not node.is_definition and node.name not in uses]
        if hierarchy.shown is None:
            return meshes
        found = hierarchy.shown.inputs.get("nodes")
        listed = {entry.value for entry in elements(found)} if found is not None else set()
        return [node for node in meshes if node in listed]

    def _write_bare(self, node: vrn.Node) -> None:
        prim = self._write_mesh(node, self.new_path(self.root, node.name))
        if prim:
            prim.SetCustomDataByKey(BARE, True)
            self._shapes[node.name] = [prim]
            self.prims[node.name] = prim.GetPath()
            self._write_weights(node, [prim], None)

    # --- what needs all prims

    def _bind_skin(self, node: vrn.Node) -> None:
        shapes = self._shapes[node.name]
        skin = Given(node, self.losses).link("skin")
        skeleton = self._skeletons.bind(shapes, skin, node.name) if skin is not None else None
        self._write_weights(node, shapes, skeleton)

    def _write_weights(self, node: vrn.Node, shapes: list[Usd.Prim], skeleton: Sdf.Path | None) -> None:
        """The weights of the morph targets of an instance, or else those of its mesh."""
        if not shapes:
            return
        channel = self._channels.of(node).get("weights")
        given = Given(node, self.losses)
        weights = given.floats("weights", 1) if "weights" in node.inputs else self._mesh_weights(node)
        targets = [prim for prim in shapes if morphs.tokens_of(prim)]
        if weights is None and channel is None:
            return
        count = len(morphs.tokens_of(targets[0])) if targets else 0
        if not targets or any(len(morphs.tokens_of(prim)) != count for prim in targets):
            return given.lose("weights that do not match the morph targets", "weights")
        if (weights is not None and len(weights) != count) or (channel and channel.values.shape[1] != count):
            return given.lose("weights that do not match the morph targets", "weights")
        path = skeleton or self._empty_skeleton(targets[0].GetPath())
        prim = self.stage.GetPrimAtPath(path)
        if skeleton is None:
            for shape in targets:
                UsdSkel.BindingAPI.Apply(shape).CreateSkeletonRel().SetTargets([path])
        animations.write_weights(targets, prim, weights, channel, prim_name(node.name))

    def _mesh_weights(self, node: vrn.Node) -> Array | None:
        meshes = [node] if node.type == "mesh" else [mesh for mesh, _ in self._meshes_of(node)][:1]
        return Given(meshes[0], self.losses).floats("weights", 1) if meshes else None

    def _empty_skeleton(self, mesh: Sdf.Path) -> Sdf.Path:
        """A skeleton without joints: only a skeleton can have weights of morph targets."""
        path = self.new_path(mesh.GetParentPath(), f"{mesh.name}_weights")
        prim = UsdSkel.Skeleton.Define(self.stage, path).GetPrim()
        prim.SetCustomDataByKey(SCOPE, True)
        return path

    def _aim(self, node: vrn.Node) -> None:
        prim = self.stage.GetPrimAtPath(self.prims[node.name])
        given = Given(node, self.losses)
        write_aim(prim, given, self._target_of(node, prim, given))
        if node.type == "camera":
            write_camera(prim, given)
            given.add_unread("name", "parent", "worldMatrix", *KEPT)
        else:
            write_light(prim, given)
            given.add_unread("name", "parent", "worldMatrix", "up", *KEPT)

    def _target_of(self, node: vrn.Node, prim: Usd.Prim, given: Given) -> Array | None:
        """The place of the target of a camera or light, if the target is what it is aimed at."""
        target = given.link("target")
        if target is None:
            return None
        is_below_root = prim.GetPath().GetParentPath() == self.root
        if has_aim(given) or not is_below_root or target.name not in self.prims:
            given.lose(f"targets of {node.type}s", "target")
            return None
        world = UsdGeom.XformCache().GetLocalToWorldTransform(self.stage.GetPrimAtPath(self.prims[target.name]))
        return np.array(world.ExtractTranslation())

    def _write_rest(self, hierarchy: Hierarchy) -> None:
        for node in self.scene.nodes(type="material"):
            if not node.is_definition:
                self._materials.path_of(node)
        self._variants.write(self._materials)
        for name in sorted(self._materials.double_sided - self._materials.bound):
            self.losses.add("sides of materials without a mesh", name)
        self._write_scene(hierarchy)
        self.visited.update(node.name for node in self.scene.nodes(type="animation"))
        for node in self.scene.nodes():
            if node.type == "asset" and node.name not in self.visited and "asset" not in self._layer_keys():
                self._write_asset(node)
            is_told = node.type == "scene" or node.name in hierarchy.parents
            if node.name not in self.visited and not is_told and not node.is_definition:
                self.losses.add(f"nodes of type {node.type}", node.name)

    def _layer_keys(self) -> dict[str, Any]:
        return dict(self.stage.GetRootLayer().customLayerData.get("vrn", {}))

    def _write_scene(self, hierarchy: Hierarchy) -> None:
        if hierarchy.shown is None:
            return
        prim = self.stage.GetPrimAtPath(self.root)
        self.keep_name(prim, hierarchy.shown)
        prim.SetCustomDataByKey(NAME, text_for_usd(hierarchy.shown.name))
        prim.SetCustomDataByKey(SCENE, hierarchy.shown.get("default") is True)
        Given(hierarchy.shown, self.losses).add_unread("name", "default", "nodes[]", *KEPT)

    def _write_asset(self, node: vrn.Node) -> None:
        given = Given(node, self.losses)
        self.visited.add(node.name)
        texts = {path: text_for_usd(given.text(path)) for path in ("copyright", "extras", "fileExtras")}
        self.keep_in_layer("asset", {"node": node.name, **{path: text for path, text in texts.items() if text}})
        given.add_unread("name")
