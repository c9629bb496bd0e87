"""Threads take turns at a scene: many read, or one changes it."""

import io
import threading

import numpy as np
import pytest
import vrn


def run(*functions):
    """Runs the functions at the same time and raises what one of them raises."""
    raised = []

    def guarded(function):
        try:
            function()
        except BaseException as error:
            raised.append(error)

    threads = [threading.Thread(target=guarded, args=(function,)) for function in functions]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    if raised:
        raise raised[0]


@pytest.fixture
def numbers() -> tuple[vrn.Scene, str]:
    """A scene, and a text that makes all its nodes again."""
    count = 2000
    text = "".join(f"remove n{i}; t n{i}; n{i}.x = {i};" for i in range(count))
    return vrn.loads("".join(f"t n{i}; n{i}.x = {i};" for i in range(count))), text


def test_references_are_dropped_while_another_thread_reads_a_text(numbers):
    scene, text = numbers
    is_done = threading.Event()

    def read():
        while not is_done.is_set():
            scene.apply(text)

    def drop():
        try:
            for _ in range(20):
                nodes = scene.nodes()
                del nodes
        finally:
            is_done.set()

    run(read, drop)
    assert scene.column("*.x").sum() == sum(range(2000))


def test_readers_do_not_keep_changes_waiting(numbers):
    scene, text = numbers
    is_done = threading.Event()

    def write():
        while not is_done.is_set():
            scene.dumps()

    def change():
        try:
            for _ in range(5):
                scene.apply(text)
        finally:
            is_done.set()

    run(write, write, write, change)


def test_threads_take_arrays_at_once():
    scene = vrn.loads("t a; a.p = float[4] {1 2 3 4};")
    start = threading.Barrier(8)

    def take():
        start.wait()
        for _ in range(200):
            assert scene["a"]["p"].tolist() == [1, 2, 3, 4]

    run(*[take] * 8)


def test_views_are_released_on_other_threads():
    node = vrn.Scene().add("t", "a")
    node["p"] = np.zeros((1000, 3), np.float32)
    views = [node["p"] for _ in range(100)]

    def replace():
        node["p"] = np.ones((1, 3), np.float32)

    run(views.clear, replace)
    assert node["p"].tolist() == [[1, 1, 1]]


def test_large_scenes_are_destroyed_on_any_thread():
    text = "".join(f"t n{i}; n{i}.x = {i};" for i in range(2000))

    def drop():
        for _ in range(5):
            scene = vrn.loads(text)
            scene["n0"]["p"] = vrn.adopt(np.ones(1000))
            kept = scene["n0"]["p"]
            node = scene["n1999"]
            del scene
            assert node.scene["n0"]["p"].sum() == kept.sum() == 1000
            del node
            assert kept.sum() == 1000

    run(drop, drop, drop)


class Stream(io.RawIOBase):
    """A stream that calls something with each piece."""

    def __init__(self, call):
        self._call = call
        self.text = b""

    def writable(self):
        return True

    def write(self, piece):
        self._call()
        self.text += bytes(piece)
        return len(piece)


def test_a_stream_may_read_the_scene_that_is_written(scene):
    stream = Stream(lambda: scene.dumps())
    scene.write(stream)
    assert stream.text == scene.dumps().encode()


@pytest.mark.parametrize(
    "change", [lambda scene: scene.apply("t b;"), lambda scene: scene.add("t", "b")], ids=["apply", "add"]
)
def test_a_stream_cannot_change_the_scene_that_is_written(scene, change):
    before = scene.dumps()
    with pytest.raises(RuntimeError, match="while this thread writes"):
        scene.write(Stream(lambda: change(scene)))
    assert scene.dumps() == before
