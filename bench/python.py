#!/usr/bin/env python3
"""Measures the Python package, in random order and in separate processes, and prints a table.

usage: python.py BUILD-FOLDER DATA-FOLDER [--rounds N] [FIGURE...]

Needs the package, usd-core and lxml. A figure is a run, or the ratio of two: the best of all rounds each, because what
disturbs a run makes it worse. FIGURE is a part of a title; without any, all are measured. The exit status is 1 if a figure
misses its requirement.
"""

from __future__ import annotations

import argparse
import contextlib
import ctypes
import multiprocessing
import os
import pickle
import random
import resource
import signal
import statistics
import subprocess
import sys
import threading
import time
from collections.abc import Callable
from pathlib import Path
from typing import Any, NamedTuple

from table import Table


class Figure(NamedTuple):
    """A run, or two whose ratio counts; the requirement and the goal, if there are."""

    title: str
    run: str
    other: str = ""
    must: float | None = None
    goal: float | None = None
    unit: str = ""
    is_least: bool = False


FIGURES = [
    Figure("reading mesh / in C++", "read mesh", "cpp mesh", 1.05, 1.02),
    Figure("reading graph / in C++", "read graph", "cpp graph", 1.05, 1.02),
    Figure("opening mesh with OpenUSD / reading", "usd mesh", "open mesh", 30, 50, is_least=True),
    Figure("opening graph with OpenUSD / reading", "usd graph", "open graph", 8, 10, is_least=True),
    Figure("memory of 1,000 views of 1 GB", "views", "", 1, 0.1, "MiB"),
    Figure("memory to adopt 1 GB and write it", "adopt", "", 4, 1, "MiB"),
    Figure("visiting all inputs of graph / lxml", "visit", "lxml", 1.5, 1),
    Figure("a column of graph / a loop", "column", "loop", 0.1, 0.03),
    Figure("bytes of buffers in a pickle", "pickle", "", 0, 0, "bytes"),
    Figure("two threads reading / two processes", "threads", "processes", 1.15, 1.05),
    Figure("speed of a thread while another reads", "counting thread", "", 80, 95, "%", is_least=True),
    Figure("the same while a process reads", "counting process", unit="%", is_least=True),
    Figure("importing vrn.read / nothing, CPU", "import vrn", "import sys", 1.3, 1.15),
    Figure("read after Ctrl-C", "interrupt", "", 8, 1, "MiB"),
]
GIGABYTE = 1 << 30
DATA = Path()  # the folder with what bench_generate writes


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", type=Path)
    parser.add_argument("data", type=Path)
    parser.add_argument("figures", nargs="*", default=[""], metavar="FIGURE")
    parser.add_argument("--rounds", type=int, default=7)
    options = parser.parse_intermixed_args()
    figures = [figure for figure in FIGURES if any(part in figure.title for part in options.figures)]
    if not figures:
        parser.error("no title has such a part")
    make_data(options.data)
    runs = sorted({run for figure in figures for run in figure[1:3] if run})
    measured: dict[str, list[float]] = {run: [] for run in runs}
    for number in range(options.rounds):
        for run in random.sample(runs, len(runs)):
            measured[run].append(seconds_in_cpp(run, options) if run.startswith("cpp") else in_own_process(run, options))
        print(f"round {number + 1} of {options.rounds}", file=sys.stderr)
    return print_table(figures, measured, options.rounds)


def print_table(figures: list[Figure], measured: dict[str, list[float]], rounds: int) -> int:
    table = Table(f"best of {rounds} rounds")
    for figure in figures:
        best = max if figure.is_least and not figure.other else min
        value = best(measured[figure.run]) / (min(measured[figure.other]) if figure.other else 1)
        table.row(figure.title, value, *figure[3:])
    return int(table.has_missed)


def seconds_in_cpp(run: str, options: argparse.Namespace) -> float:
    program = [options.build / "bench_reader", "file", options.data / f"{run.split()[1]}.vrn"]
    return float(subprocess.run(program, capture_output=True, text=True, check=True).stdout.split()[3])


def in_own_process(run: str, options: argparse.Namespace) -> float:
    program = [sys.executable, __file__, "--run", run, options.data]
    return float(subprocess.run(program, stdout=subprocess.PIPE, text=True, check=True).stdout)


# The runs. Each is called once in a process of its own, and returns what it measured.


def read(name: str) -> float:
    """Seconds of a read into new memory, as bench_reader measures them."""
    import vrn

    libc = ctypes.CDLL(None)

    def again() -> float:
        taken = seconds(lambda: vrn.read(DATA / f"{name}.vrn"))
        libc.malloc_trim(0)
        return taken

    again()
    return statistics.median(again() for _ in range(3))


def open_with_vrn(name: str) -> float:
    import vrn

    return min(seconds(lambda: vrn.read(DATA / f"{name}.vrn")) for _ in range(2))


def open_with_usd(name: str) -> float:
    from pxr import Sdf

    return min(seconds(lambda: Sdf.Layer.OpenAsAnonymous(str(DATA / f"{name}.usda"))) for _ in range(2))


def views() -> float:
    scene = scene_of_a_gigabyte()
    scene["a"]["values"]  # what the first one imports
    before = memory("VmRSS")
    kept = [scene["a"]["values"] for _ in range(1000)]
    assert len({view.ctypes.data for view in kept}) == 1
    return memory("VmRSS") - before


def adopt() -> float:
    import numpy
    import vrn

    class Sink:
        def write(self, data: bytes) -> int:
            return len(data)

    scene = vrn.Scene()
    vrn.loads("a b;").write(Sink())  # what the first one imports
    array = numpy.ones(GIGABYTE // 4, numpy.float32)
    reset_peak()
    before = memory("VmRSS")
    scene.add("data", "a").add("values", "float[]", vrn.adopt(array))
    scene.write(Sink())
    return memory("VmHWM") - before


def scene_of_a_gigabyte() -> Any:
    import numpy
    import vrn

    scene = vrn.Scene()
    scene.add("data", "a").add("values", "float[]", vrn.adopt(numpy.ones(GIGABYTE // 4, numpy.float32)))
    return scene


def visit() -> float:
    import vrn

    scene = vrn.read(DATA / "graph.vrn")

    def all_inputs() -> None:
        for node in scene.nodes():
            for input in node.walk():
                input.name, input.type, input.value

    return min(seconds(all_inputs) for _ in range(2))


def visit_with_lxml() -> float:
    from lxml import etree

    root = etree.parse(DATA / "graph.xml").getroot()

    def all_inputs() -> None:
        for node in root:
            for input in node.iterdescendants():
                input.tag, input.get("type"), input.text

    return min(seconds(all_inputs) for _ in range(2))


def column() -> float:
    import vrn

    scene = vrn.read(DATA / "graph.vrn")
    return min(seconds(lambda: scene.column("*.intensity")) for _ in range(30))


def loop() -> float:
    import numpy
    import vrn

    scene = vrn.read(DATA / "graph.vrn")

    def made() -> object:
        return numpy.array([node["intensity"] for node in scene.nodes() if "intensity" in node])

    return min(seconds(made) for _ in range(5))


def pickled() -> float:
    """The bytes of a stream that depend on the content of buffers."""
    import numpy
    import vrn

    def stream(count: int) -> int:
        scene = vrn.Scene()
        scene.add("data", "a").add("values", "float[]", numpy.ones(count, numpy.float32))
        buffers: list[pickle.PickleBuffer] = []
        return len(pickle.dumps(scene, protocol=5, buffer_callback=buffers.append))

    return stream(9_000_000) - stream(1_000_000)


def two_threads() -> float:
    def work() -> None:
        threads = [threading.Thread(target=read_graph) for _ in range(2)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()

    work()  # what the first one imports
    return seconds(work)


def two_processes() -> float:
    with ReadingProcess() as first, ReadingProcess() as second:

        def work() -> None:
            first.start()
            second.start()
            first.wait()
            second.wait()

        return seconds(work)


def read_graph() -> None:
    import vrn

    vrn.read(DATA / "graph.vrn")


class ReadingProcess:
    """A process that has read graph once, and does so again when it is told to."""

    def __enter__(self) -> ReadingProcess:
        self._end, there = multiprocessing.Pipe()
        self._process = multiprocessing.get_context("fork").Process(target=self._run, args=(there,))
        self._process.start()
        self.wait()
        return self

    def __exit__(self, *_: object) -> None:
        self._process.join()

    def start(self) -> None:
        self._end.send("go")

    def wait(self) -> None:
        self._end.recv()

    def is_done(self) -> bool:
        return self._end.poll()

    @staticmethod
    def _run(end: Any) -> None:
        read_graph()
        end.send("ready")
        end.recv()
        read_graph()
        end.send("done")


def counting(where: str) -> float:
    """Percent of its speed that a thread keeps which counts while graph is read."""
    import vrn

    vrn.loads("")
    end = time.perf_counter() + 0.5
    alone = counted_until(lambda: time.perf_counter() > end)
    return 100 * (beside_a_thread() if where == "thread" else beside_a_process()) / alone


def beside_a_thread() -> float:
    thread = threading.Thread(target=read_graph)
    thread.start()
    return counted_until(lambda: not thread.is_alive())


def beside_a_process() -> float:
    with ReadingProcess() as process:
        process.start()
        return counted_until(process.is_done)


def counted_until(is_end: Callable[[], bool]) -> float:
    """Counts in a second."""
    count, start = 0, time.perf_counter()
    while not is_end():
        for _ in range(10_000):
            count += 1
    return count / (time.perf_counter() - start)


def importing(module: str) -> float:
    """CPU seconds of an interpreter that imports a module, of vrn what reads: its names come with their first use."""
    statement = "from vrn import read" if module == "vrn" else f"import {module}"

    def cpu() -> float:
        before = resource.getrusage(resource.RUSAGE_CHILDREN)
        subprocess.run([sys.executable, "-c", statement], check=True)
        after = resource.getrusage(resource.RUSAGE_CHILDREN)
        return after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime

    cpu()
    return min(cpu() for _ in range(20))


def interrupt() -> float:
    """MiB that are still read when Ctrl-C comes after a random part of the file."""
    import vrn

    def bytes_read() -> int:
        return int(Path("/proc/self/io").read_text().split()[1])

    at_signal = 0

    def send(wanted: int) -> None:
        nonlocal at_signal
        while (at_signal := bytes_read()) < wanted:
            pass
        os.kill(os.getpid(), signal.SIGINT)

    size = (DATA / "mesh.vrn").stat().st_size
    most = 0
    for _ in range(5):
        thread = threading.Thread(target=send, args=(bytes_read() + int(random.uniform(0, 0.5) * size),))
        thread.start()
        with contextlib.suppress(KeyboardInterrupt):
            vrn.read(DATA / "mesh.vrn")
            raise SystemExit("the read was not interrupted")
        most = max(most, bytes_read() - at_signal)
        thread.join()
    return most / (1 << 20)


RUNS: dict[str, Callable[..., float]] = {
    "read": read,
    "open": open_with_vrn,
    "usd": open_with_usd,
    "views": views,
    "adopt": adopt,
    "visit": visit,
    "lxml": visit_with_lxml,
    "column": column,
    "loop": loop,
    "pickle": pickled,
    "threads": two_threads,
    "processes": two_processes,
    "counting": counting,
    "import": importing,
    "interrupt": interrupt,
}


# What runs are made of.


def seconds(work: Callable[[], object]) -> float:
    start = time.perf_counter()
    kept = work()  # freed after the measurement
    taken = time.perf_counter() - start
    del kept
    return taken


def memory(name: str) -> float:
    """A line of the status of this process, in MiB: VmRSS is the resident memory, VmHWM its peak."""
    with open("/proc/self/status") as status:
        return next(int(line.split()[1]) / 1024 for line in status if line.startswith(name + ":"))


def reset_peak() -> None:
    Path("/proc/self/clear_refs").write_text("5")


# The same scenes in other formats.


def make_data(folder: Path) -> None:
    """Writes mesh and graph as layers of OpenUSD, and graph as XML."""
    import vrn

    for name, make in ("mesh.usda", mesh_as_usd), ("graph.usda", graph_as_usd), ("graph.xml", graph_as_xml):
        source, made = folder / Path(name).with_suffix(".vrn"), folder / name
        if not made.exists() or made.stat().st_mtime < source.stat().st_mtime:
            made.write_text(make(vrn.read(source)))


def mesh_as_usd(scene: Any) -> str:
    grid = scene["grid"]
    points = ", ".join(f"({x:.6f}, {y:.6f}, {z:.6f})" for x, y, z in grid["points"].tolist())
    indices = ", ".join(map(str, grid["indices"].tolist()))
    return f'#usda 1.0\n\ndef Mesh "grid"\n{{\n    int[] faceVertexIndices = [{indices}]\n    point3f[] points = [{points}]\n}}\n'


def graph_as_usd(scene: Any) -> str:
    types = {"Rgba": "color4f", "Vec3": "double3", "Real": "double", "Int": "int64", "String": "string"}

    def attribute(input: Any) -> str:
        if input.connection:
            target = input.connection
            return f"token {input.name}.connect = </{target.node.name}.{target.name}>"
        value = f'"{input.value}"' if input.type == "String" else tuple(input.value) if is_tuple(input) else input.value
        return f"{types[input.type]} {input.name} = {value}"

    pieces = ["#usda 1.0\n\n"]
    for node in scene.nodes():
        lines = "".join(f"    {attribute(input)}\n" for input in node.walk())
        pieces.append(f'def {node.type} "{node.name}"\n{{\n{lines}}}\n\n')
    return "".join(pieces)


def graph_as_xml(scene: Any) -> str:
    def element(input: Any) -> str:
        target = input.connection
        value = f"{target.node.name}.{target.name}" if target else input.value
        text = " ".join(map(str, value)) if is_tuple(input) else value
        return f'<{input.name} type="{input.type}">{text}</{input.name}>'

    pieces = ["<scene>\n"]
    for node in scene.nodes():
        pieces.append(f'<{node.type} name="{node.name}">{"".join(map(element, node.walk()))}</{node.type}>\n')
    return "".join([*pieces, "</scene>\n"])


def is_tuple(input: Any) -> bool:
    return isinstance(input.value, tuple)


if __name__ == "__main__":
    if sys.argv[1:2] == ["--run"]:
        DATA = Path(sys.argv[3])
        kind, *names = sys.argv[2].split()
        print(RUNS[kind](*names))
    else:
        sys.exit(main())
