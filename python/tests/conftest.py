"""What all tests of the package share."""

import pathlib

import pytest
import vrn

ROOT = pathlib.Path(__file__).resolve().parents[2]

BOX = """# VRN 1
mesh box;
box.points = vec3f[8] {0 0 0, 1 0 0, 1 1 0, 0 1 0, 0 0 1, 1 0 1, 1 1 1, 0 1 1};
box.faces = int32[4] {0 1 2 3};
box.size = 2.5;
box.count = 3;
box.visible = true;
box.label = "a box";
box.centre = vec3(1 2 3);
box.tint = rgba(1 0.5 0 1);
box.uvsets[0].name = "uv0";
box.uvsets[0].coords = vec2f[2] {0 0, 1 1};
box.weights[0] = 1.0; box.weights[1] = 2.0; box.weights[2] = 3.0;
paint red;
box.material |= red.outColor;
camera cam;
cam.target = box;
cam.fov = 45.0;
"""


@pytest.fixture
def scene() -> vrn.Scene:
    return vrn.loads(BOX)
