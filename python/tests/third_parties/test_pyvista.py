"""pyvista, and VTK below it, take points and faces; the points are not copied."""

from __future__ import annotations

import numpy as np
import pytest
import pyvista
import vrn


def check(mesh, measures):
    np.testing.assert_allclose([mesh.area, mesh.volume], [measures.area, measures.volume], rtol=1e-6)
    np.testing.assert_allclose(mesh.bounds, np.ravel([measures.lowest, measures.highest], order="F"))


def test_a_mesh_that_is_handed_over(scene, measures):
    node = scene["tetrahedron"]
    mesh = pyvista.PolyData.from_regular_faces(node["points"], node["triangles"].astype(np.int64))
    check(mesh, measures)
    assert mesh.points.ctypes.data == node["points"].ctypes.data
    np.testing.assert_array_equal(mesh.regular_faces, node["triangles"])


def test_points_outlive_their_scene(measures):
    scene = vrn.loads("mesh m; m.points = vec3f[3] {1 2 3, 4 5 6, 7 8 9};")
    mesh = pyvista.PolyData(scene["m"]["points"])
    del scene["m"], scene
    np.testing.assert_array_equal(mesh.points, np.arange(1, 10, dtype=np.float32).reshape(3, 3))


@pytest.mark.parametrize("suffix", ["glb", "obj", "ply", "stl"])
def test_a_mesh_that_is_converted(scene, measures, tmp_path, suffix):
    path = tmp_path / f"tetrahedron.{suffix}"
    vrn.convert(scene, path)
    mesh = pyvista.read(path)
    check(mesh.combine().extract_surface(algorithm="dataset_surface") if suffix == "glb" else mesh, measures)
