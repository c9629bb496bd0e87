"""Names of the package are imported with their first use, and are there as if they had been imported with it."""

import subprocess
import sys

import pytest
import vrn


def test_every_name_is_there_from_its_first_use_on():
    script = """
import vrn
assert "Scene" not in vars(vrn)
for name in vrn.__all__:
    assert name in dir(vrn)
    first = getattr(vrn, name)
    assert vars(vrn)[name] is first is getattr(vrn, name), name
"""
    subprocess.run([sys.executable, "-c", script], check=True)


def test_all_names_can_be_imported_at_once():
    names = {}
    exec("from vrn import *", names)
    assert set(vrn.__all__) <= set(names) and names["Scene"] is vrn.Scene


def test_other_names_are_errors():
    assert not hasattr(vrn, "importlib") and not hasattr(vrn, "_nothing")
    with pytest.raises(AttributeError, match="module 'vrn' has no attribute 'reads'"):
        vrn.reads  # noqa: B018
    with pytest.raises(ImportError):
        from vrn import reads  # noqa: F401


def test_first_uses_agree_in_many_threads():
    script = """
import concurrent.futures, threading
import vrn
barrier = threading.Barrier(8)
def first(_):
    barrier.wait()
    return vrn.Scene, vrn.Vec3
with concurrent.futures.ThreadPoolExecutor(8) as pool:
    assert len(set(pool.map(first, range(8)))) == 1
"""
    subprocess.run([sys.executable, "-c", script], check=True)
