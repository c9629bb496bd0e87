"""Meshes: nodes with points and faces, and the prims Mesh, BasisCurves and Points."""

from __future__ import annotations

from dataclasses import dataclass
from typing import TYPE_CHECKING, Any

import numpy as np
from pxr import Sdf, UsdGeom, Vt

import vrn

from . import morphs, skins
from .arrays import Array, finite, from_usd, to_usd
from .authored import Authored
from .given import Given
from .keys import NAME
from .losses import Losses
from .surfaces import Surface, flipped, split, with_faces, with_used_points

if TYPE_CHECKING:
    from pxr import Usd

TYPES = Sdf.ValueTypeNames
MESH = "mesh"
VARIANTS = ("variants[].variant", "variants[].material")
FLIPPED = "last digits of texture coordinates (v is flipped)"
MISMATCH = "attributes that do not match the points of their mesh"

# The input of a node, the attribute of a prim, the type of both, and the default value.
_SUBDIVISION = (
    ("scheme", "subdivisionScheme", "String", TYPES.Token, "none"),
    ("boundary", "interpolateBoundary", "String", TYPES.Token, "edgeAndCorner"),
    ("faceVarying", "faceVaryingLinearInterpolation", "String", TYPES.Token, "cornersPlus1"),
    ("triangleRule", "triangleSubdivisionRule", "String", TYPES.Token, "catmullClark"),
    ("creaseIndices", "creaseIndices", "int32[]", TYPES.IntArray, None),
    ("creaseLengths", "creaseLengths", "int32[]", TYPES.IntArray, None),
    ("creaseSharpnesses", "creaseSharpnesses", "float[]", TYPES.FloatArray, None),
    ("cornerIndices", "cornerIndices", "int32[]", TYPES.IntArray, None),
    ("cornerSharpnesses", "cornerSharpnesses", "float[]", TYPES.FloatArray, None),
    ("holes", "holeIndices", "int32[]", TYPES.IntArray, None),
)
_CORNERS = {"triangles": 3, "lines": 2, "points": 1}


@dataclass
class Faces:
    topology: str
    counts: Array
    indices: Array


# --- writing


def write_mesh(stage: Usd.Stage, path: Sdf.Path, mesh: vrn.Node, losses: Losses) -> Usd.Prim | None:
    """Adds a mesh at a path. None, with a loss, if it is invalid."""
    given = Given(mesh, losses)
    points = _points(given)
    faces = _faces(given, len(points)) if points is not None else None
    if points is None or faces is None:
        return None
    prim = _define(stage, path, faces)
    writer = _Attributes(prim, given, faces, len(points))
    writer.write_points(points)
    writer.write_normals()
    writer.write_colors()
    writer.write_uvsets()
    writer.write_attributes()
    if faces.topology == "faces":
        _write_subdivision(prim, given)
        skins.write_influences(prim, given, len(points))
        morphs.write_targets(prim, given, len(points))
    given.add_unread("name", "topology", "normalMode", "material", *VARIANTS, "extras", "partExtras", "weights")
    return prim


def _points(given: Given) -> Array | None:
    points = given.floats("points", 3)
    if points is None or points.ndim != 2:
        given.lose("meshes with no points")
        return None
    if not finite(points):
        given.lose("meshes with points that are not finite")
        return None
    return points


def _faces(given: Given, point_count: int) -> Faces | None:
    def reject(reason: str) -> Faces | None:
        given.lose(f"meshes with {reason}")
        return None

    topology = given.text("topology") or "triangles"
    indices = given.integers("faceIndices")
    if indices is not None:
        topology = "polygons"
    else:
        indices = given.integers("triangles")
        if indices is not None:
            topology = "triangles"
        else:
            indices = given.integers("indices")
    if topology == "polygons" and indices is None:
        return reject("polygons without indices")
    if topology not in ("polygons", *_CORNERS):
        return reject("an unknown topology")
    if indices is None:
        indices = np.arange(point_count)
    indices = indices.astype(np.int64)
    if indices.min() < 0 or indices.max() >= point_count:
        return reject("indices that are out of range or not integers")
    if topology == "polygons":
        return _polygons(given, indices)
    if len(indices) % _CORNERS[topology]:
        return reject("an incomplete last face")
    counts = np.full(len(indices) // _CORNERS[topology], _CORNERS[topology])
    return Faces("faces" if topology == "triangles" else topology, counts, indices)


def _polygons(given: Given, indices: Array) -> Faces | None:
    counts = given.integers("faceCounts")
    if counts is None:
        given.lose("meshes with polygons without valid faceCounts")
    elif int(counts.astype(np.int64).sum()) != len(indices):
        given.lose("meshes with faceCounts that do not sum to the number of faceIndices")
    elif counts.min() < 3:
        given.lose("meshes with polygons with fewer than three corners")
    else:
        return Faces("faces", counts.astype(np.int64), indices)
    return None


def _define(stage: Usd.Stage, path: Sdf.Path, faces: Faces) -> Usd.Prim:
    if faces.topology == "points":
        return UsdGeom.Points.Define(stage, path).GetPrim()
    if faces.topology == "lines":
        curves = UsdGeom.BasisCurves.Define(stage, path)
        curves.CreateTypeAttr("linear")
        curves.CreateCurveVertexCountsAttr(to_usd(faces.counts, TYPES.IntArray))
        return curves.GetPrim()
    mesh = UsdGeom.Mesh.Define(stage, path)
    mesh.CreateFaceVertexCountsAttr(to_usd(faces.counts, TYPES.IntArray))
    mesh.CreateFaceVertexIndicesAttr(to_usd(faces.indices, TYPES.IntArray))
    return mesh.GetPrim()


class _Attributes:
    """Writes what lies on the points and corners of a mesh."""

    def __init__(self, prim: Usd.Prim, given: Given, faces: Faces, point_count: int) -> None:
        self._prim = prim
        self._given = given
        self._faces = faces
        self._points = point_count
        self._primvars = UsdGeom.PrimvarsAPI(prim)

    def write_points(self, points: Array) -> None:
        values = self._gathered(points)
        if self._faces.topology == "lines" and len(np.unique(self._faces.indices)) < len(values):
            self._given.lose("points shared by lines (repeated)", "points")
        geometry = UsdGeom.PointBased(self._prim)
        geometry.CreatePointsAttr(to_usd(values, TYPES.Point3fArray))
        corners = np.array([values.min(0), values.max(0)])
        geometry.CreateExtentAttr(to_usd(corners, TYPES.Float3Array))

    def write_normals(self) -> None:
        normals = self._given.floats("normals", 3)
        interpolation = self._interpolation("normals", normals)
        if normals is None or interpolation is None:
            return
        geometry = UsdGeom.PointBased(self._prim)
        geometry.CreateNormalsAttr(to_usd(self._values(normals, interpolation), TYPES.Normal3fArray))
        geometry.SetNormalsInterpolation(interpolation)

    def write_colors(self) -> None:
        colors = self._per_point("colors", 4)
        if colors is not None:
            self._add("displayColor", TYPES.Color3fArray, colors[:, :3])
            self._add("displayOpacity", TYPES.FloatArray, colors[:, 3])
        tangents = self._per_point("tangents", 4)
        if tangents is not None:
            self._add("tangents", TYPES.Float4Array, tangents)
        for i in range(self._given.count("colorsets")):
            colors = self._per_point(f"colorsets[{i}].colors", 4)
            if colors is not None:
                self._add(f"colors{i + 1}", TYPES.Color4fArray, colors)

    def write_uvsets(self) -> None:
        for i in range(self._given.count("uvsets")):
            coords = self._given.floats(f"uvsets[{i}].coords", 2)
            name = self._given.text(f"uvsets[{i}].name")
            if coords is None:
                continue
            if not finite(coords):
                self._given.lose("numbers that are not finite", f"uvsets[{i}].coords")
                continue
            self._write_uvset(i, coords, name)

    def _write_uvset(self, i: int, coords: Array, name: str) -> None:
        values = coords.copy()
        values[:, 1] = np.float32(1) - coords[:, 1]
        if not np.array_equal(np.float32(1) - values[:, 1], coords[:, 1]):
            self._given.lose(FLIPPED, f"uvsets[{i}].coords")
        indices = self._given.integers(f"uvsets[{i}].indices")
        if indices is None:
            interpolation = self._interpolation(f"uvsets[{i}].coords", coords)
            if interpolation is None:
                return
            primvar = self._add(uvset_name(i), TYPES.TexCoord2fArray, values, interpolation)
        else:
            is_valid = len(indices) == len(self._faces.indices) and indices.min() >= 0 and indices.max() < len(coords)
            if not is_valid or self._faces.topology != "faces":
                return self._given.lose(MISMATCH, f"uvsets[{i}].indices")
            primvar = self._add(uvset_name(i), TYPES.TexCoord2fArray, values, "faceVarying")
            primvar.SetIndices(to_usd(indices, TYPES.IntArray))
        if name != f"uv{i}":
            primvar.GetAttr().SetCustomDataByKey(NAME, name)

    def write_attributes(self) -> None:
        types = {
            ("f", 1): TYPES.FloatArray, ("f", 2): TYPES.Float2Array, ("f", 3): TYPES.Float3Array,
            ("f", 4): TYPES.Float4Array, ("i", 1): TYPES.IntArray,
        }  # fmt: skip
        taken: set[str] = set()
        for i in range(self._given.count("attributes")):
            path = f"attributes[{i}].values"
            name = self._given.text(f"attributes[{i}].name")
            values = self._given.numbers(path)
            if values is None:
                continue
            components = values.size // len(values)
            kind = (values.dtype.kind, components)
            if len(values) != self._points:
                self._given.lose(MISMATCH, path)
            elif kind not in types or values.dtype.itemsize > 4 or values.ndim > 2:
                self._given.lose("attributes that are not one to four floats or one integer", path)
            elif not Sdf.Path.IsValidIdentifier(name) or not name.startswith("_"):
                self._given.lose("attributes whose name is not an identifier that starts with _", path)
            elif name in taken:
                self._given.lose("attributes with the name of another", path)
            else:
                taken.add(name)
                self._add(name, types[kind], self._gathered(values))

    def _per_point(self, path: str, components: int) -> Array | None:
        values = self._given.floats(path, components)
        if values is None:
            return None
        if len(values) != self._points or not finite(values):
            self._given.lose(MISMATCH if finite(values) else "numbers that are not finite", path)
            return None
        return self._gathered(values)

    def _interpolation(self, path: str, values: Array | None) -> str | None:
        if values is None:
            return None
        if not finite(values):
            self._given.lose("numbers that are not finite", path)
        elif len(values) == self._points:
            return "vertex"
        elif len(values) == len(self._faces.indices) and self._faces.topology == "faces":
            return "faceVarying"
        else:
            self._given.lose(MISMATCH, path)
        return None

    def _add(self, name: str, type_name: Any, values: Array, interpolation: str = "vertex") -> UsdGeom.Primvar:
        primvar = self._primvars.CreatePrimvar(name, type_name, interpolation)
        primvar.Set(to_usd(self._values(values, interpolation) if name.startswith("st") else values, type_name))
        return primvar

    def _values(self, values: Array, interpolation: str) -> Array:
        return self._gathered(values) if interpolation == "vertex" else values

    def _gathered(self, values: Array) -> Array:
        """The values of the points in the order of curves and points, which have no indices."""
        return values if self._faces.topology == "faces" else values[self._faces.indices]


def uvset_name(i: int) -> str:
    """The name of the primvar of a uvset. Most programs expect the first one to be `st`."""
    return f"st{i}" if i else "st"


def _write_subdivision(prim: Usd.Prim, given: Given) -> None:
    if not given.text("subdivision.scheme"):
        prim.GetAttribute("subdivisionScheme").Set("none")
    for member, name, kind, type_name, _ in _SUBDIVISION:
        path = f"subdivision.{member}"
        value: Any = given.text(path) if kind == "String" else given.numbers(path)
        if value is None or len(value) == 0:
            continue
        attribute = prim.GetAttribute(name)
        if kind != "String":
            attribute.Set(to_usd(value, type_name))
        elif value in attribute.GetMetadata("allowedTokens"):
            attribute.Set(value)
        else:
            given.lose("unknown rules of subdivision", path)


# --- reading


class MeshReader:
    """Reads one prim with points as the meshes of its parts: one for each subset of faces with a material."""

    def __init__(self, authored: Authored) -> None:
        self._authored = authored
        self.uv_names: list[str] = []
        """The names of the primvars that became uvsets, in order."""
        self._coords: dict[str, Array] = {}
        self._uv_titles: list[str] = []
        self._attributes: list[str] = []
        self._colorsets: list[str] = []
        self.topology = "triangles"

    def read(self) -> Surface | None:
        """The faces with all that lies on them. None, with a loss, if they are invalid."""
        points = self._authored.array("points")
        if points is None:
            return self._reject("no points")
        if not finite(points):
            return self._reject("points that are not finite")
        surface = self._faces(points.astype(np.float32))
        if surface is None:
            return None
        self._authored.mark("extent", "doubleSided", "orientation", "normals")
        self._read_normals(surface)
        self._read_primvars(surface)
        skins.read_influences(self._authored, surface)
        morphs.read_targets(self._authored, surface)
        if (surface.counts < 3).any() and self.topology == "triangles":
            self._authored.lose("faces with fewer than three corners", "faceVertexCounts")
            surface = with_faces(surface, surface.counts >= 3)
            if not len(surface.counts):
                return None
        if self._authored.value("orientation", "rightHanded") == "leftHanded":
            surface = flipped(surface)
        return self._with_point_colors(surface)

    def _reject(self, reason: str) -> Surface | None:
        self._authored.lose(f"meshes with {reason}")
        return None

    def _faces(self, points: Array) -> Surface | None:
        prim = self._authored.prim
        if prim.IsA(UsdGeom.Mesh):
            return self._mesh_faces(points)
        if prim.IsA(UsdGeom.BasisCurves):
            return self._lines(points)
        self.topology = "points"
        return Surface(np.ones(len(points), np.int64), np.arange(len(points)), {"points": points})

    def _mesh_faces(self, points: Array) -> Surface | None:
        counts = self._authored.array("faceVertexCounts")
        indices = self._authored.array("faceVertexIndices")
        if counts is None or indices is None:
            return self._reject("no faces")
        if counts.min() < 0 or int(counts.astype(np.int64).sum()) != len(indices):
            return self._reject("faceVertexCounts that do not sum to the number of faceVertexIndices")
        if indices.min() < 0 or indices.max() >= len(points):
            return self._reject("indices that are out of range")
        numbers = {"number": np.arange(len(counts))}  # which subsets refer to, also when faces are left out
        return Surface(counts.astype(np.int64), indices, {"points": points}, faces=numbers)

    def _lines(self, points: Array) -> Surface | None:
        """The segments of linear curves."""
        counts = self._authored.array("curveVertexCounts")
        if (
            self._authored.value("type", "cubic") != "linear"
            or self._authored.value("wrap", "nonperiodic") != "nonperiodic"
        ):
            return self._reject("curves that are not linear and open")
        if counts is None or counts.min() < 0 or int(counts.astype(np.int64).sum()) != len(points):
            return self._reject("curveVertexCounts that do not sum to the number of points")
        self.topology = "lines"
        starts = np.ones(len(points), bool)
        starts[np.cumsum(counts)[counts > 0] - 1] = False  # the last point of each curve starts no segment
        first = np.flatnonzero(starts)
        return Surface(np.full(len(first), 2), np.stack([first, first + 1], 1).reshape(-1), {"points": points})

    def _read_normals(self, surface: Surface) -> None:
        primvar = UsdGeom.PrimvarsAPI(self._authored.prim).GetPrimvar("normals")
        if primvar.HasAuthoredValue():
            self._read_primvar(surface, primvar, "normals", 3)
            return
        values = self._authored.array("normals")
        if values is not None:
            interpolation = UsdGeom.PointBased(self._authored.prim).GetNormalsInterpolation()
            self._lay(surface, "normals", values, interpolation, "normals")

    def _read_primvars(self, surface: Surface) -> None:
        primvars = [
            primvar
            for primvar in UsdGeom.PrimvarsAPI(self._authored.prim).FindPrimvarsWithInheritance()
            if primvar.HasAuthoredValue() and not primvar.GetPrimvarName().startswith(("skel:", "normals"))
        ]
        uvs = [primvar for primvar in primvars if _is_uvset(primvar)]
        uvs.sort(key=lambda primvar: (primvar.GetPrimvarName() != "st", primvar.GetPrimvarName()))
        for primvar in uvs:
            self._read_uvset(surface, primvar)
        for primvar in primvars:
            if primvar not in uvs:
                self._read_other(surface, primvar)

    def _read_uvset(self, surface: Surface, primvar: UsdGeom.Primvar) -> None:
        key = f"uv:{len(self.uv_names)}"
        values = self._values(primvar)
        indices = self._indices(primvar)
        if values is None or values.ndim != 2 or values.shape[1] != 2:
            return
        coords = values.astype(np.float32)
        coords[:, 1] = np.float32(1) - coords[:, 1]
        if not np.array_equal(np.float32(1) - coords[:, 1], values[:, 1]):
            self._authored.lose(FLIPPED, primvar.GetName())
        if indices is not None and primvar.GetInterpolation() == "faceVarying":
            self._coords[key] = coords
            if not self._check_indices(indices, len(coords), primvar):
                return
            coords = indices
        elif indices is not None:
            if not self._check_indices(indices, len(coords), primvar):
                return
            coords = coords[indices]
        if self._lay(surface, key, coords, primvar.GetInterpolation(), primvar.GetName()):
            self.uv_names.append(primvar.GetPrimvarName())
            title = primvar.GetAttr().GetCustomDataByKey(NAME)
            self._uv_titles.append(title if isinstance(title, str) else f"uv{len(self._uv_titles)}")

    def _read_other(self, surface: Surface, primvar: UsdGeom.Primvar) -> None:
        name = primvar.GetPrimvarName()
        sizes = {"displayColor": 3, "displayOpacity": 1}
        if name in sizes:
            self._read_primvar(surface, primvar, name, sizes[name])
        elif name == "tangents" and primvar.GetTypeName() == TYPES.Float4Array:
            if primvar.GetInterpolation() in ("vertex", "varying"):
                self._read_primvar(surface, primvar, "tangents", 4)
        elif primvar.GetTypeName().role == "Color" and primvar.GetTypeName().isArray:
            if self._read_primvar(surface, primvar, f"color:{name}", 0):
                self._colorsets.append(f"color:{name}")
        elif primvar.GetTypeName().isArray and primvar.GetInterpolation() in ("vertex", "varying"):
            if self._read_primvar(surface, primvar, f"attribute:{name}", 0):
                self._attributes.append(f"attribute:{name}")

    def _read_primvar(self, surface: Surface, primvar: UsdGeom.Primvar, key: str, components: int) -> bool:
        values = self._values(primvar)
        if values is None:
            return False
        if components > 1 and (values.ndim != 2 or values.shape[1] != components):
            self._authored.lose("primvars of the wrong type", primvar.GetName())
            return False
        indices = self._indices(primvar)
        if indices is not None:
            if not self._check_indices(indices, len(values), primvar):
                return False
            values = values[indices]
        return self._lay(surface, key, values, primvar.GetInterpolation(), primvar.GetName())

    def _values(self, primvar: UsdGeom.Primvar) -> Array | None:
        """The values of a primvar, which may be that of a parent. None, with a loss, if they are not numbers."""
        self._authored.mark(primvar.GetName())
        if primvar.ValueMightBeTimeVarying():
            self._authored.lose(f"time samples of {primvar.GetName()} of {self._authored.prim.GetTypeName()}")
        samples = primvar.GetTimeSamples()
        value = primvar.Get(samples[0]) if samples else primvar.Get()
        array = np.atleast_1d(from_usd(value)) if value is not None else np.empty(0)
        if array.dtype.kind not in "fi" or array.ndim > 2:
            self._authored.lose("primvars that are not numbers or vectors", primvar.GetName())
        elif array.size and not finite(array):
            self._authored.lose("numbers that are not finite", primvar.GetName())
        elif array.size:
            return array
        return None

    def _indices(self, primvar: UsdGeom.Primvar) -> Array | None:
        self._authored.mark(primvar.GetName() + ":indices")
        return from_usd(primvar.GetIndices()) if primvar.IsIndexed() else None

    def _check_indices(self, indices: Array, count: int, primvar: UsdGeom.Primvar) -> bool:
        if len(indices) and indices.min() >= 0 and indices.max() < count:
            return True
        self._authored.lose("primvars with indices that are out of range", primvar.GetName())
        return False

    def _lay(self, surface: Surface, key: str, values: Array, interpolation: str, name: str) -> bool:
        """Puts values on the points or corners. False, with a loss, if their number is wrong."""
        sizes = {
            "constant": 1, "uniform": len(surface.counts), "vertex": surface.point_count,
            "varying": surface.point_count, "faceVarying": len(surface.indices),
        }  # fmt: skip
        if sizes.get(interpolation) != len(values):
            self._authored.lose("primvars that do not match their mesh", name)
            return False
        if interpolation == "constant":
            surface.points[key] = np.repeat(values, surface.point_count, 0)
        elif interpolation == "uniform":
            surface.corners[key] = np.repeat(values, surface.counts, 0)
        elif interpolation == "faceVarying":
            surface.corners[key] = values
        else:
            surface.points[key] = values
        return True

    def _with_point_colors(self, surface: Surface) -> Surface:
        """Moves to the points what scenes have on points only, and what would be mistaken for lying on points."""
        moved = [key for key in surface.corners if not key.startswith(("uv:", "normals"))]
        if len(surface.indices) == surface.point_count:
            moved += [key for key in surface.corners if key.startswith("normals")]
        return split(surface, moved) if moved else surface

    def put(self, node: vrn.Node, surface: Surface) -> None:
        """Adds the surface to a mesh node."""
        node.add("topology", "String", self.topology if self.topology != "triangles" else _topology_of(surface))
        node.add("points", "vec3f[]", surface.points["points"])
        if node["topology"] == "polygons":
            node.add("faceCounts", "uint32[]", surface.counts)
            node.add("faceIndices", "uint32[]", surface.indices)
        elif self.topology != "points":
            node.add("indices", "uint32[]", surface.indices)
        self._put_normals(node, surface)
        self._put_colors(node, surface)
        self._put_uvsets(node, surface)
        self._put_attributes(node, surface)
        skins.put_influences(node, surface)
        morphs.put_targets(node, surface)
        self._put_subdivision(node)

    def _put_normals(self, node: vrn.Node, surface: Surface) -> None:
        for domain, mode in ((surface.points, "vertex"), (surface.corners, "corner")):
            if "normals" in domain:
                node.add("normals", "vec3f[]", domain["normals"].astype(np.float32))
                node.add("normalMode", "String", mode)
        if "tangents" in surface.points:
            node.add("tangents", "vec4f[]", surface.points["tangents"].astype(np.float32))

    def _put_colors(self, node: vrn.Node, surface: Surface) -> None:
        color = surface.points.get("displayColor")
        opacity = surface.points.get("displayOpacity")
        if color is not None or opacity is not None:
            values = np.ones((surface.point_count, 4), np.float32)
            if color is not None:
                values[:, :3] = color
            if opacity is not None:
                values[:, 3] = opacity
            node.add("colors", "rgbaf[]", values)
        if self._colorsets:
            sets = node.add("colorsets", "Object[]")
            for key in self._colorsets:
                values = np.ones((surface.point_count, 4), np.float32)
                values[:, : surface.points[key].shape[1]] = surface.points[key]
                sets.append().add("colors", "rgbaf[]", values)

    def _put_uvsets(self, node: vrn.Node, surface: Surface) -> None:
        if not self.uv_names:
            return
        sets = node.add("uvsets", "Object[]")
        for i, title in enumerate(self._uv_titles):
            key = f"uv:{i}"
            entry = sets.append()
            entry.add("name", "String", title)
            on_points = key in surface.points
            values = surface.points[key] if on_points else surface.corners[key]
            if key in self._coords:
                entry.add("coords", "vec2f[]", self._coords[key])
                entry.add("indices", "uint32[]", values)
            else:
                entry.add("coords", "vec2f[]", values)
                if not on_points and len(values) == surface.point_count:
                    entry.add("indices", "uint32[]", np.arange(len(values)))  # would be taken for lying on points

    def _put_attributes(self, node: vrn.Node, surface: Surface) -> None:
        if not self._attributes:
            return
        entries = node.add("attributes", "Object[]")
        for key in self._attributes:
            values = surface.points[key]
            name = key.partition(":")[2]
            kind = "float" if values.ndim == 1 else f"vec{values.shape[1]}f"
            entry = entries.append()
            entry.add("name", "String", name if name.startswith("_") else "_" + name)
            if values.dtype.kind == "f":
                entry.add("values", f"{kind}[]", values.astype(np.float32))
            else:
                entry.add("values", kind.replace("float", "int32").replace("f", "i") + "[]", values)

    def _put_subdivision(self, node: vrn.Node) -> None:
        if not self._authored.prim.IsA(UsdGeom.Mesh):
            return
        scheme = self._authored.value("subdivisionScheme", "catmullClark")
        found = {}
        for member, name, kind, _, initial in _SUBDIVISION:
            value = self._authored.value(name)
            is_array = kind != "String"
            if is_array and value is not None and len(value):
                found[member] = (kind, from_usd(value))
            elif not is_array and value != initial:
                found[member] = (kind, value)
        if scheme == "none":
            found = {member: entry for member, entry in found.items() if member == "holes"}
        if found:
            entry = node.add("subdivision", "Object")
            for member, (kind, value) in found.items():
                entry.add(member, kind, value)


def _topology_of(surface: Surface) -> str:
    return "triangles" if (surface.counts == 3).all() else "polygons"


def _is_uvset(primvar: UsdGeom.Primvar) -> bool:
    kind = primvar.GetTypeName()
    if not kind.isArray or kind.role not in ("TextureCoordinate", ""):
        return False
    is_two = str(kind) in ("float2[]", "double2[]", "half2[]", "texCoord2f[]", "texCoord2d[]", "texCoord2h[]")
    return is_two and not primvar.GetPrimvarName().startswith("_")


def parts_of(surface: Surface, authored: Authored) -> list[tuple[Surface, Any]]:
    """The surface in parts of one material each, with the prims that the materials are bound to."""
    prim = authored.prim
    if not prim.IsA(UsdGeom.Mesh):
        return [(surface, prim)]
    rest = np.ones(len(surface.counts), bool)
    parts: list[tuple[Array, Any]] = []
    for subset in UsdGeom.Subset.GetAllGeomSubsets(UsdGeom.Imageable(prim)):
        faces = _faces_of(subset, surface)
        if faces is None:
            authored.lose("subsets that are not of faces of the mesh with a material", str(subset.GetPrim().GetName()))
            continue
        parts.append((faces & rest, subset.GetPrim()))
        rest &= ~faces
    if not parts:
        return [(surface, prim)]
    if rest.any():
        parts.insert(0, (rest, prim))
    return [(with_used_points(with_faces(surface, faces)), owner) for faces, owner in parts if faces.any()]


def _faces_of(subset: UsdGeom.Subset, surface: Surface) -> Array | None:
    """Which faces are in a subset; None if it is not one of faces for a material."""
    family = subset.GetFamilyNameAttr().Get()
    indices = from_usd(subset.GetIndicesAttr().Get() or Vt.IntArray())
    if family != "materialBind" or subset.GetElementTypeAttr().Get() != "face" or not len(indices):
        return None
    faces = np.isin(surface.faces["number"], indices)
    return faces if indices.min() >= 0 else None
