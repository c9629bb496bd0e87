"""Writes FBX files of version 7.5, binary and as text, for the tests.

A file is a tree of elements, each with a name, values and children. Objects have numbers, and connections say which
object belongs to which.
"""
import struct
import zlib

TICKS = 46186158000  # per second


class Number(int):
    """The number of an object, which has 64 bits in binary files."""


class Array:
    """Numbers of a type, a letter as in binary files. Binary files may compress them."""

    def __init__(self, kind, numbers, is_compressed=False):
        self.kind, self.numbers, self.is_compressed = kind, list(numbers), is_compressed


def element(name, *values, children=None):
    return (name, values, children)


def binary_value(value):
    if isinstance(value, Number) or (isinstance(value, int) and value >= 1 << 31):
        return b"L" + struct.pack("<q", value)
    if isinstance(value, int):
        return b"I" + struct.pack("<i", value)
    if isinstance(value, float):
        return b"D" + struct.pack("<d", value)
    if isinstance(value, str):
        return b"S" + struct.pack("<I", len(value)) + value.encode()
    data = struct.pack(f"<{len(value.numbers)}{value.kind.replace('l', 'q')}", *value.numbers)
    stored = zlib.compress(data) if value.is_compressed else data
    header = struct.pack("<III", len(value.numbers), value.is_compressed, len(stored))
    return value.kind.encode() + header + stored


def binary_element(item, start):
    name, values, children = item
    data = b"".join(map(binary_value, values))
    body = start + 25 + len(name) + len(data)
    inner = b""
    for child in children or ():
        inner += binary_element(child, body + len(inner))
    if children is not None:
        inner += bytes(25)
    header = struct.pack("<QQQB", body + len(inner), len(values), len(data), len(name))
    return header + name.encode() + data + inner


def text_value(value):
    if isinstance(value, str):
        class_and_name = value.split("\0\1")
        return '"' + "::".join(reversed(class_and_name)) + '"'
    return repr(int(value) if isinstance(value, int) else value)


def text_element(item, indent=""):
    name, values, children = item
    if values and isinstance(values[0], Array):
        numbers = values[0].numbers
        if name == "KeyAttrDataFloat":  # the bits of the floats
            numbers = [struct.unpack("<i", struct.pack("<f", number))[0] for number in numbers]
        numbers = ",".join(map(repr, numbers))
        return f"{indent}{name}: *{len(values[0].numbers)} {{\n{indent}\ta: {numbers}\n{indent}}}\n"
    line = f"{indent}{name}: " + ", ".join(map(text_value, values))
    if children is None:
        return line + "\n"
    return line + " {\n" + "".join(text_element(child, indent + "\t") for child in children) + indent + "}\n"


def prop(name, kind, *values):
    return element("P", name, kind, "", "", *values)


def vector(name, numbers):
    return prop(name, "Vector3D", *map(float, numbers))


def tangent(slope, next_slope, weight=0):
    """The numbers of a tangent. The third one has the bits of two weights."""
    units = round(weight * 10000)
    return (float(slope), float(next_slope), struct.unpack("<f", struct.pack("<HH", units, units))[0], 0.0)


class Fbx:
    """A file in metres, Y up, unless `settings` say otherwise.

        fbx = Fbx()
        mesh = fbx.mesh([(0, 0, 0), (1, 0, 0), (0, 1, 0)])
        fbx.model("node", mesh, [vector("Lcl Translation", (1, 2, 3))])
        fbx.write(path, is_binary=True)
    """

    METRES = (prop("UnitScaleFactor", "double", 100.0),)

    def __init__(self, settings=METRES, model_template=(), version=7500):
        self.version = version
        self.settings = settings
        self.template = list(model_template)
        self.objects, self.connections = [], []

    def object(self, kind, name, label, children):
        number = Number(1000 + len(self.objects))
        self.objects.append(element(kind, number, name, label, children=children))
        return number

    def connect(self, source, destination, name=None):
        ends = (Number(source), Number(destination))
        self.connections.append(element("C", "OO", *ends) if name is None else element("C", "OP", *ends, name))

    def mesh(self, points, is_compressed=False):
        """One polygon through all points."""
        coordinates = [float(number) for point in points for number in point]
        corners = [*range(len(points) - 1), -len(points)]
        return self.object("Geometry", "shape\0\1Geometry", "Mesh", [
            element("Vertices", Array("d", coordinates, is_compressed)),
            element("PolygonVertexIndex", Array("i", corners, is_compressed)),
        ])

    def model(self, name, mesh=None, properties=(), parent=0):
        number = self.object("Model", name + "\0\1Model", "Null" if mesh is None else "Mesh",
                             [element("Version", 232), element("Properties70", children=list(properties))])
        self.connect(number, parent)
        if mesh is not None:
            self.connect(mesh, number)
        return number

    def skin(self, mesh, joint, points, transform):
        """One joint that moves some points of a mesh; `transform` takes the model of the mesh to it."""
        skin = self.object("Deformer", "skin\0\1Deformer", "Skin", [element("Version", 101)])
        cluster = self.object("Deformer", "cluster\0\1SubDeformer", "Cluster", [
            element("Version", 100), element("Indexes", Array("i", points)),
            element("Weights", Array("d", [1.0] * len(points))), element("Transform", Array("d", transform)),
            element("TransformLink", Array("d", transform)),
        ])
        self.connect(skin, mesh)
        self.connect(cluster, skin)
        self.connect(joint, cluster)

    def stack(self, name, properties=()):
        return self.object("AnimationStack", name + "\0\1AnimStack", "",
                           [element("Properties70", children=list(properties))])

    def layer(self, stack):
        layer = self.object("AnimationLayer", "base\0\1AnimLayer", "", [])
        self.connect(layer, stack)
        return layer

    def animate(self, layer, model, name, rest, curves, more=()):
        """`curves`: for some of X, Y, Z the keys as (seconds, value, flags, slope, slope before the next key); a sixth
        number is the weight of both."""
        values = [prop("d|" + axis, "Number", float(number)) for axis, number in zip("XYZ", rest)]
        node = self.object("AnimationCurveNode", "curves\0\1AnimCurveNode", "", [
            element("Properties70", children=values)
        ])
        self.connect(node, layer)
        self.connect(node, model, name)
        for axis, keys in curves.items():
            curve = self.object("AnimationCurve", "\0\1AnimCurve", "", [
                element("KeyVer", 4008),
                element("KeyTime", Array("l", [round(key[0] * TICKS) for key in keys])),
                element("KeyValueFloat", Array("f", [float(key[1]) for key in keys])),
                element("KeyAttrFlags", Array("i", [key[2] for key in keys])),
                element("KeyAttrDataFloat", Array("f", [n for key in keys for n in tangent(*key[3:])])),
                element("KeyAttrRefCount", Array("i", [1] * len(keys))),
                *more,
            ])
            self.connect(curve, node, "d|" + axis)

    def elements(self):
        template = element("PropertyTemplate", "FbxNode", children=[element("Properties70", children=self.template)])
        return [
            element("FBXHeaderExtension", children=[element("FBXHeaderVersion", 1003), element("FBXVersion", self.version)]),
            element("GlobalSettings", children=[element("Version", 1000),
                                                element("Properties70", children=list(self.settings))]),
            element("Definitions", children=[element("Version", 100),
                                             element("ObjectType", "Model", children=[template])]),
            element("Objects", children=self.objects),
            element("Connections", children=self.connections),
        ]

    def write(self, path, is_binary):
        if not is_binary:
            path.write_text("; FBX 7.5.0 project file\n" + "".join(map(text_element, self.elements())))
            return
        content = b"Kaydara FBX Binary  \0\x1a\0" + struct.pack("<I", 7500)
        for item in self.elements():
            content += binary_element(item, len(content))
        path.write_bytes(content + bytes(25) + bytes(160))


if __name__ == "__main__":
    import pathlib
    import sys

    made = Fbx()
    made.model("triangle", made.mesh([(1, 0, 0), (0, 2, 0), (0, 0, 3)]), [vector("Lcl Rotation", (0, 0, 90))])
    made.write(pathlib.Path(sys.argv[1]), is_binary=not sys.argv[1].endswith(".txt.fbx"))
