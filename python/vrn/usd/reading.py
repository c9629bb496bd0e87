"""From a stage to a scene."""

from __future__ import annotations

import os
from typing import Any

from pxr import Sdf, Usd, UsdGeom, UsdShade, UsdSkel

import vrn

from .aim import is_aim, put_aim
from .animations import AnimationReader
from .authored import Authored
from .cameras import read_camera
from .files import block_wrong_types, checked_path, open_stage, quiet, refused
from .instancers import read_instancer
from .keys import BARE, KEPT, NAME, PART, ROOT, SCENE, SCOPE, TYPE
from .lights import is_light, read_light
from .losses import Losses
from .materials import MaterialReader
from .meshes import MeshReader, parts_of
from .names import UniqueNames, node_name
from .numbers import shortest
from .skins import JOINTS, SkinReader
from .transforms import Transform, read_transform
from .variants import VariantReader, bound_material

_CHILDREN = Usd.TraverseInstanceProxies(Usd.PrimDefaultPredicate)
_ELSEWHERE = (
    UsdShade.Material,
    UsdShade.Shader,
    UsdShade.NodeGraph,
    UsdGeom.Subset,
    UsdSkel.BlendShape,
    UsdSkel.Animation,
)
"""What is read with the prims that refer to it."""
_GROUPS = ("", "Xform", "Scope", "SkelRoot")
_BINDINGS = ("material:binding", "material:binding:preview", "material:binding:full")


def read(path: str | os.PathLike[str]) -> tuple[vrn.Scene, tuple[vrn.Loss, ...]]:
    source = checked_path(path, "read")
    losses = Losses()
    stage = open_stage(source, losses)
    with quiet(source, losses), refused(source):
        block_wrong_types(stage, losses)
        reader = Reader(stage, losses, str(source.absolute().parent))
        reader.read()
    scene = reader.scene
    reader.release()
    return scene, losses.all()


class Reader:
    """Makes the scene of a stage."""

    def __init__(self, stage: Usd.Stage, losses: Losses, folder: str) -> None:
        self.stage = stage
        self.losses = losses
        self.folder = folder
        self.scene = vrn.Scene()
        self.nodes: dict[Sdf.Path, vrn.Node] = {}
        self.metres = UsdGeom.GetStageMetersPerUnit(stage)
        self._names = UniqueNames()
        self.materials = MaterialReader(self)
        self.animations = AnimationReader(self)
        self._skins = SkinReader(self)
        self._variants = VariantReader(self)
        self._meshes: dict[Any, list[vrn.Node]] = {}
        self._sides: dict[str, bool] = {}
        self._uv_names: dict[str, list[str]] = {}
        self._roots: list[vrn.Node] = []
        self._scenes: list[Usd.Prim] = []

    def read(self) -> None:
        self._read_layer()
        self._read_prims(self._root())
        self._skins.finish()
        self._variants.finish()
        self.materials.finish()
        self.animations.finish()
        self._read_scene()

    def release(self) -> None:
        """Releases the stage: the parts refer to each other, and would keep it until the garbage is collected."""
        del self.stage, self.animations, self._skins, self.materials, self._variants

    # --- what all parts use

    def add(self, kind: str, name: str) -> vrn.Node:
        return self.scene.add(kind, self._names.take(node_name(name)))

    def add_for(self, kind: str, prim: Usd.Prim, suffix: str = "") -> vrn.Node:
        """A node for a prim, with its name and the texts of an application."""
        own = prim.GetCustomDataByKey(NAME)
        name = own if isinstance(own, str) else prim.GetName()
        node = self.add(kind, name + suffix)
        title = prim.GetDisplayName()
        if title or prim.HasAuthoredMetadata("displayName"):
            node.add("name", "String", title)
        elif node.name != name and not isinstance(own, str):
            node.add("name", "String", prim.GetName())
        for path, key in KEPT.items():
            text = prim.GetCustomDataByKey(key)
            if isinstance(text, str):
                node.add(path, "String", text)
        return node

    def layer_data(self, key: str) -> dict[str, Any]:
        """What a scene has kept in the layer."""
        kept = self.stage.GetRootLayer().customLayerData.get("vrn")
        data = kept.get(key) if isinstance(kept, dict) else None
        return data if isinstance(data, dict) else {}

    def is_shape(self, prim: Usd.Prim) -> bool:
        return any(prim.IsA(kind) for kind in (UsdGeom.Mesh, UsdGeom.BasisCurves, UsdGeom.Points))

    # --- the hierarchy

    def _root(self) -> vrn.Node | None:
        """A node that brings the stage to metres and Y up, if it is not so already."""
        is_z_up = UsdGeom.GetStageUpAxis(self.stage) == UsdGeom.Tokens.z
        if not 0 < self.metres < float("inf"):
            self.losses.add("units of length that are not positive and finite (read as metres)", "")
            self.metres = 1.0
        if not is_z_up and self.metres == 1:
            return None
        node = self.add("transform", "root")
        if is_z_up:
            half = 0.5**0.5
            node.add("rotation", "Quat", (-half, 0, 0, half))
        if self.metres != 1:
            node.add("scale", "Vec3", (self.metres,) * 3)
        self._roots.append(node)
        return node

    def _read_prims(self, root: vrn.Node | None) -> None:
        pending = [(prim, root) for prim in reversed(self._children(self.stage.GetPseudoRoot()))]
        while pending:
            prim, parent = pending.pop()
            node = self._read_prim(prim, parent)
            if node is None and not self._is_transparent(prim):
                continue
            below = [child for child in self._children(prim) if child.GetPath() not in self._shown_by(prim)]
            pending += [(child, node if node is not None else parent) for child in reversed(below)]

    def _children(self, prim: Usd.Prim) -> list[Usd.Prim]:
        for child in prim.GetAllChildren():
            if not child.IsActive():
                self.losses.add("prims that are not active", str(child.GetPath()))
        return list(prim.GetFilteredChildren(_CHILDREN))

    def _is_transparent(self, prim: Usd.Prim) -> bool:
        return prim.GetCustomDataByKey(ROOT) is True

    def _shown_by(self, prim: Usd.Prim) -> set[Sdf.Path]:
        """The children that are the meshes of a prim rather than nodes of their own."""
        if self._is_transparent(prim) or prim.IsA(UsdGeom.PointInstancer) or prim.IsA(UsdGeom.Gprim):
            return set()
        return {child.GetPath() for child in self._own_shapes(prim)}

    def _own_shapes(self, prim: Usd.Prim) -> list[Usd.Prim]:
        children = prim.GetFilteredChildren(_CHILDREN)
        shapes = [child for child in children if self._is_plain_shape(child)]
        marked = [child for child in shapes if isinstance(child.GetCustomDataByKey(PART), int)]
        if marked:
            return sorted(marked, key=lambda child: child.GetCustomDataByKey(PART))
        shapes = [child for child in shapes if not child.IsA(UsdGeom.PointInstancer)]
        return shapes if len(shapes) == 1 else []

    def _is_plain_shape(self, prim: Usd.Prim) -> bool:
        """Whether a prim is a mesh without a transform and a visibility of its own."""
        if prim.IsA(UsdGeom.PointInstancer):
            return isinstance(prim.GetCustomDataByKey(PART), int)
        if not self.is_shape(prim) or prim.GetCustomDataByKey(BARE):
            return False
        has_own = prim.GetAttribute("xformOpOrder").HasAuthoredValue() or any(
            prim.GetAttribute(name).HasAuthoredValue() for name in ("visibility", "purpose")
        )
        below = prim.GetFilteredChildren(_CHILDREN)
        return not has_own and all(any(child.IsA(kind) for kind in _ELSEWHERE) for child in below)

    def _read_prim(self, prim: Usd.Prim, parent: vrn.Node | None) -> vrn.Node | None:
        """The node of a prim, below which its children are. None if it has none."""
        if any(prim.IsA(kind) for kind in _ELSEWHERE) or prim.GetCustomDataByKey(SCOPE) is True:
            return None
        if self._is_transparent(prim):
            self._scenes += [prim] if isinstance(prim.GetCustomDataByKey(SCENE), bool) else []
            authored = Authored(prim, self.losses)
            authored.mark_variants(*self._variants.sets_of(prim))
            authored.add_unread_variants()
            return None
        if prim.IsA(UsdGeom.Scope) and not _has_content(prim):
            return None
        authored = Authored(prim, self.losses)
        authored.mark(*_BINDINGS, "purpose", "visibility", "material:binding:collection")
        authored.mark_variants(*self._variants.sets_of(prim))
        purpose = UsdGeom.Imageable(prim).ComputePurpose() if prim.IsA(UsdGeom.Imageable) else "default"
        if purpose in ("proxy", "guide"):
            authored.lose(f"prims for the purpose {purpose}")
            return None
        return self._read_known(authored, parent)

    def _read_known(self, authored: Authored, parent: vrn.Node | None) -> vrn.Node | None:
        prim = authored.prim
        if prim.IsA(UsdGeom.Camera) or is_light(prim):
            return self._read_aimed(authored, parent)
        if prim.IsA(UsdGeom.PointInstancer):
            node = self._add_placed("transform", authored, parent)
            read_instancer(self, authored, None, node)
            authored.add_unread()
            return None
        if self.is_shape(prim):
            return self._read_shape(authored, parent)
        if prim.IsA(UsdSkel.Skeleton):
            return self._read_skeleton(authored, parent)
        if prim.GetTypeName() not in _GROUPS:
            authored.lose(f"prims of type {prim.GetTypeName()}")
            if not prim.IsA(UsdGeom.Xformable) or not _has_content(prim):
                return None
        elif not prim.GetTypeName() and not _has_content(prim):
            if not prim.GetAllChildren():
                authored.lose("prims without a type and content")
            return None
        return self._read_group(authored, parent)

    def _add_placed(self, kind: str, authored: Authored, parent: vrn.Node | None) -> vrn.Node:
        """A node with the transform of a prim."""
        node = self.add_for(kind, authored.prim)
        self.nodes[authored.prim.GetPath()] = node
        self._put_place(node, authored, parent, read_transform(authored))
        return node

    def _put_place(self, node: vrn.Node, authored: Authored, parent: vrn.Node | None, transform: Transform) -> None:
        self._put_parent(node, parent)
        transform.put(node)
        for motion in transform.motions:
            self.animations.add(node, motion)
        if authored.has("visibility") and authored.value("visibility") == "invisible":
            node.add("visible", "Bool", False)
        elif authored.prim.GetAttribute("visibility").GetNumTimeSamples():
            authored.value("visibility")

    def _put_parent(self, node: vrn.Node, parent: vrn.Node | None) -> None:
        if parent is not None:
            node.add("parent", "Node", parent)
        else:
            self._roots.append(node)

    def _read_group(self, authored: Authored, parent: vrn.Node | None) -> vrn.Node:
        shapes = self._own_shapes(authored.prim)
        kind = authored.custom(TYPE)
        default = "instance" if shapes else "transform"
        node = self._add_placed(kind if kind == "group" else default, authored, parent)
        for shape in shapes:
            if shape.IsA(UsdGeom.PointInstancer):
                inner = Authored(shape, self.losses)
                read_instancer(self, inner, node, None)
                inner.add_unread()
            else:
                self.show(node, self.meshes_of(shape), shape)
        authored.add_unread("extent")
        return node

    def _read_skeleton(self, authored: Authored, parent: vrn.Node | None) -> vrn.Node | None:
        is_own = authored.prim.HasRelationship(JOINTS)
        node = None if is_own else self._add_placed("transform", authored, parent)
        self._skins.read_skeleton(authored, node)
        authored.add_unread("extent")
        return node

    def _read_aimed(self, authored: Authored, parent: vrn.Node | None) -> vrn.Node | None:
        """A camera or light: one node if it is only placed, otherwise with a node for its transform."""
        prim = authored.prim
        kind = "camera" if prim.IsA(UsdGeom.Camera) else "light"
        transform = read_transform(authored)
        is_alone = is_aim(transform) and not self._children(prim) and not authored.has("visibility")
        place, host = None, parent
        if not is_alone:
            place = host = self.add_for("transform", prim)
            self.nodes[prim.GetPath()] = place
            self._put_place(place, authored, parent, transform)
        node = self.add_for(kind, prim)
        if host is not None and (not is_alone or transform.is_identity):
            node.add("worldMatrix", "Null", None)
            node.inputs["worldMatrix"].connection = host.outputs["outMatrix"]
        else:
            self._put_parent(node, host)
        if is_alone:
            put_aim(node, transform, shortest(authored.value("focusDistance", 0.0)))
        if kind == "camera":
            read_camera(authored, node, self.metres)
        else:
            read_light(authored, node)
        authored.add_unread()
        return place

    # --- meshes

    def _read_shape(self, authored: Authored, parent: vrn.Node | None) -> vrn.Node | None:
        if authored.custom(BARE) is True and not authored.has("xformOpOrder"):
            meshes = self.meshes_of(authored.prim)
            self._roots += meshes
            if len(meshes) == 1:
                self._bind(meshes[0], meshes, authored.prim)
                self._bind_skeleton(meshes[0], authored.prim)
            return None
        node = self._add_placed("instance", authored, parent)
        self.show(node, self.meshes_of(authored.prim, "_geo"), authored.prim)
        return node

    def meshes_of(self, prim: Usd.Prim, suffix: str = "") -> list[vrn.Node]:
        """The mesh nodes of a prim: those of another prim that shares all of its data, if there is one."""
        key = _identity(prim)
        if key not in self._meshes:
            self._meshes[key] = self._read_meshes(prim, suffix)
        return self._meshes[key]

    def _read_meshes(self, prim: Usd.Prim, suffix: str) -> list[vrn.Node]:
        authored = Authored(prim, self.losses)
        authored.mark(*_BINDINGS, "purpose", "visibility", "subsetFamily:materialBind:familyType", "xformOpOrder")
        authored.mark(*(op.GetAttr().GetName() for op in UsdGeom.Xformable(prim).GetOrderedXformOps()))
        reader = MeshReader(authored)
        surface = reader.read()
        if surface is None:
            return []
        meshes = []
        parts = parts_of(surface, authored)
        for part, owner in parts:
            node = self.add_for("mesh", prim, suffix)
            reader.put(node, part)
            meshes.append(node)
            self._variants.add(node, owner, len(parts) > 1, reader.uv_names)
            material = bound_material(owner, len(parts) > 1)
            if material:
                self._set_material(node, material, reader.uv_names)
        node_sides = UsdGeom.Gprim(prim).GetDoubleSidedAttr().Get() is True
        self._check_sides(meshes, node_sides, authored)
        self._uv_names.update({node.name: reader.uv_names for node in meshes})
        authored.add_unread()
        return meshes

    def _set_material(self, node: vrn.Node, material: UsdShade.Material, uv_names: list[str]) -> vrn.Node:
        found = self.materials.node_of(material, uv_names)
        node.add("material", "Null", None)
        node.inputs["material"].connection = found.outputs["outColor"]
        return found

    def _check_sides(self, meshes: list[vrn.Node], is_double_sided: bool, authored: Authored) -> None:
        """Sides are a matter of materials in scenes, and of meshes in stages."""
        for mesh in meshes:
            found = mesh.inputs.get("material")
            if found is None or found.connection is None:
                if is_double_sided:
                    authored.lose("sides of meshes without a material", "doubleSided")
                continue
            material = found.connection.node
            known = self._sides.setdefault(material.name, is_double_sided)
            if known != is_double_sided:
                authored.lose("sides of meshes that differ from others of their material", "doubleSided")
            elif is_double_sided and "doubleSided" not in material.inputs:
                material.add("doubleSided", "Bool", True)

    def show(self, node: vrn.Node, meshes: list[vrn.Node], prim: Usd.Prim) -> None:
        """Makes a node show meshes."""
        if not meshes:
            return
        if "geometry" in node.inputs:
            self.add_parts(node, meshes)
        else:
            node.add("geometry", "Node", meshes[0])
            self.add_parts(node, meshes[1:])
        self._bind(node, meshes, prim)
        self._bind_skeleton(node, prim)

    def add_parts(self, node: vrn.Node, meshes: list[vrn.Node]) -> None:
        for mesh in meshes:
            parts = node.inputs["parts"] if "parts" in node.inputs else node.add("parts", "Node[]")
            parts.append(mesh)

    def _bind(self, node: vrn.Node, meshes: list[vrn.Node], prim: Usd.Prim) -> None:
        """The material that a prim has from elsewhere, in place of its own."""
        if len(meshes) > 1 and len(UsdGeom.Subset.GetAllGeomSubsets(UsdGeom.Imageable(prim))) > 0:
            return
        binding = UsdShade.MaterialBindingAPI(prim)
        bound, direct = binding.ComputeBoundMaterial()[0], binding.GetDirectBinding().GetMaterial()
        if not bound or (direct and bound.GetPath() == direct.GetPath()) or "material" in node.inputs:
            return
        material = self._set_material(node, bound, self._uv_names.get(meshes[0].name, []))
        if UsdGeom.Gprim(prim).GetDoubleSidedAttr().Get() is True and "doubleSided" not in material.inputs:
            material.add("doubleSided", "Bool", True)

    def _bind_skeleton(self, node: vrn.Node, prim: Usd.Prim) -> None:
        if node.type != "mesh":
            self._skins.wait_for(node, prim)
        if "weights" not in node.inputs:
            self.animations.read_weights(node, prim)

    # --- what is not a prim

    def _read_layer(self) -> None:
        data = self.stage.GetRootLayer().customLayerData
        for name in data:
            if name != "vrn":
                self.losses.add(f"data {name} of the layer", "")
        asset = self.layer_data("asset")
        if asset:
            node = self.add("asset", str(asset.get("node", "asset")))
            for path in ("copyright", "extras", "fileExtras"):
                if isinstance(asset.get(path), str):
                    node.add(path, "String", asset[path])

    def _read_scene(self) -> None:
        for prim in self._scenes:
            node = self.add_for("scene", prim)
            node.add("default", "Bool", prim.GetCustomDataByKey(SCENE))
            entries = node.add("nodes", "Node[]")
            for root in self._roots:
                entries.append(root)


def _has_content(prim: Usd.Prim) -> bool:
    """Whether a prim or one below it has a place."""
    below = Usd.PrimRange(prim, _CHILDREN)
    return any(found.IsA(UsdGeom.Xformable) for found in below)


def _identity(prim: Usd.Prim) -> Any:
    """What distinguishes the data of a mesh from that of others: where its properties are stated."""
    ignored = ("xformOp", "visibility", "purpose", "material:", "skel:", "doubleSided", "extent")
    stated = []
    for found in prim.GetAuthoredProperties():
        if not found.GetName().startswith(ignored):
            stack = found.GetPropertyStack(Usd.TimeCode.Default())
            stated.append((found.GetName(), stack[0].layer.identifier, stack[0].path) if stack else found.GetName())
    direct = UsdShade.MaterialBindingAPI(prim).GetDirectBinding().GetMaterialPath()
    subsets = tuple(child.GetPrim().GetPath() for child in UsdGeom.Subset.GetAllGeomSubsets(UsdGeom.Imageable(prim)))
    return (prim.GetTypeName(), tuple(stated), direct, subsets) if stated else prim.GetPath()
