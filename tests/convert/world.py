"""Where the meshes of a dumped scene are, worked out from the meaning of the inputs of its nodes."""

from geometry import inputs_of, number

IDENTITY = [1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1]


def multiply(a, b):
    return [sum(a[4 * row + i] * b[4 * i + column] for i in range(4)) for row in range(4) for column in range(4)]


def from_trs(translation, rotation, scale):
    x, y, z, w = rotation
    rows = [[1 - 2 * (y * y + z * z), 2 * (x * y + z * w), 2 * (x * z - y * w)],
            [2 * (x * y - z * w), 1 - 2 * (x * x + z * z), 2 * (y * z + x * w)],
            [2 * (x * z + y * w), 2 * (y * z - x * w), 1 - 2 * (x * x + y * y)]]
    matrix = []
    for row, factor in zip(rows, scale):
        matrix += [factor * each for each in row] + [0]
    return matrix + list(translation) + [1]


class World:
    """Row-major matrices that multiply row vectors. `poses` replaces translations, rotations and scales by name."""

    def __init__(self, scene, poses=None):
        self.nodes = {node["name"]: inputs_of(node) for node in scene["nodes"]}
        self.types = {node["name"]: node["type"] for node in scene["nodes"]}
        self.poses = poses or {}

    def value(self, name, key, fallback):
        if key in self.poses.get(name, {}):
            return self.poses[name][key]
        item = self.nodes[name].get(key)
        return [number(each) for each in item["value"]] if item else fallback

    def matrix(self, name):
        local = from_trs(self.value(name, "translation", [0, 0, 0]), self.value(name, "rotation", [0, 0, 0, 1]),
                         self.value(name, "scale", [1, 1, 1]))
        local = multiply(local, self.value(name, "transform", IDENTITY))
        parent = self.nodes[name].get("parent")
        return multiply(local, self.matrix(parent["value"])) if parent else local

    def points(self):
        """The corners of the mesh of each instance, by the name of the instance."""
        found = {}
        for name, inputs in self.nodes.items():
            if "geometry" not in inputs:
                continue
            mesh = self.nodes[inputs["geometry"]["value"]]
            matrix = self.matrix(name)
            data = mesh["points"]["data"]
            indices = mesh["indices" if "indices" in mesh else "faceIndices"]["data"]
            found[name] = [self.moved(data[3 * i : 3 * i + 3], matrix) for i in indices]
        return found

    @staticmethod
    def moved(point, matrix):
        return tuple(sum(c * matrix[4 * i + k] for i, c in enumerate([*point, 1])) for k in range(3))


def channels(scene):
    """The channels of all animations as (node, path): (interpolation, times, values)."""
    found = {}
    for node in scene["nodes"]:
        if node["type"] != "animation":
            continue
        for item in inputs_of(node)["channels"]["elements"]:
            channel = inputs_of(item)
            values = channel["values"]["data"]
            times = channel["times"]["data"]
            width = len(values) // len(times)
            key = (channel["target"]["value"], channel["path"]["value"])
            rows = [values[width * i : width * (i + 1)] for i in range(len(times))]
            found[key] = (channel["interpolation"]["value"], times, rows)
    return found
