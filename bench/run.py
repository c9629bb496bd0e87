#!/usr/bin/env python3
"""Runs the reader and the programs that it is compared with, in random order and in separate processes, and prints ratios.

usage: run.py BUILD-FOLDER DATA-FOLDER [ROUNDS]

Ratios are computed within a round, so that slow changes of the machine's speed cancel out. The table has the medians over
the rounds, the requirement (must) and the goal."""
import random
import statistics
import subprocess
import sys

PROGRAMS = {"string": "bench_reader", "file": "bench_reader", "write": "bench_reader", "numbers": "bench_roof",
            "payload": "bench_roof", "read": "bench_roof", "plain": "bench_json", "tuned": "bench_json",
            "graph": "bench_json", "links": "bench_scale",
            **dict.fromkeys(("vrn", "obj", "ply", "stl"), "bench_convert")}


def over(mine, other):
    """The ratio of two runs: how to compute it, and the runs."""
    return lambda seconds: seconds[mine] / seconds[other], (mine, other)


def beyond(file, string, read):
    """The extra time of a file over the same text in memory, relative to reading its bytes."""
    return lambda seconds: (seconds[file] - seconds[string]) / seconds[read], (file, string, read)


# Title, how to compute, runs, must, goal.
ROWS = [
    ("mesh / roof", *over("string mesh.vrn", "numbers mesh.vrn"), 1.00, 0.70),
    ("mesh with AVX2 / roof", *over("string-avx2 mesh.vrn", "numbers mesh.vrn"), 1.00, 0.85),
    ("mesh without vectors / roof", *over("string-baseline mesh.vrn", "numbers mesh.vrn"), None, None),
    ("mesh, wrapped lines / mesh", *over("string mesh_wrap.vrn", "string mesh.vrn"), 1.10, 1.05),
    ("mesh, shortest reals / roof", *over("string mesh_rt.vrn", "numbers mesh_rt.vrn"), 1.00, 0.75),
    ("mesh, hostile lengths / roof", *over("string mesh_mix.vrn", "numbers mesh_mix.vrn"), 0.80, 0.55),
    ("doubles of 17 digits / roof", *over("string doubles.vrn", "numbers doubles.vrn"), 1.00, 0.85),
    ("8-bit integers / roof", *over("string int8.vrn", "numbers int8.vrn"), 1.00, 0.85),
    ("16-bit integers / roof", *over("string int16.vrn", "numbers int16.vrn"), 1.00, 0.85),
    ("64-bit integers / roof", *over("string int64.vrn", "numbers int64.vrn"), 1.00, 0.85),
    ("rgba8 / roof", *over("string rgba8.vrn", "numbers rgba8.vrn"), 1.00, 0.85),
    ("payload / digits and libdeflate", *over("string payload.vrn", "payload payload.vrn"), 1.30, 0.85),
    ("mesh from a file, beyond memory / read", *beyond("file mesh.vrn", "string mesh.vrn", "read mesh.vrn"), 1.10, 1.00),
    ("mesh / JSON as users write it", *over("string mesh.vrn", "plain mesh.json"), 0.70, 0.50),
    ("mesh / JSON tuned", *over("string mesh.vrn", "tuned mesh.json"), 1.00, 0.85),
    ("graph / JSON and a plain scene", *over("string graph.vrn", "graph graph.json"), 0.70, 0.35),
    ("graph of 1 MB / JSON and a plain scene", *over("string graph_1mb.vrn", "graph graph_1mb.json"), 1.50, 1.00),
    ("writing mesh / reading", *over("write mesh.vrn", "string mesh.vrn"), 1.00, None),
    ("writing shortest reals / reading", *over("write mesh_rt.vrn", "string mesh_rt.vrn"), 1.00, None),
    ("writing doubles / reading", *over("write doubles.vrn", "string doubles.vrn"), 1.00, None),
    ("writing 8-bit integers / reading", *over("write int8.vrn", "string int8.vrn"), 1.00, None),
    ("writing 16-bit integers / reading", *over("write int16.vrn", "string int16.vrn"), None, None),
    ("writing 64-bit integers / reading", *over("write int64.vrn", "string int64.vrn"), 1.00, None),
    ("writing graph / reading", *over("write graph.vrn", "string graph.vrn"), 1.00, None),
    ("mesh to an OBJ file / to a VRN file", *over("obj mesh.vrn", "vrn mesh.vrn"), 2.00, None),
    ("mesh to a PLY file / to a VRN file", *over("ply mesh.vrn", "vrn mesh.vrn"), 1.00, None),
    ("mesh to an STL file / to a VRN file", *over("stl mesh.vrn", "vrn mesh.vrn"), 1.00, None),
    ("a link of 1,000,000 / of 10,000", *over("links 1000000", "links 10000"), 1.50, 1.20),
]
# The same ratio for each set of instructions: title, mode, file, and what it is compared with.
SETS = ["", "-avx2", "-vector128", "-baseline"]
LISTS = {"mesh": "mesh.vrn", "shortest reals": "mesh_rt.vrn", "doubles": "doubles.vrn", "8-bit integers": "int8.vrn",
         "16-bit integers": "int16.vrn", "64-bit integers": "int64.vrn"}
SET_ROWS = [*((f"{name} / roof", "string", file, "numbers") for name, file in LISTS.items()),
            *((f"writing {name} / reading", "write", file, "string") for name, file in LISTS.items())]
MEMORY = [
    ("memory beyond text and values, mesh", "string mesh.vrn", 34.3, 8, 4),
    ("the same from a file", "file mesh.vrn", 34.3, 68 + 8, 2),
    ("memory beyond the text, graph", "string graph.vrn", 0, None, None),
    ("memory to write an OBJ file, mesh", "obj mesh.vrn", 0, 64, None),
    ("memory to write a PLY file, mesh", "ply mesh.vrn", 0, 64, None),
    ("memory to write an STL file, mesh", "stl mesh.vrn", 0, 64, None),
]


def command(run, build, data):
    mode, file = run.split()
    argument = file if mode == "links" else f"{data}/{file}"
    return [f"{build}/{PROGRAMS[mode.split('-')[0]]}", mode, argument]


def measured(program):
    """The output of a benchmark: name, file, cold and warm seconds, MiB."""
    return subprocess.run(program, capture_output=True, text=True, check=True).stdout.split()


def with_set(mode, file, instruction_set):
    return f"{mode}{instruction_set if mode in ('string', 'write') else ''} {file}"


def line(title, value, must, goal, unit=""):
    bounds = [f"{bound:.2f}" if bound else "-" for bound in (must, goal)]
    print(f"{title:40} {value:8.2f} {bounds[0]:>7} {bounds[1]:>7} {unit}")


def main():
    build, data = sys.argv[1:3]
    rounds = int(sys.argv[3]) if len(sys.argv) > 3 else 7
    runs = sorted({run for row in ROWS for run in row[2]} | {
        with_set(mode, file, s) for _, mine, file, other in SET_ROWS for mode in (mine, other) for s in SETS})
    warm, memory = [], {run: [] for run in runs}
    for i in range(rounds):
        warm.append({})
        for run in random.sample(runs, len(runs)):
            words = measured(command(run, build, data))
            warm[-1][run] = float(words[3])
            memory[run].append(float(words[4]))
        print(f"round {i + 1} of {rounds}", file=sys.stderr)
    print(f"{'medians of ' + str(rounds) + ' rounds':40} {'ratio':>8} {'must':>7} {'goal':>7}")
    for title, ratio, _, must, goal in ROWS:
        line(title, statistics.median(ratio(seconds) for seconds in warm), must, goal)
    for title, run, values, must, goal in MEMORY:
        line(title, statistics.median(memory[run]) - values, must, goal, "MiB")
    line("memory of an input with a Real", float(measured([f"{build}/bench_scale", "input"])[2]), 160, 96, "bytes")
    print(f"\n{'with each set of instructions':40} {'all':>8} {'AVX2':>8} {'128 bits':>8} {'none':>8}")
    for title, mode, file, other in SET_ROWS:
        ratios = [statistics.median(seconds[with_set(mode, file, s)] / seconds[with_set(other, file, s)]
                                    for seconds in warm) for s in SETS]
        print(f"{title:40}", *(f"{ratio:8.2f}" for ratio in ratios))


if __name__ == "__main__":
    main()
