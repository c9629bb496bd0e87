"""The logs of `vrn check --format sarif` match the schema of SARIF 2.1.0. npm installs the schema and a validator into
build/sarif; without Node or npm the test is skipped."""
import json
import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

VRN = os.environ["VRN"]
HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parents[1]
TOOLS = ROOT / "build" / "sarif"


def install():
    wanted = (HERE / "package.json").read_bytes()
    installed = TOOLS / "package.json"
    if installed.exists() and installed.read_bytes() == wanted and (TOOLS / "node_modules" / "ajv").exists():
        return
    TOOLS.mkdir(parents=True, exist_ok=True)
    installed.write_bytes(wanted)
    npm = ["npm", "install", "--no-package-lock", "--no-audit", "--no-fund", "--ignore-scripts",
           "--fetch-retries=1", "--fetch-timeout=30000"]
    result = subprocess.run(npm, cwd=TOOLS, capture_output=True, timeout=300)
    if result.returncode != 0:
        raise unittest.SkipTest("npm cannot fetch the schema: " + result.stderr.decode()[-500:])


class Schema(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        for tool in ("node", "npm"):
            if not shutil.which(tool):
                raise unittest.SkipTest(tool + " is not installed")
        install()

    def setUp(self):
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.folder = pathlib.Path(temporary.name)

    def validate(self, log):
        path = self.folder / "log.sarif"
        path.write_bytes(log)
        return subprocess.run(["node", HERE / "validate.js", path], capture_output=True, timeout=100,
                              env={**os.environ, "NODE_PATH": str(TOOLS / "node_modules")})

    def log(self, *arguments, stdin=b""):
        return subprocess.run([VRN, "check", "--format", "sarif", *arguments], input=stdin, stdout=subprocess.PIPE,
                              stderr=subprocess.DEVNULL, cwd=self.folder, timeout=100).stdout

    def test_logs_are_valid(self):
        (self.folder / "100% [a]\u00e4\n.vrn").write_text("t a; oops \x1b")
        (self.folder / "empty").mkdir()
        logs = {
            "nothing wrong": self.log(ROOT / "examples"),
            "every kind of message": self.log("-j2", ROOT / "tests/data"),
            "every kind of finding": self.log("--types", "builtin", "--pedantic", ROOT / "tests/cli/golden"),
            "odd names": self.log(".", "nowhere", "empty"),
            "a message with bytes of any kind": self.log("-", stdin=b't a; a.x = 1 "\xff\x00\x01{0}[a](b)";'),
            "no position": self.log("-", stdin=b"oops"),
        }
        for name, log in logs.items():
            with self.subTest(name):
                result = self.validate(log)
                self.assertEqual((result.returncode, result.stderr.decode()), (0, ""))
        self.assertGreater(len(json.loads(logs["every kind of message"])["runs"][0]["results"]), 50)

    def test_invalid_logs_are_rejected(self):
        log = json.loads(self.log("-", stdin=b"t a; oops"))
        log["runs"][0]["results"][0]["locations"][0]["physicalLocation"]["region"]["startColumn"] = 0
        self.assertIn("startColumn should be >= 1", self.validate(json.dumps(log).encode()).stderr.decode())
        del log["runs"][0]["tool"]
        self.assertIn("should have required property 'tool'", self.validate(json.dumps(log).encode()).stderr.decode())


if __name__ == "__main__":
    unittest.main()
