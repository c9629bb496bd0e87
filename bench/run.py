#!/usr/bin/env python3
"""Runs the reader and its rivals in turn, each run a process of its own, and prints how they compare.

usage: run.py BUILD-FOLDER DATA-FOLDER [ROUNDS]

Only ratios within a round are compared, so that a machine that changes its speed from minute to minute
does no harm; the table has their medians."""
import random
import statistics
import subprocess
import sys

# What is compared: (title, numerator, denominator, must, goal); a run is (program, arguments...).
ROWS = [
    ("mesh, from memory / roof", "string mesh.vrn", "roof mesh.vrn", 1.00, 0.85),
    ("mesh_wrap / mesh", "string mesh_wrap.vrn", "string mesh.vrn", 1.10, 1.05),
    ("mesh_rt / its roof", "string mesh_rt.vrn", "roof mesh_rt.vrn", 1.00, 0.75),
    ("mesh_mix / its roof", "string mesh_mix.vrn", "roof mesh_mix.vrn", 0.80, 0.55),
    ("mesh, from a file / from memory", "file mesh.vrn", "string mesh.vrn", None, None),
    ("mesh / JSON as users write it", "string mesh.vrn", "plain mesh.json", 0.70, 0.50),
    ("mesh / JSON tuned", "string mesh.vrn", "tuned mesh.json", 1.00, 0.85),
    ("graph / JSON and a plain scene", "string graph.vrn", "graph graph.json", 1.15, 0.95),
]
PROGRAMS = {"string": "bench_reader", "file": "bench_reader", "roof": "bench_roof"}


def command(run, build, data):
    mode, file = run.split()
    program = f"{build}/{PROGRAMS.get(mode, 'bench_json')}"
    return [program, *([] if mode == "roof" else [mode]), f"{data}/{file}"]


def main():
    build, data = sys.argv[1:3]
    rounds = int(sys.argv[3]) if len(sys.argv) > 3 else 7
    runs = sorted({run for row in ROWS for run in row[1:3]})
    warm, memory = {run: [] for run in runs}, {run: [] for run in runs}
    for i in range(rounds):
        for run in random.sample(runs, len(runs)):
            line = subprocess.run(command(run, build, data), capture_output=True, text=True, check=True).stdout.split()
            warm[run].append(float(line[3]))
            memory[run].append(float(line[4]))
        print(f"round {i + 1} of {rounds}", file=sys.stderr)
    print(f"{'medians of ' + str(rounds) + ' rounds':36} {'ratio':>6} {'must':>6} {'goal':>6}")
    for title, mine, other, must, goal in ROWS:
        ratio = statistics.median(a / b for a, b in zip(warm[mine], warm[other]))
        shown = [f"{bound:.2f}" if bound else "-" for bound in (must, goal)]
        print(f"{title:36} {ratio:6.2f} {shown[0]:>6} {shown[1]:>6}")
    for run in ("string mesh.vrn", "file mesh.vrn", "string graph.vrn"):
        print(f"memory beyond the text, {run}: {statistics.median(memory[run]):.0f} MiB")


if __name__ == "__main__":
    main()
