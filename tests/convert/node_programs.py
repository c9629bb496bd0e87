"""The programs of the tests that run in Node: each takes a line of JSON and answers with one.

NODE_MODULES is the folder of the npm packages."""
import atexit
import functools
import json
import os
import subprocess

from command import ROOT

MODULES = os.environ.get("NODE_MODULES", str(ROOT / "build" / "node_modules"))


@functools.cache
def program(script):
    """The process of a script, one for all tests."""
    process = subprocess.Popen(["node", script, MODULES], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
    atexit.register(process.communicate)
    return process


def ask(script, request):
    process = program(script)
    process.stdin.write(json.dumps(request) + "\n")
    process.stdin.flush()
    line = process.stdout.readline()
    if not line:
        raise RuntimeError(f"no answer from {script.name} (make build/node_modules fetches what it needs)")
    return json.loads(line)
