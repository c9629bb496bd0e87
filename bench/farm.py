#!/usr/bin/env python3
"""Measures work on many files, as ratios within this run.

usage: farm.py VRN FOLDER [--files N] [--rounds N] [FIGURE...]

Needs the Python package with its test requirements (python/requirements-farm.txt). Makes N small scenes in FOLDER (10,000
unless told otherwise). The exit status is 1 if a figure misses its requirement. The figures:

    embedded    batch() in threads of this process / vrn check -j2
    dask        the same on two workers of Dask / vrn check -j2
    again       CPU of a second run with a ledger, where nothing changed / of the first, files of 250 KB
    deaths      runs in which a worker is killed at a random moment: records, and time / that of a run without
    poison      three files that kill, never end, or need 30 GB: results and records
    manifest    memory of a driver of 1,000,000 files, and CPU of 1,000,000 / of 250,000 files
    conversion  1,000 files converted while the driver is killed before it can end: partial files
"""

from __future__ import annotations

import argparse
import json
import logging
import os
import random
import resource
import shutil
import signal
import statistics
import subprocess
import sys
import tempfile
import time
from collections.abc import Callable
from pathlib import Path

from table import Table

from vrn.farm import as_completed, batch, ops


DEATHS = 20
POISON = {"deadly.vrn": "killed", "endless.vrn": "timeout", "greedy.vrn": "killed"}


def make_scenes(folder: Path, count: int, meshes: tuple[int, int], seed: int) -> Path:
    """Scenes with so many small meshes each, the same ones every time."""
    if (folder / "made").exists():
        return folder
    draw = random.Random(seed)
    for number in range(count):
        path = folder / f"{number // 500:03}" / f"{number:07}.vrn"
        path.parent.mkdir(parents=True, exist_ok=True)
        meshes_here = draw.randint(*meshes)
        path.write_text("".join(_mesh(index, draw.random()) for index in range(meshes_here)))
    (folder / "made").touch()
    return folder


def _mesh(index: int, x: float) -> str:
    return f"mesh m{index}:\n  .points = vec3f[3] {{0 0 {x:.6f} 1 0 0 0 1 0}};\n  .triangles = vec3u[1] {{0 1 2}};\n"


def seconds(work: Callable[[], object]) -> float:
    start = time.perf_counter()
    work()
    return time.perf_counter() - start


def ratio_of(work: Callable[[], object], reference: Callable[[], object], rounds: int) -> float:
    """Best time of the work / best time of the reference, in alternating rounds."""
    work()  # what the first one imports
    times = [(seconds(work), seconds(reference)) for _ in range(rounds)]
    return min(first for first, _ in times) / min(second for _, second in times)


class Bench:
    def __init__(self, command: str, folder: Path, files: int, rounds: int) -> None:
        self._command = command
        self._folder = folder
        self._rounds = rounds
        self._table = Table(f"{files} files, best of {rounds} rounds")
        self._lib = make_scenes(folder / f"small{files}", files, (20, 160), seed=1)

    def _check_by_command(self) -> None:
        command = [self._command, "check", "--quiet", "--format", "json", "-j2", self._lib]
        subprocess.run(command, stdout=subprocess.DEVNULL, check=True)

    @property
    def has_missed(self) -> bool:
        return self._table.has_missed

    def embedded(self) -> None:
        ratio = ratio_of(lambda: batch(self._lib, ops.check, workers=2), self._check_by_command, self._rounds)
        self._table.row("threads of this process / vrn check -j2", ratio, 1.15, 1.05)

    def dask(self) -> None:
        with cluster() as client:
            ratio = ratio_of(lambda: batch(self._lib, ops.check, executor=client), self._check_by_command, self._rounds)
        self._table.row("two workers of Dask / vrn check -j2", ratio, 1.3, 1.1)

    def again(self) -> None:
        lib = make_scenes(self._folder / "large", 400, (2400, 2800), seed=2)
        ledger = fresh(self._folder / "again.ledger")

        def cpu() -> float:
            start = time.process_time()
            batch(lib, ops.check, ledger=ledger)
            return time.process_time() - start

        first, *others = (cpu() for _ in range(4))
        self._table.row("a run where nothing changed / the first, CPU", 100 * min(others) / first, 5, 2, "%")

    def deaths(self) -> None:
        reference = fresh(self._folder / "reference.ledger")
        ratios, whole = [], 0
        with cluster() as client:
            undisturbed = seconds(lambda: batch(self._lib, ops.check, executor=client, ledger=reference))
        for round_number in range(DEATHS):
            ledger = fresh(self._folder / "deaths.ledger")
            delay = random.Random(round_number).uniform(0.05, undisturbed)
            with cluster() as client:
                nanny = client.cluster.workers[round_number % 2]
                killer = subprocess.Popen(["sh", "-c", f"sleep {delay}; kill -9 {nanny.pid}"])
                ratios.append(seconds(lambda: batch(self._lib, ops.check, executor=client, ledger=ledger)) / undisturbed)
                killer.wait()
            whole += essence(ledger) == essence(reference)
        self._table.row(f"complete ledgers of {DEATHS} with a dead worker", whole, DEATHS, DEATHS, is_least=True)
        self._table.row("time of such a run / of one without a death", statistics.median(ratios))

    def poison(self) -> None:
        names = [self._lib / name for name in POISON]
        for path in names:
            path.write_text("t a;\n")
        try:
            with cluster() as client:
                run = batch(self._lib, toxic, executor=client, timeout=5, memory=4 << 30)
        finally:
            for path in names:
                path.unlink()
        found = {os.path.basename(problem.path): problem.status.value for problem in run.report.problems}
        right = sum(found.pop(name, None) == status for name, status in POISON.items())
        self._table.row("files that kill, never end, need 30 GB: found", right, 3, 3, is_least=True)
        self._table.row("others that they take along", len(found), 0, 0)

    def manifest(self) -> None:
        quarter, whole = (json.loads(run_self(f"--driver={count}")) for count in (250_000, 1_000_000))
        self._table.row("memory of a driver of 1,000,000 files", whole[1], 300, 150, "MiB")
        self._table.row("CPU of 1,000,000 files / of 250,000", whole[0] / quarter[0], 5, 4.4)

    def conversion(self) -> None:
        lib = make_scenes(self._folder / "medium", 1000, (200, 400), seed=3)
        out = self._folder / "out"
        shutil.rmtree(out, ignore_errors=True)
        ledger = fresh(self._folder / "conversion.ledger")
        arguments = ["convert", f"{out}/{{stem}}.glb", str(lib), "--ledger", str(ledger), "--executor", "processes", "-q"]
        command = [sys.executable, "-m", "vrn.farm.command", *arguments]
        limit = 0.6 * seconds(lambda: subprocess.run(command, check=True))
        shutil.rmtree(out)
        ledger.unlink()
        kills = done = 0
        while not ended_in_time(command, limit):
            kills += 1
            before, done = done, ledger.stat().st_size if ledger.exists() else 0
            if done == before:
                sys.exit(f"conversion: nothing is recorded in {limit:.1f} s; this machine is too busy for this figure")
        names = {path.name for path in lib.rglob("*.vrn")}
        made = list(out.iterdir())
        whole = sum(int.from_bytes(path.read_bytes()[8:12], "little") == path.stat().st_size for path in made)
        self._table.row("deaths of a driver of 1,000 conversions", kills, 1, 2, is_least=True)
        self._table.row("files that it did not make", len(names) - whole, 0, 0)
        self._table.row("files that are partial or left over", len(made) - whole, 0, 0)


def toxic(path: str) -> object:
    """Does what the name of the file demands, or checks the file."""
    name = os.path.basename(path)
    if name == "deadly.vrn":
        os.kill(os.getpid(), signal.SIGSEGV)
    if name == "endless.vrn":
        time.sleep(1e6)
    if name == "greedy.vrn":
        return len(bytearray(30 << 30))
    return ops.check(path)


def cluster():  # type: ignore[no-untyped-def]
    """A client of a scheduler with two workers of one thread each."""
    from distributed import Client

    quiet = logging.CRITICAL  # deaths of workers are what is measured
    return Client(n_workers=2, threads_per_worker=1, dashboard_address=None, set_as_default=False, silence_logs=quiet)


def essence(ledger: Path) -> list[tuple[str, str, str]]:
    lines = [json.loads(line) for line in ledger.read_text().splitlines()[1:]]
    return sorted((line["path"], line["key"], line["status"]) for line in lines)


def fresh(path: Path) -> Path:
    path.unlink(missing_ok=True)
    return path


def ended_in_time(command: list[str], limit: float) -> bool:
    """Whether the program ended, with success, before it was killed after so many seconds."""
    process = subprocess.Popen(command)
    try:
        if code := process.wait(limit):
            raise subprocess.CalledProcessError(code, command)
        return True
    except subprocess.TimeoutExpired:
        process.kill()
        process.wait()
        return False


def run_self(*arguments: str) -> str:
    return subprocess.run([sys.executable, __file__, *arguments], stdout=subprocess.PIPE, text=True, check=True).stdout


def drive(count: int) -> None:
    """Prints the CPU seconds and the MiB that a driver takes for so many paths, with work that does nothing."""
    paths = (f"/library/of/a/studio/show/sequence{number % 997:04}/shot/scene{number:09}.vrn" for number in range(count))
    with tempfile.TemporaryDirectory() as folder:
        start = time.process_time()
        for _ in as_completed(paths, len, ledger=os.path.join(folder, "ledger")):
            pass
        taken = time.process_time() - start
    print(json.dumps([taken, resource.getrusage(resource.RUSAGE_SELF).ru_maxrss / 1024]))


def main() -> int:
    figures = ["embedded", "dask", "again", "deaths", "poison", "manifest", "conversion"]
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("command", metavar="VRN")
    parser.add_argument("folder", type=Path)
    parser.add_argument("figures", nargs="*", default=figures)
    parser.add_argument("--files", type=int, default=10_000)
    parser.add_argument("--rounds", type=int, default=7)
    options = parser.parse_intermixed_args()
    if unknown := set(options.figures) - set(figures):
        parser.error(f"unknown figure {min(unknown)}; known are {', '.join(figures)}")
    bench = Bench(options.command, options.folder, options.files, options.rounds)
    for figure in options.figures:
        getattr(bench, figure)()
    return int(bench.has_missed)


if __name__ == "__main__":
    if len(sys.argv) == 2 and sys.argv[1].startswith("--driver="):
        drive(int(sys.argv[1].partition("=")[2]))
    else:
        sys.exit(main())
