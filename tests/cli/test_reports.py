"""The report formats of `vrn check` for other programs."""
import json
import os
import re
import subprocess
import unittest

from command import Folder, ROOT, VRN, run

WORDS = "t a; a.b = true;\na.b = 1.5; a.f = float[2] {1};\nu a;\n"


class Github(Folder):
    def lines(self, *arguments, **more):
        return run("check", "--format", "github", *arguments, cwd=self.folder, **more).stdout.decode().splitlines()

    def test_one_command_a_diagnostic(self):
        self.file("a.vrn", WORDS)
        self.assertEqual(
            self.lines("./a.vrn"),
            [
                "::error file=a.vrn,line=2,col=10,title=vrn check::TYPE ERROR (2,10): expected Bool @ a.b but found Real.",
                "::warning file=a.vrn,line=2,col=22,title=vrn check::"
                "Too few elements (1) for float[2] buffer, remainder set to zero.",
                "::warning file=a.vrn,line=3,col=4,title=vrn check::node a is declared as a u but stays a t [check]",
            ],
        )

    def test_escapes_are_those_of_a_workflow(self):
        name = "100%,a:b\r\n\x1b.vrn"
        self.file(name, 't a; a.x = 1 "50%: a,b\n\x1b";')
        line, = self.lines(name)
        self.assertTrue(line.startswith("::error file=100%25%2Ca%3Ab%0D%0A\\x1B.vrn,line=2,col="), line)
        self.assertTrue(line.endswith("found '\"50%25: a,b%0A\\x1B\"'."), line)

    def test_position_unknown_is_left_out(self):
        self.assertEqual(self.lines("-", stdin=b"oops = 5;")[0][:44], "::error file=<stdin>,title=vrn check::PARSE ")

    def test_unreadable_file_is_an_error(self):
        self.assertEqual(self.lines("nowhere"), ["::error file=nowhere,title=vrn check::No such file or directory"])


class Sarif(Folder):
    def run_of(self, *arguments, **more):
        log = json.loads(run("check", "--format", "sarif", *arguments, cwd=self.folder, **more).stdout)
        self.assertEqual(log["version"], "2.1.0")
        self.assertEqual(len(log["runs"]), 1)
        return log["runs"][0]

    def test_results(self):
        self.file("a b.vrn", WORDS)
        self.file("c.vrn", "t c; c.x = y;")
        found = self.run_of("./a b.vrn", "c.vrn")
        self.assertEqual(
            [(r["ruleId"], r["level"], r["message"]["text"]) for r in found["results"]],
            [
                ("typeError", "error", "TYPE ERROR (2,10): expected Bool @ a.b but found Real."),
                ("tooFewElements", "warning", "Too few elements (1) for float[2] buffer, remainder set to zero."),
                ("declaredAsOther", "note", "node a is declared as a u but stays a t"),
                ("cannotAssignNode", "warning", "Cannot assign nonexistent node y to c.x."),
            ],
        )
        places = [r["locations"][0]["physicalLocation"] for r in found["results"]]
        self.assertEqual(places[0]["artifactLocation"], {"uri": "a%20b.vrn"})
        self.assertEqual(places[3]["artifactLocation"], {"uri": "c.vrn"})
        self.assertEqual([tuple(p["region"].values()) for p in places], [(2, 10), (2, 22), (3, 4), (1, 12)])
        driver = found["tool"]["driver"]
        self.assertEqual(driver["name"], "vrn")
        self.assertEqual("vrn " + driver["version"] + "\n", run("--version").stdout.decode())
        self.assertEqual({rule["id"] for rule in driver["rules"]}, {r["ruleId"] for r in found["results"]})

    def test_every_kind_of_message_is_a_rule(self):
        found = self.run_of(ROOT / "tests/data")
        rules = {rule["id"]: rule["shortDescription"]["text"] for rule in found["tool"]["driver"]["rules"]}
        headings = (ROOT / "docs/messages.md").read_text()
        self.assertGreater(len(rules), 20)
        for rule, text in rules.items():
            self.assertIn(f"### `{text}`\n", headings if rule != "unreadablePayload" else "### `%s`\n", rule)
        self.assertFalse({"error", "warning", "note"} & set(rules), "all of the reader's messages have a name")
        self.assertEqual(set(rules), {result["ruleId"] for result in found["results"]})

    def test_columns_count_characters(self):
        text = 't a; a.s = "\u00e4\u00f6\u20ac\U0001f600" 5;'.encode()
        results = self.run_of("-", stdin=text)["results"]
        region = results[0]["locations"][0]["physicalLocation"]["region"]
        self.assertEqual(region, {"startLine": 1, "startColumn": text.decode().index("5") + 1})
        many = b't a; # ' + "\u20ac".encode() * 500 + b"\n" + b'a.s = "' + "\u20ac".encode() * 500 + b'" 5;'
        region = self.run_of("-", stdin=many)["results"][0]["locations"][0]["physicalLocation"]["region"]
        self.assertEqual(region, {"startLine": 2, "startColumn": 510})

    def test_places_without_a_line_or_a_name(self):
        place = self.run_of("-", stdin=b"oops = 5;")["results"][0]["locations"][0]["physicalLocation"]
        self.assertEqual(place, {"artifactLocation": {"description": {"text": "standard input"}}})

    def test_paths_are_uris(self):
        path = self.file("\u00e4:100%#?.vrn", "oops")
        odd = os.fsencode(self.folder) + b"/\xff.vrn"
        with open(odd, "wb") as file:
            file.write(b"oops")
        uris = [r["locations"][0]["physicalLocation"]["artifactLocation"]["uri"]
                for r in self.run_of(path.name, path, os.fsdecode(odd))["results"]]
        self.assertEqual(uris[0], "%C3%A4%3A100%25%23%3F.vrn")
        self.assertEqual(uris[1], path.as_uri())
        self.assertTrue(uris[2].startswith("file:///") and uris[2].endswith("/%FF.vrn"), uris[2])

    def test_unreadable_files_are_notifications(self):
        self.file("a.vrn", "t a;")
        invocation, = self.run_of("a.vrn")["invocations"]
        self.assertEqual(invocation, {"executionSuccessful": True, "toolExecutionNotifications": []})
        found = self.run_of("nowhere", "a.vrn")
        invocation, = found["invocations"]
        self.assertFalse(invocation["executionSuccessful"])
        notification = invocation["toolExecutionNotifications"][0]
        self.assertEqual(notification["message"]["text"], "No such file or directory")
        self.assertEqual(notification["locations"][0]["physicalLocation"], {"artifactLocation": {"uri": "nowhere"}})


class Page(unittest.TestCase):
    def test_sessions_are_what_the_command_prints(self):
        sessions = re.findall(r"^```console\n\$ vrn ([^\n]*)\n(.*?)^```$", (ROOT / "docs/check.md").read_text(), re.M | re.S)
        sessions = [(arguments, shown) for arguments, shown in sessions if " | " not in arguments] # not of a shell
        self.assertEqual(len(sessions), 3)
        for arguments, shown in sessions:
            self.assertEqual(run(*arguments.split(), cwd=ROOT).stdout.decode(), shown)

    def test_hook_checks_what_is_staged(self):
        hook = re.search(r"^```sh\n(.*?)^```$", (ROOT / "docs/check.md").read_text(), re.M | re.S).group(1)
        # The output of git.
        staged = "printf '%s\\0' examples/spot.vrn tests/data/reject/008_no_value.vrn"
        hook = re.sub(r"git diff .*?(?= \|)", lambda _: staged, hook).replace("vrn check", VRN + " check")
        result = subprocess.run(hook, shell=True, cwd=ROOT, capture_output=True)
        self.assertNotEqual(result.returncode, 0)
        self.assertIn(b"2 files checked: 1 error", result.stdout)


if __name__ == "__main__":
    unittest.main()
