"""Reading takes time linear in the input. Compares instruction counts at n and 4n instead of times.

WORKLOAD is the program that reads; without arguments it lists its workloads."""
import os
import re
import subprocess
import unittest
from concurrent.futures import ThreadPoolExecutor

VRN = os.environ["VRN"]
WORKLOAD = os.environ["WORKLOAD"]
N = 4000
TOLERANCE = 1.15  # hash tables and vectors grow in steps, and larger numbers have more digits


def instructions(*program, **more):
    command = ["valgrind", "--tool=cachegrind", "--cache-sim=no", "--cachegrind-out-file=/dev/null", *program]
    result = subprocess.run(command, capture_output=True, text=True, **more)
    return int(re.search(r"I\s+refs:\s+([\d,]+)", result.stderr).group(1).replace(",", ""))


def growth(name):
    empty, one, four = (instructions(WORKLOAD, name, str(n), check=True) for n in (0, N, 4 * N))
    return (four - empty) / (one - empty)


class Cost(unittest.TestCase):
    def test_is_linear(self):
        names = subprocess.run([WORKLOAD], capture_output=True, text=True, check=True).stdout.split()
        self.assertGreaterEqual(len(names), 15)
        with ThreadPoolExecutor(os.cpu_count()) as pool:
            for name, ratio in zip(names, pool.map(growth, names)):
                with self.subTest(name):
                    print(f"{name}: 4 times the text, {ratio:.2f} times the instructions")
                    self.assertLess(ratio, 4 * TOLERANCE)


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
