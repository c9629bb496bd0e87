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
}
TOLERANCE = 0.03


def instructions(name):
    command = ["valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null",
               "--toggle-collect=vor::velmo_sdk::impl::parseString(*", WORKLOAD, name, str(SIZES[name])]
    errors = subprocess.run(command, capture_output=True, text=True, check=True).stderr
    return int(re.search(r"Collected : (\d+)", errors).group(1))


@unittest.skipUnless("avx2" in pathlib.Path("/proc/cpuinfo").read_text(), "the counts are those with AVX2")
class Instructions(unittest.TestCase):
    def test_are_as_many_as_before(self):
        with ThreadPoolExecutor(os.cpu_count()) as pool:
            counts = dict(zip(SIZES, pool.map(instructions, SIZES)))
        if os.environ.get("VRN_UPDATE_COUNTS"):
            COUNTS.write_text(json.dumps(counts, indent=2) + "\n")
        before = json.loads(COUNTS.read_text())
        self.assertEqual(before.keys(), counts.keys())
        for name, count in counts.items():
            with self.subTest(name):
                print(f"{name}: {count} instructions, {count / before[name]:.3f} times the expected count")
                self.assertGreater(count, 100000, "counts only the reader")
                self.assertAlmostEqual(count / before[name], 1, delta=TOLERANCE, msg="to accept the change, see the docstring of this file")


if __name__ == "__main__":
    unittest.main()
