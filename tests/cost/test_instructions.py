"""Reading small fixed inputs takes the same number of instructions as before, within 3 %.

callgrind counts inside the reader only. After a change that is meant to move a count, update the expected counts by
running this test with VRN_UPDATE_COUNTS=1."""
import json
import os
import pathlib
import re
import subprocess
import unittest
from concurrent.futures import ThreadPoolExecutor

WORKLOAD = os.environ["WORKLOAD"]
COUNTS = pathlib.Path(__file__).with_name("instructions.json")
SIZES = {
    "statements_of_all_kinds": 300,
    "declarations": 2000,
    "appended_elements": 2000,
    "links_of_many_nodes": 700,
    "one_list_of_reals": 20000,
    "one_list": 20000,
    "graph": 2000,
    "nested_paths": 700,
}
# Statements of one unit of the workloads with a budget per statement.
STATEMENTS = {"graph": 7, "graph_of_current_nodes": 7, "graph_with_comments": 9}
BUDGET = 1000
TOLERANCE = 0.03


def instructions(name, size, function="parseString", *options):
    command = ["valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null",
               f"--toggle-collect=vor::velmo_sdk::impl::{function}(*", WORKLOAD, name, str(size), *options]
    errors = subprocess.run(command, capture_output=True, text=True, check=True).stderr
    return int(re.search(r"Collected : (\d+)", errors).group(1))


@unittest.skipUnless("avx2" in pathlib.Path("/proc/cpuinfo").read_text(), "the counts are those with AVX2")
class Instructions(unittest.TestCase):
    def test_are_as_many_as_before(self):
        with ThreadPoolExecutor(os.cpu_count()) as pool:
            counts = dict(zip(SIZES, pool.map(instructions, SIZES, SIZES.values())))
        if os.environ.get("VRN_UPDATE_COUNTS"):
            COUNTS.write_text(json.dumps(counts, indent=2) + "\n")
        before = json.loads(COUNTS.read_text())
        self.assertEqual(before.keys(), counts.keys())
        for name, count in counts.items():
            with self.subTest(name):
                print(f"{name}: {count} instructions, {count / before[name]:.3f} times the expected count")
                self.assertGreater(count, 100000, "counts only the reader")
                self.assertAlmostEqual(count / before[name], 1, delta=TOLERANCE, msg="to accept the change, see the docstring of this file")

    # Small statements are most of a scene. The fast path for them costs as much from a file, from memory that is read in
    # blocks, with comments between the statements, and with paths of the current node.
    def test_of_a_small_statement_are_few(self):
        def of_a_statement(name, *options):
            return instructions(name, 2000, *options) / 2000 / STATEMENTS[name]
        runs = [(name,) for name in STATEMENTS] + [("graph", "parseVrn", source) for source in ("file", "memory")]
        with ThreadPoolExecutor(os.cpu_count()) as pool:
            counts = dict(zip(runs, pool.map(lambda run: of_a_statement(*run), runs)))
        graph = counts["graph",]
        for run, count in counts.items():
            with self.subTest(run):
                print(f"{' '.join(run)}: {count:.0f} instructions per statement")
                self.assertLess(count, BUDGET)
                self.assertLess(count, graph * (1.05 if "parseVrn" in run else 1.1))


if __name__ == "__main__":
    unittest.main()
