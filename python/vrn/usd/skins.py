"""Skins: joints that are nodes of a scene, and skeletons of a stage, whose joints are names."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any

import numpy as np
from pxr import Gf, Sdf, Usd, UsdGeom, UsdSkel, Vt

import vrn

from .arrays import Array, decompose, finite, from_usd, to_usd
from .authored import Authored
from .given import Given
from .surfaces import Surface

if TYPE_CHECKING:
    from .reading import Reader
    from .writing import Writer

TYPES = Sdf.ValueTypeNames
JOINTS = "vrn:joints"
SKELETON = "vrn:skeleton"
_INDICES = "primvars:skel:jointIndices"
_WEIGHTS = "primvars:skel:jointWeights"
_METHOD = "primvars:skel:skinningMethod"
_BIND = "primvars:skel:geomBindTransform"

# --- writing


def write_influences(prim: Usd.Prim, given: Given, point_count: int) -> None:
    """The joints that move each point, and their weights."""
    paths = ["skin", *(f"skin.more[{i}]" for i in range(given.count("skin.more")))]
    joints, weights = [], []
    for path in paths:
        indices = given.integers(f"{path}.joints", 4)
        values = given.floats(f"{path}.weights", 4)
        if indices is None and values is None:
            continue
        if indices is None or values is None or indices.shape != values.shape or len(indices) != point_count:
            given.lose("joints that are not four integers per point", f"{path}.joints")
        elif indices.min() < 0 or indices.max() > 65535 or not finite(values):
            given.lose("joints of meshes with numbers above 65535", f"{path}.joints")
        else:
            joints.append(indices.reshape(-1, 4))
            weights.append(values.reshape(-1, 4))
    if not joints:
        return
    size = 4 * len(joints)
    binding = UsdSkel.BindingAPI.Apply(prim)
    binding.CreateJointIndicesPrimvar(False, size).Set(to_usd(np.concatenate(joints, 1), TYPES.IntArray))
    binding.CreateJointWeightsPrimvar(False, size).Set(to_usd(np.concatenate(weights, 1), TYPES.FloatArray))
    binding.CreateGeomBindTransformAttr(Gf.Matrix4d(1))


class SkeletonWriter:
    """Writes each skin as a skeleton when a mesh uses it first. The nodes that are its joints are prims already."""

    def __init__(self, writer: Writer) -> None:
        self._writer = writer
        self._paths: dict[str, Sdf.Path | None] = {}
        self._tokens: dict[str, list[str]] = {}

    def bind(self, meshes: list[Usd.Prim], skin: vrn.Node, label: str) -> Sdf.Path | None:
        """Binds the meshes of an instance to the skeleton of a skin."""
        influenced = [prim for prim in meshes if prim.HasAttribute(_INDICES)]
        if not influenced:
            self._writer.losses.add("skins on nodes whose mesh has no weights", label)
            return None
        path = self._skeleton(skin)
        if path is None:
            return None
        for prim in influenced:
            indices = prim.GetAttribute(_INDICES).Get()
            if np.array(indices).max() >= len(self._tokens[skin.name]):
                self._writer.losses.add("skins with fewer joints than the mesh uses", label)
                continue
            binding = UsdSkel.BindingAPI.Apply(prim)
            binding.CreateSkeletonRel().SetTargets([path])
            binding.CreateJointsAttr(self._tokens[skin.name])
        return path

    def _skeleton(self, skin: vrn.Node) -> Sdf.Path | None:
        if skin.name not in self._paths:
            self._paths[skin.name] = self._write(skin)
        return self._paths[skin.name]

    def _write(self, skin: vrn.Node) -> Sdf.Path | None:
        writer = self._writer
        writer.visited.add(skin.name)
        given = Given(skin, writer.losses)
        joints = self._joints(given)
        binds = self._inverse_binds(given, len(joints))
        if not joints or binds is None:
            return None
        skeleton_root = given.link("skeleton")
        given.add_unread("name", "extras", "joints[]")
        anchor = _anchor(joints, writer.root)
        prim = writer.define(UsdSkel.Skeleton, skin, anchor)
        tokens = [str(path.MakeRelativePath(anchor)) for path in joints]
        self._tokens[skin.name] = tokens
        order = sorted(range(len(joints)), key=lambda i: (joints[i].pathElementCount, i))
        self._write_skeleton(prim, [joints[i] for i in order], [tokens[i] for i in order], np.linalg.inv(binds)[order])
        prim.CreateRelationship(JOINTS).SetTargets(joints)
        if skeleton_root is not None and skeleton_root.name in writer.prims:
            prim.CreateRelationship(SKELETON).SetTargets([writer.prims[skeleton_root.name]])
        return prim.GetPath()

    def _joints(self, given: Given) -> list[Sdf.Path]:
        paths = []
        for i in range(given.count("joints")):
            node = given.link(f"joints[{i}]")
            if node is None or node.name not in self._writer.prims:
                given.lose("skins with joints without a transform")
                return []
            paths.append(self._writer.prims[node.name])
        if not paths:
            given.lose("skins with no joints")
        elif len(set(paths)) < len(paths):
            given.lose("skins with duplicate joints")
            return []
        return paths

    def _inverse_binds(self, given: Given, count: int) -> Array | None:
        values = given.numbers("inverseBind")
        if values is None:
            return np.broadcast_to(np.eye(4), (count, 4, 4))
        matrices: Array = np.asarray(values, np.float64).reshape(len(values), -1)
        is_valid = matrices.shape[1] == 16 and len(matrices) >= count and finite(matrices)
        matrices = matrices[:count].reshape(-1, 4, 4) if is_valid else matrices
        if is_valid and (np.abs(np.linalg.det(matrices)) > 0).all():
            return matrices
        given.lose("skins with inverseBind matrices that do not match the joints, or have no inverse")
        return None

    def _write_skeleton(self, prim: Usd.Prim, joints: list[Sdf.Path], tokens: list[str], binds: Array) -> None:
        skeleton = UsdSkel.Skeleton(prim)
        skeleton.CreateJointsAttr(tokens)
        skeleton.CreateBindTransformsAttr(to_usd(binds, TYPES.Matrix4dArray))
        stage = prim.GetStage()
        prims = [stage.GetPrimAtPath(path) for path in joints]
        parents = [_parent_joint(path, set(joints)) or prim.GetPath().GetParentPath() for path in joints]
        owners = [stage.GetPrimAtPath(path) for path in parents]
        pairs = list(zip(prims, owners, strict=True))
        skeleton.CreateRestTransformsAttr(to_usd(_relative(pairs, Usd.TimeCode.Default()), TYPES.Matrix4dArray))
        times = _key_times(pairs)
        if times:
            self._write_poses(prim, tokens, pairs, times)

    def _write_poses(self, prim: Usd.Prim, tokens: list[str], pairs: list[Any], times: list[float]) -> None:
        """The joints at all keys of the nodes that they follow."""
        animation = animation_of(prim)
        animation.CreateJointsAttr(tokens)
        for time in times:
            translations, rotations, scales = decompose(_relative(pairs, Usd.TimeCode(time)))
            animation.CreateTranslationsAttr().Set(to_usd(translations, TYPES.Float3Array), time)
            animation.CreateRotationsAttr().Set(to_usd(rotations, TYPES.QuatfArray), time)
            animation.CreateScalesAttr().Set(to_usd(scales, TYPES.Half3Array), time)


def animation_of(skeleton: Usd.Prim) -> UsdSkel.Animation:
    """The animation of a skeleton, which is made if it has none."""
    stage = skeleton.GetStage()
    path = skeleton.GetPath().AppendChild("Animation")
    if stage.GetPrimAtPath(path):
        return UsdSkel.Animation(stage.GetPrimAtPath(path))
    UsdSkel.BindingAPI.Apply(skeleton).CreateAnimationSourceRel().SetTargets([path])
    return UsdSkel.Animation.Define(stage, path)


def _anchor(joints: list[Sdf.Path], root: Sdf.Path) -> Sdf.Path:
    """The prim below which the skeleton is: the one that all topmost joints are in."""
    anchor = joints[0].GetParentPath()
    for path in joints[1:]:
        anchor = anchor.GetCommonPrefix(path.GetParentPath())
    return anchor if anchor.HasPrefix(root) else root


def _parent_joint(path: Sdf.Path, joints: set[Sdf.Path]) -> Sdf.Path | None:
    parent = path.GetParentPath()
    while not parent.isEmpty and parent != Sdf.Path.absoluteRootPath:
        if parent in joints:
            return parent
        parent = parent.GetParentPath()
    return None


def _relative(pairs: list[Any], time: Usd.TimeCode) -> Array:
    """The transforms of prims relative to others."""
    cache = UsdGeom.XformCache(time)
    return np.array([np.array(cache.ComputeRelativeTransform(prim, owner)[0]) for prim, owner in pairs])


def _key_times(pairs: list[Any]) -> list[float]:
    """The times of all keys of prims and of what is between them and their owners."""
    times: set[float] = set()
    for prim, owner in pairs:
        while prim and prim != owner:
            for operation in UsdGeom.Xformable(prim).GetOrderedXformOps():
                times.update(operation.GetTimeSamples())
            prim = prim.GetParent()
    return sorted(times)


# --- reading


def read_influences(authored: Authored, surface: Surface) -> None:
    """Puts the joints and weights of a mesh on its points."""
    binding = UsdSkel.BindingAPI(authored.prim)
    indices, weights = binding.GetJointIndicesPrimvar(), binding.GetJointWeightsPrimvar()
    authored.mark(_INDICES, _WEIGHTS, _BIND, "skel:joints", "skel:skeleton", "skel:animationSource")
    authored.mark(_INDICES + ":indices", _WEIGHTS + ":indices")
    if not indices.HasAuthoredValue() or not weights.HasAuthoredValue():
        return
    if authored.value(_METHOD, "classicLinear") != "classicLinear":
        authored.lose("skinning methods other than linear blends", _METHOD)
    joints = from_usd(indices.ComputeFlattened() or Vt.IntArray())
    values = from_usd(weights.ComputeFlattened() or Vt.FloatArray())
    size = indices.GetElementSize()
    count = surface.point_count
    if indices.GetInterpolation() == "constant":
        # A rigid mesh: the same joints move all points.
        joints, values = np.tile(joints, count), np.tile(values, count)
    is_valid = size > 0 and len(joints) == len(values) == size * count and finite(values)
    if not is_valid or (len(joints) and joints.min() < 0):
        authored.lose("joints and weights that do not match the points of their mesh", _INDICES)
        return
    width = -(-size // 4) * 4  # scenes have joints in groups of four
    for key, array in (("joints", joints.astype(np.uint32)), ("weights", values.astype(np.float32))):
        padded = np.zeros((count, width), array.dtype)
        padded[:, :size] = array.reshape(count, size)
        surface.points[f"skin:{key}"] = padded


def put_influences(node: vrn.Node, surface: Surface) -> None:
    joints, weights = surface.points.get("skin:joints"), surface.points.get("skin:weights")
    if joints is None or weights is None:
        return
    skin = node.add("skin", "Object")
    for first in range(0, joints.shape[1], 4):
        entry = skin
        if first:
            entry = (skin.children["more"] if "more" in skin else skin.add("more", "Object[]")).append()
        entry.add("joints", "vec4u[]", joints[:, first : first + 4])
        entry.add("weights", "vec4f[]", weights[:, first : first + 4])


class SkinReader:
    """Reads skeletons: their joints become nodes, and each way to bind a mesh to them becomes a skin."""

    def __init__(self, reader: Reader) -> None:
        self._reader = reader
        self._joints: dict[Sdf.Path, list[vrn.Node | None]] = {}
        self._skins: dict[Any, vrn.Node | None] = {}
        self._waiting: list[tuple[vrn.Node, Usd.Prim]] = []

    def wait_for(self, instance: vrn.Node, mesh: Usd.Prim) -> None:
        """Binds an instance to the skeleton of its mesh as soon as all prims are nodes."""
        if mesh.HasAttribute(_INDICES) or mesh.HasRelationship("skel:skeleton"):
            self._waiting.append((instance, mesh))

    def read_skeleton(self, authored: Authored, node: vrn.Node | None) -> None:
        """Makes nodes of the joints, below the node of the skeleton, unless they are prims of their own."""
        skeleton = UsdSkel.Skeleton(authored.prim)
        authored.mark("joints", "bindTransforms", "restTransforms", "jointNames", "skel:animationSource")
        tokens = [str(token) for token in skeleton.GetJointsAttr().Get() or ()]
        own = authored.targets(JOINTS)
        authored.targets(SKELETON)
        if own or node is None or not tokens:
            return
        rests = from_usd(skeleton.GetRestTransformsAttr().Get() or Vt.Matrix4dArray())
        if len(rests) != len(tokens) or not finite(rests):
            authored.lose("skeletons with rest transforms that do not match the joints", "restTransforms")
            rests = np.broadcast_to(np.eye(4), (len(tokens), 4, 4))
        nodes = self._make_joints(tokens, rests, node)
        self._joints[authored.prim.GetPath()] = list(nodes.values())
        self._reader.animations.read_poses(authored.prim, nodes)

    def _make_joints(self, tokens: list[str], rests: Array, below: vrn.Node) -> dict[str, vrn.Node]:
        nodes: dict[str, vrn.Node] = {}
        parts = decompose(rests)
        for i, token in enumerate(tokens):
            parent = below
            ancestors = Sdf.Path(token).GetAncestorsRange() if Sdf.Path.IsValidPathString(token)[0] else ()
            for ancestor in list(ancestors)[1:] if ancestors else ():
                if str(ancestor) in nodes:
                    parent = nodes[str(ancestor)]
                    break
            node = self._reader.add("transform", token.rpartition("/")[2])
            node.add("parent", "Node", parent)
            for path, kind, values in zip(
                ("translation", "rotation", "scale"), ("Vec3", "Quat", "Vec3"), parts, strict=True
            ):
                node.add(path, kind, values[i].tolist())
            nodes[token] = node
        return nodes

    def finish(self) -> None:
        for instance, mesh in self._waiting:
            skeleton = UsdSkel.BindingAPI(mesh).GetInheritedSkeleton()
            if not skeleton:
                continue
            skin = self._skin(skeleton, mesh)
            if skin is not None and "skin" not in instance.inputs:
                instance.add("skin", "Node", skin)
            elif skin is not None and instance["skin"] != skin:
                self._reader.losses.add("further skins of a node", str(mesh.GetPath()))

    def _skin(self, skeleton: UsdSkel.Skeleton, mesh: Usd.Prim) -> vrn.Node | None:
        order = tuple(str(token) for token in UsdSkel.BindingAPI(mesh).GetJointsAttr().Get() or ())
        bind = np.array(UsdSkel.BindingAPI(mesh).GetGeomBindTransformAttr().Get() or Gf.Matrix4d(1))
        key = (skeleton.GetPath(), order, bind.tobytes())
        if key not in self._skins:
            self._skins[key] = self._make(skeleton, order, bind)
        return self._skins[key]

    def _make(self, skeleton: UsdSkel.Skeleton, order: tuple[str, ...], bind: Array) -> vrn.Node | None:
        prim = skeleton.GetPrim()
        tokens = [str(token) for token in skeleton.GetJointsAttr().Get() or ()]
        binds = from_usd(skeleton.GetBindTransformsAttr().Get() or Vt.Matrix4dArray())
        if not tokens:
            return None
        places = [tokens.index(token) if token in tokens else -1 for token in order or tokens]
        is_valid = -1 not in places and len(binds) == len(tokens) and finite(binds @ bind)
        if not is_valid or not (np.abs(np.linalg.det(binds)) > 0).all():
            self._reader.losses.add("skeletons whose joints and bind transforms do not match", str(prim.GetPath()))
            return None
        joints = self._nodes_of(prim, places)
        if joints is None:
            self._reader.losses.add("skeletons whose joints are missing", str(prim.GetPath()))
            return None
        node = self._reader.add_for("skin", prim)
        entries = node.add("joints", "Node[]")
        for joint in joints:
            entries.append(joint)
        node.add("inverseBind", "mat4f[]", bind @ np.linalg.inv(binds)[places])
        for path in prim.GetRelationship(SKELETON).GetTargets() if prim.HasRelationship(SKELETON) else ():
            if path in self._reader.nodes:
                node.add("skeleton", "Node", self._reader.nodes[path])
        return node

    def _nodes_of(self, prim: Usd.Prim, places: list[int]) -> list[vrn.Node] | None:
        """The nodes of joints. Prims that are joints themselves are in the order of the meshes."""
        if prim.HasRelationship(JOINTS):
            paths = prim.GetRelationship(JOINTS).GetTargets()
            nodes = [self._reader.nodes.get(path) for path in paths]
            nodes = nodes if len(nodes) == len(places) else []
        else:
            found = self._joints.get(prim.GetPath(), [])
            nodes = [found[place] for place in places] if found else []
        return None if not nodes or None in nodes else [node for node in nodes if node is not None]
