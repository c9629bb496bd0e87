"""The meshes of a dumped scene, with exact float values."""
import struct


def number(value):
    return float("nan") if value == "nan" else float(value)


def floats(buffer, components):
    """The elements of a buffer, each as the bytes of its floats."""
    data = struct.pack(f"<{len(buffer['data'])}f", *map(number, buffer["data"]))
    return [data[i : i + 4 * components] for i in range(0, len(data), 4 * components)]


def inputs_of(node):
    return {item.get("name"): item for item in node.get("inputs", node.get("members", []))}


class Mesh:
    """`corners`: tuples of position, normal and texture coordinates; `faces`: the number of corners per face."""

    def __init__(self, node):
        inputs = inputs_of(node)
        self.name = inputs["name"]["value"] if "name" in inputs else node["name"]
        self.points = floats(inputs["points"], 3)
        if "faceIndices" in inputs:
            indices = inputs["faceIndices"]["data"]
            self.faces = inputs["faceCounts"]["data"]
        else:
            indices = inputs["triangles" if "triangles" in inputs else "indices"]["data"]
            self.faces = [3] * (len(indices) // 3)
        self.indices = indices
        columns = [[self.points[i] for i in indices]]
        if "normals" in inputs:
            normals = floats(inputs["normals"], 3)
            columns.append([normals[i] for i in indices])
        self.uvsets = 0
        for uvset in inputs.get("uvsets", {}).get("elements", []):
            members = inputs_of(uvset)
            coords = floats(members["coords"], 2)
            own = members["indices"]["data"] if "indices" in members else indices
            if "indices" not in members and len(coords) != len(self.points):
                continue  # does not match the points
            columns.append([coords[i] for i in own])
            self.uvsets += 1
        self.corners = list(zip(*columns))

    def triangles(self):
        return sum(count - 2 for count in self.faces)


def meshes(scene):
    return [Mesh(node) for node in scene["nodes"] if node["type"] == "mesh"]
