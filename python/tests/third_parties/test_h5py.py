"""Views are stored in HDF5 as they are, and what is read from there can be assigned."""

from __future__ import annotations

import h5py
import numpy as np
import vrn


def test_a_view_becomes_a_dataset_and_comes_back(scene, tmp_path):
    node = scene["tetrahedron"]
    with h5py.File(tmp_path / "scene.h5", "w") as file:
        for name, values in node.items():
            file.create_dataset(name, data=values)
    again = vrn.Scene().add("mesh", "tetrahedron")
    with h5py.File(tmp_path / "scene.h5") as file:
        for name in node:
            assert file[name].dtype == node[name].dtype
            np.testing.assert_array_equal(file[name], node[name])
            again[name] = file[name][()]
    assert not vrn.diff(scene, again.scene)
