"""Reads OBJ, PLY and STL files, as far as vrn convert writes them, independently of it."""
import struct


class Obj:
    """A file with the elements of all objects: points, coordinates, normals; faces as (material, corners)."""

    def __init__(self, path):
        self.points, self.coordinates, self.normals, self.colors = [], [], [], []
        self.faces, self.lines, self.singles, self.names, self.groups = [], [], [], [], []
        self.library, material = None, None
        for line in path.read_text().splitlines():
            keyword, _, rest = line.partition(" ")
            words = rest.split()
            if keyword == "v":
                numbers = [float(word) for word in words]
                self.points.append(tuple(numbers[:3]))
                self.colors.append(tuple(numbers[3:]))
            elif keyword == "vt":
                self.coordinates.append(tuple(map(float, words)))
            elif keyword == "vn":
                self.normals.append(tuple(map(float, words)))
            elif keyword == "f":
                self.faces.append((material, [self.corner(word) for word in words]))
            elif keyword == "l":
                self.lines.append([self.corner(word)[0] for word in words])
            elif keyword == "p":
                self.singles += [self.corner(word)[0] for word in words]
            elif keyword == "usemtl":
                material = rest
            elif keyword == "mtllib":
                self.library = rest
            elif keyword == "o":
                self.names.append(rest)
            elif keyword == "g":
                self.groups.append(rest)
            else:
                raise ValueError(line)

    @staticmethod
    def corner(word):
        """The indices of point, coordinates and normal, from 0; None for those that are missing."""
        indices = [int(part) - 1 if part else None for part in word.split("/")]
        return tuple(indices + [None] * (3 - len(indices)))

    def triangles(self):
        return [[self.points[corner[0]] for corner in corners] for _, corners in self.faces]


def materials(path):
    """The lines of each material of an MTL file, by keyword."""
    found = {}
    for line in path.read_text().splitlines():
        keyword, _, rest = line.partition(" ")
        if keyword == "newmtl":
            found[rest] = {}
        else:
            list(found.values())[-1][keyword] = rest
    return found


class Ply:
    """The elements of a file by name; each is a list of dictionaries by property."""

    CODES = {"float": "f", "uchar": "B", "int": "i", "uint": "I"}

    def __init__(self, path):
        header, _, self.data = path.read_bytes().partition(b"end_header\n")
        lines = [line.split() for line in header.decode().splitlines()]
        assert lines[0] == ["ply"]
        self.format = lines[1][1]
        self.words = self.data.split() if self.format == "ascii" else None
        self.offset = 0
        elements = []
        for line in lines[2:]:
            if line[0] == "element":
                elements.append((line[1], int(line[2]), []))
            else:
                elements[-1][2].append(line[1:])
        self.elements = {name: [self.record(properties) for _ in range(count)] for name, count, properties in elements}
        assert self.offset == len(self.words if self.words is not None else self.data)

    def record(self, properties):
        return {p[-1]: [self.number(p[2]) for _ in range(self.number(p[1]))] if p[0] == "list" else self.number(p[0])
                for p in properties}

    def number(self, kind):
        if self.words is not None:
            self.offset += 1
            word = self.words[self.offset - 1]
            return struct.unpack("<f", struct.pack("<f", float(word)))[0] if kind == "float" else int(word)
        code = ("<" if self.format == "binary_little_endian" else ">") + self.CODES[kind]
        value = struct.unpack_from(code, self.data, self.offset)[0]
        self.offset += struct.calcsize(code)
        return value

    def points(self):
        return [(v["x"], v["y"], v["z"]) for v in self.elements["vertex"]]


def stl(path):
    """Facets as (normal, corners) of a binary or text file."""
    content = path.read_bytes()
    if content.startswith(b"solid "):
        facets = []
        for line in content.decode().splitlines():
            words = line.split()
            if words[0] == "facet":
                facets.append((tuple(map(float, words[2:])), []))
            elif words[0] == "vertex":
                facets[-1][1].append(tuple(map(float, words[1:])))
        return facets
    count = struct.unpack_from("<I", content, 80)[0]
    assert len(content) == 84 + 50 * count
    facets = []
    for i in range(count):
        numbers = struct.unpack_from("<12f", content, 84 + 50 * i)
        facets.append((numbers[:3], [numbers[k : k + 3] for k in (3, 6, 9)]))
    return facets
