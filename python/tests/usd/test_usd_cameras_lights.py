"""Cameras and lights."""

import math

import numpy as np
import pytest
from conftest import Trip, attribute, close, equal
from pxr import Gf, Usd, UsdGeom, UsdLux


def view(stage: Usd.Stage, path: str) -> tuple[np.ndarray, np.ndarray, np.ndarray]:
    """Where a prim is, where it looks, and what is up."""
    matrix = np.array(UsdGeom.XformCache().GetLocalToWorldTransform(stage.GetPrimAtPath(path)))
    return matrix[3, :3], -matrix[2, :3], matrix[1, :3]


def test_perspective(trip: Trip) -> None:
    text = """
    camera c; c.fov = 28.5; c.aspect = 1.5; c.near = 0.2; c.far = 50.0;
    c.position = pos3(1 2 3); c.lookAt = pos3(1 2 -4);
    """
    stage = trip.write(text)
    camera = UsdGeom.Camera(stage.GetPrimAtPath("/Root/c")).GetCamera(Usd.TimeCode.Default())
    close(camera.GetFieldOfView(Gf.Camera.FOVVertical), 28.5)
    close(camera.aspectRatio, 1.5)
    close((camera.clippingRange.min, camera.clippingRange.max), (0.2, 50))
    close(camera.focusDistance, 7)
    place, direction, up = view(stage, "/Root/c")
    close(place, (1, 2, 3))
    close(direction, (0, 0, -1))
    close(up, (0, 1, 0))
    back = trip.round(text)["c"]
    assert (back["projection"], back["fov"], back["aspect"]) == ("perspective", 28.5, 1.5)
    assert (back["near"], back["far"]) == (0.2, 50.0)
    equal(back["position"], (1, 2, 3))


def test_orthographic(trip: Trip) -> None:
    text = 'camera c; c.projection = "orthographic"; c.size = vec2(2.5 1.5); c.clip = vec2(1 10);'
    stage = trip.write(text)
    camera = UsdGeom.Camera(stage.GetPrimAtPath("/Root/c")).GetCamera(Usd.TimeCode.Default())
    # The window is in units of the scene.
    window = camera.frustum.window
    close((window.min, window.max), ((-2.5, -1.5), (2.5, 1.5)))
    back = trip.round(text)["c"]
    equal(back["size"], (2.5, 1.5))
    assert (back["near"], back["far"]) == (1, 10)


@pytest.mark.parametrize("fov", [0.5, 1.0, 9.99, 28.5, 40, 45, 60, 90, 123.456, 179])
def test_fields_of_view_keep_their_digits(trip: Trip, fov: float) -> None:
    assert trip.round(f"camera c; c.fov = {float(fov)};")["c"]["fov"] == fov


@pytest.mark.parametrize(
    ("aim", "direction", "up"),
    [
        ("c.lookAt = pos3(2 2 3);", (1, 0, 0), (0, 1, 0)),
        ("c.lookAt = pos3(1 9 3);", (0, 1, 0), None),
        ("c.lookAt = pos3(1 2 9); c.up = vec3(1 0 0);", (0, 0, 1), (1, 0, 0)),
        ("transform t; t.translation = vec3(1 2 -5); c.target = t;", (0, 0, -1), (0, 1, 0)),
        ("", (0, 0, -1), (0, 1, 0)),
    ],
)
def test_where_cameras_look(trip: Trip, aim: str, direction: object, up: object) -> None:
    text = f"camera c; c.position = pos3(1 2 3); {aim}"
    for stage in (trip.write(text), trip.write(trip.round(text))):
        place, forward, upward = view(stage, "/Root/c")
        close(place, (1, 2, 3))
        close(forward, direction)
        if up:
            close(upward, up)


def test_cameras_of_nodes(trip: Trip) -> None:
    text = """
    transform t; t.translation = vec3(0 0 5);
    camera c; c.worldMatrix |= t.outMatrix;
    camera d; d.parent = t; d.position = pos3(1 0 0);
    light e; e.worldMatrix |= t.outMatrix;
    """
    stage = trip.write(text)
    close(view(stage, "/Root/t/d")[0], (1, 0, 5))
    back = trip.round(text)
    assert sorted(back) == ["c", "d", "e", "t"]
    assert back["c"].inputs["worldMatrix"].connection.node == back["t"]
    assert back["e"].inputs["worldMatrix"].connection.node == back["t"]
    assert back["d"]["parent"] == back["t"]


@pytest.mark.parametrize("kind", ["directional", "point", "spot"])
def test_lights(trip: Trip, kind: str) -> None:
    cone = "l.innerAngle = 20.0; l.outerAngle = 40.0;" if kind == "spot" else ""
    text = f"""
    light l; l.kind = "{kind}"; l.color = rgba(1 0.5 0.25 1); l.intensity = 2.5; l.castShadows = false;
    l.direction = vec3(0 -1 0); l.position = pos3(1 2 3); {cone}
    """
    stage = trip.write(text)
    prim = stage.GetPrimAtPath("/Root/l")
    assert prim.IsA(UsdLux.DistantLight if kind == "directional" else UsdLux.SphereLight)
    assert attribute(stage, "/Root/l.inputs:intensity") == (2.5 if kind == "directional" else 10)
    assert attribute(stage, "/Root/l.inputs:shadow:enable") is False
    close(view(stage, "/Root/l")[1], (0, -1, 0))
    back = trip.round(text)["l"]
    assert (back["kind"], back["intensity"], back["castShadows"]) == (kind, 2.5, False)
    equal(back["color"], (1, 0.5, 0.25, 1))
    close(back["direction"], (0, -1, 0))
    if kind == "spot":
        assert (back["innerAngle"], back["outerAngle"]) == (20, 40)


@pytest.mark.parametrize(
    ("text", "loss"),
    [
        ("camera c; c.fov = 0.0;", "fields of view of cameras outside 0 to 180 degrees"),
        ("camera c; c.fov = 40.123456789;", "digits beyond float precision"),
        ('camera c; c.projection = "fisheye";', "unknown projections of cameras"),
        ('camera c; c.projection = "orthographic"; c.size = vec2(0 1);', "sizes of cameras that are 0"),
        ("camera c; c.near = -1.0;", "negative near planes of cameras"),
        ("camera c; c.near = 2.0; c.far = 1.0;", "far planes of cameras that are not beyond the near plane"),
        ("camera c; c.target = t; c.lookAt = pos3(0 1 0); transform t;", "targets of cameras"),
        ("camera c; c.shutter = 1.0;", "input shutter of camera"),
        ("light l; l.target = t; l.direction = vec3(0 1 0); transform t;", "targets of lights"),
        ('light l; l.kind = "neon";', "unknown kinds of lights"),
        ("light l; l.range = 5.0;", "input range of light"),
        ("light l; l.color = rgba(1 1 0 0.5);", "further components of vectors and colours"),
        ("light l; l.color = vec4(1 1 0 0);", "further components of vectors and colours"),
        ("light l; l.intensity = -1.0;", "numbers out of range (clamped)"),
        ('light l; l.kind = "spot"; l.innerAngle = 50.0; l.outerAngle = 40.0;', "numbers out of range (clamped)"),
    ],
)
def test_losses_of_written_cameras_and_lights(trip: Trip, text: str, loss: str) -> None:
    trip.write(text, [loss])


# --- stages that others made


def test_a_camera_in_centimetres(trip: Trip, stage: Usd.Stage) -> None:
    UsdGeom.SetStageMetersPerUnit(stage, 0.01)
    camera = UsdGeom.Camera.Define(stage, "/c")
    camera.CreateFocalLengthAttr(35)
    camera.CreateHorizontalApertureAttr(36)
    camera.CreateVerticalApertureAttr(24)
    camera.CreateClippingRangeAttr((10, 1000))
    other = UsdGeom.Camera.Define(stage, "/o")
    other.CreateProjectionAttr("orthographic")
    other.CreateHorizontalApertureAttr(4000)
    other.CreateVerticalApertureAttr(2000)
    scene = trip.read(stage)
    expected = camera.GetCamera(Usd.TimeCode.Default()).GetFieldOfView(Gf.Camera.FOVVertical)
    close(scene["c"]["fov"], expected)
    assert (scene["c"]["aspect"], scene["c"]["near"], scene["c"]["far"]) == (1.5, 0.1, 10)
    equal(scene["o"]["size"], (2, 1))  # 4000 tenths of a centimetre are 4 m across


def test_animated_and_scaled_cameras_keep_a_transform(trip: Trip, stage: Usd.Stage) -> None:
    camera = UsdGeom.Camera.Define(stage, "/c")
    camera.AddTranslateOp().Set((1, 0, 0), 0)
    camera.GetOrderedXformOps()[0].Set((2, 0, 0), 24)
    scene = trip.read(stage)
    assert [node.type for node in scene.nodes()] == ["transform", "camera", "animation"]
    assert scene["c_2"].inputs["worldMatrix"].connection.node == scene["c"]


def test_intensities_become_lux_and_candela(trip: Trip, stage: Usd.Stage) -> None:
    sphere = UsdLux.SphereLight.Define(stage, "/s")
    sphere.CreateIntensityAttr(3)
    sphere.CreateExposureAttr(1)
    sphere.CreateRadiusAttr(2)
    sun = UsdLux.DistantLight.Define(stage, "/d")
    sun.CreateIntensityAttr(100)
    sun.CreateAngleAttr(60)
    scene = trip.read(stage, ["sizes of lights"])
    close(scene["s"]["intensity"], 3 * 2 * math.pi * 4)
    close(scene["d"]["intensity"], 100 * math.pi * 0.25)


def test_losses_of_read_cameras_and_lights(trip: Trip, stage: Usd.Stage) -> None:
    camera = UsdGeom.Camera.Define(stage, "/c")
    camera.CreateFStopAttr(2.8)
    camera.CreateClippingRangeAttr((5, 1))
    camera.CreateFocalLengthAttr(0)
    light = UsdLux.SphereLight.Define(stage, "/l")
    light.CreateTreatAsPointAttr(True)
    light.CreateDiffuseAttr(0.5)
    UsdLux.ShapingAPI.Apply(light.GetPrim()).CreateShapingConeAngleAttr(120)
    trip.read(
        stage,
        [
            "clipping ranges of cameras that are not in order",
            "cones of lights wider than 90 degrees",
            "focal lengths and apertures of cameras that are not positive",
            "property fStop of Camera",
            "property inputs:diffuse of SphereLight",
        ],
    )
