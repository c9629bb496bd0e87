"""Reading takes time linear in the input. Compares instruction counts at n and 4n instead of times.

WORKLOAD is the program that reads; without arguments it lists its workloads."""
import os
import pathlib
import re
import subprocess
import tempfile
import unittest
from concurrent.futures import ThreadPoolExecutor

VRN = os.environ["VRN"]
WORKLOAD = os.environ["WORKLOAD"]
N = 2000
TOLERANCE = 1.15  # hash tables and vectors grow in steps, and larger numbers have more digits
# Large blocks come from the system and are zero. Without this, malloc() reuses them later, and calloc() clears them.
NEW_PAGES = {"MALLOC_MMAP_THRESHOLD_": "131072"}
READ = "vor::velmo_sdk::impl::parseString"


def counts_of_all_workloads(n):
    """The instructions of reading each workload, in one process: starting callgrind takes longer than most of them."""
    with tempfile.TemporaryDirectory() as folder:
        profile = pathlib.Path(folder) / "profile"
        command = ["valgrind", "--tool=callgrind", f"--callgrind-out-file={profile}", f"--dump-before={READ}*",
                   f"--toggle-collect={READ}(*", WORKLOAD, "all", str(n)]
        subprocess.run(command, capture_output=True, check=True, env=os.environ | NEW_PAGES)
        # A profile for each reading: the first one ends where the first reading begins, the last has no number.
        numbered = sorted(profile.parent.glob("profile.*"), key=lambda path: int(path.suffix[1:]))
        return [int(re.search(r"^totals: (\d+)", path.read_text(), re.MULTILINE).group(1))
                for path in [*numbered[1:], profile]]


def instructions(*program, **more):
    command = ["valgrind", "--tool=cachegrind", "--cache-sim=no", "--cachegrind-out-file=/dev/null", *program]
    result = subprocess.run(command, capture_output=True, text=True, **more)
    return int(re.search(r"I\s+refs:\s+([\d,]+)", result.stderr).group(1).replace(",", ""))


class Cost(unittest.TestCase):
    def test_is_linear(self):
        names = subprocess.run([WORKLOAD], capture_output=True, text=True, check=True).stdout.split()
        self.assertGreaterEqual(len(names), 15)
        with ThreadPoolExecutor(os.cpu_count()) as pool:
            one, four = pool.map(counts_of_all_workloads, (N, 4 * N))
        self.assertEqual((len(one), len(four)), (len(names), len(names)))
        for name, at_n, at_4n in zip(names, one, four):
            with self.subTest(name):
                print(f"{name}: 4 times the text, {at_4n / at_n:.2f} times the instructions")
                self.assertGreater(at_n, 10 * N)
                self.assertLess(at_4n / at_n, 4 * TOLERANCE)

    def test_diagnostics_of_one_line_are_shown_in_linear_time(self):
        counts = []
        for n in (0, 500, 2000):
            text = "t n; n.b = true;" + " n.b = 5;" * n
            counts.append(instructions(VRN, "check", "-", input=text))
        ratio = (counts[2] - counts[0]) / (counts[1] - counts[0])
        print(f"diagnostics of one line: 4 times the text, {ratio:.2f} times the instructions")
        self.assertLess(ratio, 4 * TOLERANCE)


if __name__ == "__main__":
    unittest.main()
