"""Tests what vrn convert does with the images of textures: --embed, --copy-textures and --extract-textures."""
import pathlib
import struct
import sys
import unittest
import zlib

sys.path += [str(pathlib.Path(__file__).resolve().parents[1] / "cli"), str(pathlib.Path(__file__).resolve().parent)]

from geometry import inputs_of
from importing import Importing
import json


def png(*color):
    """An image with one pixel."""
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
    header = struct.pack(">IIBBBBB", 1, 1, 8, 2, 0, 0, 0)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(b"\0" + bytes(color)))
            + chunk(b"IEND", b""))


RED, GREEN = png(255, 0, 0), png(0, 255, 0)
MAPS = {"t": "baseColorMap", "u": "normalMap", "v": "occlusionMap", "w": "emission.map"}


class Images(Importing):
    def setUp(self):
        super().setUp()
        for folder in ("in/a", "in/b", "out"):
            (self.folder / folder).mkdir(parents=True)
        self.file("in/a/w.png", RED)
        self.file("in/b/w.png", GREEN)
        self.file("in/secret.png", "no image")

    def scene(self, **files):
        lines = ["mesh m; m.points = vec3f[3] {0 0 0 1 0 0 0 1 0}; m.uvsets[*].coords = vec2f[3] {0 0 1 0 0 1};",
                 "m.material |= r.outColor; material r;"]
        for name, file in files.items():
            lines.append(f'texture {name}; {name}.file = "{file}"; r.{MAPS[name]} |= {name}.outColor;')
        self.file("in/s.vrn", "\n".join(lines))

    def convert(self, *arguments):
        result = self.run_here("convert", *arguments)
        self.assertEqual(result.returncode, 0, result.stderr)
        return [line.split("lost: ")[1] for line in result.stderr.decode().splitlines()]

    def textures(self, file):
        nodes = json.loads(self.run_here("dump", file).stdout)["nodes"]
        return {n["name"]: inputs_of(n) for n in nodes if n["type"] == "texture"}

    def test_embedded_images_survive_without_their_files(self):
        self.scene(t="a\\\\w.png", u="b/w.png")
        self.assertEqual(self.convert("--embed", "in/s.vrn", "out/s.glb"), [])
        (self.folder / "in/a/w.png").unlink()
        self.convert("out/s.glb", "out/s.vrn")
        for name, image in (("t", RED), ("u", GREEN)):
            texture = self.textures("out/s.vrn")[name]
            self.assertEqual(bytes(texture["encoded"]["data"]), image)
            self.assertNotIn("file", texture)

    def test_embedding_replaces_values_that_are_no_images(self):
        self.scene(t="a/w.png")
        with (self.folder / "in/s.vrn").open("a") as file:
            file.write("\nt.encoded = 5;\n")
        self.assertEqual(self.convert("--embed", "in/s.vrn", "out/s.vrn"), [])
        self.assertEqual(bytes(self.textures("out/s.vrn")["t"]["encoded"]["data"]), RED)

    def test_copies_are_found_after_a_move(self):
        self.scene(t="a/w.png", u="b/w.png", v="a/w.png")
        self.assertEqual(self.convert("--copy-textures", "out/maps", "in/s.vrn", "out/s.gltf"), [])
        self.assertEqual({p.name: p.read_bytes() for p in (self.folder / "out/maps").iterdir()},
                         {"w.png": RED, "w_1.png": GREEN})
        (self.folder / "out").rename(self.folder / "moved")
        uris = [image["uri"] for image in json.loads((self.folder / "moved/s.gltf").read_text())["images"]]
        self.assertEqual(sorted(set(uris)), ["maps/w.png", "maps/w_1.png"])

    def test_extracted_images_become_files(self):
        self.scene(t="a/w.png", u="b/w.png")
        self.convert("--embed", "in/s.vrn", "out/s.vrn")
        self.assertEqual(self.convert("--extract-textures", "maps", "out/s.vrn", "out/t.vrn"), [])
        for name, image in (("t", RED), ("u", GREEN)):
            texture = self.textures("out/t.vrn")[name]
            self.assertEqual(texture["file"]["value"], f"../maps/{name}.png")
            self.assertNotIn("encoded", texture)
            self.assertEqual((self.folder / "out" / texture["file"]["value"]).read_bytes(), image)

    def test_other_files_are_not_taken(self):
        self.scene(t="secret.png", u="missing.png")
        for option in (["--embed"], ["--copy-textures", "out/maps"]):
            with self.subTest(option):
                self.assertEqual(self.convert(*option, "in/s.vrn", "out/s.glb"),
                                 ["image files that are not PNG, JPEG, WebP or KTX 2 (left where they are): 1 (t)",
                                  "image files that cannot be read: 1 (u)"])
                self.assertFalse((self.folder / "out/maps").exists())
                self.assertNotIn(b"no image", (self.folder / "out/s.glb").read_bytes())

    def test_options_that_exclude_each_other(self):
        self.scene(t="a/w.png")
        for option in ("--copy-textures", "--extract-textures"):
            result = self.run_here("convert", "--embed", option, "maps", "in/s.vrn", "out/s.glb")
            self.assertEqual(result.returncode, 2)
            self.assertIn(b"--embed excludes", result.stderr)

    def test_nothing_is_copied_if_the_scene_is_refused(self):
        self.scene(t="a/w.png")
        result = self.run_here("convert", "--strict", "--copy-textures", "out/maps", "in/s.vrn", "out/s.stl")
        self.assertEqual(result.returncode, 1)
        self.assertFalse((self.folder / "out/maps").exists())


if __name__ == "__main__":
    unittest.main()
