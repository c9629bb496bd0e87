"""trimesh measures a mesh as geometry says, handed over or read from each format that it is converted to."""

from __future__ import annotations

import numpy as np
import pytest
import trimesh
import vrn


def check(mesh, measures):
    assert mesh.is_watertight
    np.testing.assert_allclose([mesh.area, mesh.volume], [measures.area, measures.volume], rtol=1e-6)
    np.testing.assert_allclose(mesh.bounds, [measures.lowest, measures.highest], atol=1e-6)


def test_a_mesh_that_is_handed_over(scene, measures):
    node = scene["tetrahedron"]
    check(trimesh.Trimesh(node["points"], node["triangles"], process=False), measures)


@pytest.mark.parametrize("suffix", ["glb", "gltf", "obj", "ply", "stl"])
def test_a_mesh_that_is_converted(scene, measures, tmp_path, suffix):
    path = tmp_path / f"tetrahedron.{suffix}"
    vrn.convert(scene, path)
    check(trimesh.load_mesh(path), measures)
