"""Runs as jobs of render farms, in templates of Open Job Description.

The job has a task for each part of the files, each with a ledger of its own, and a step after them that sums up. A task
that a farm repeats goes on from its ledger.
"""

from __future__ import annotations

from collections.abc import Sequence
from typing import Any

_COMMANDS = ("check", "convert", "call")  # that have a ledger


def openjd(
    arguments: Sequence[str], *, ledger: str, parts: int, name: str = "vrn-batch", command: Sequence[str] = ("vrn-batch",)
) -> dict[str, Any]:
    """A template, to be written as JSON, of the run that `vrn-batch ARGUMENTS` makes.

    `ledger` is the common start of the names of the ledgers, in a folder that all machines see; `command` is how they
    start `vrn-batch`. Errors in the files do not fail tasks: the step that sums up reports them. Raises ValueError for
    arguments that cannot be those of a task.
    """
    if parts < 1:
        raise ValueError(f"parts: 1 or more, not {parts}")
    if not arguments or arguments[0] not in _COMMANDS:
        raise ValueError(f"arguments: the first of a task is one of {', '.join(_COMMANDS)}")
    for text in *arguments, ledger, name:
        if "{{" in text:
            raise ValueError(f"{text!r} holds {{{{, which starts a parameter in a template")
    # Right after the command, because all that follows a `--` is a path.
    task = [arguments[0], "--part", "{{Task.Param.Part}}/" + str(parts), "--exit-zero"]
    task += ["--ledger", ledger + ".{{Task.Param.Part}}", *arguments[1:]]
    summary = ["summary", *(f"{ledger}.{number}" for number in range(1, parts + 1))]
    part = {"name": "Part", "type": "INT", "range": f"1-{parts}"}
    return {
        "specificationVersion": "jobtemplate-2023-09",
        "name": name,
        "steps": [
            _step("Work", [*command, *task]) | {"parameterSpace": {"taskParameterDefinitions": [part]}},
            _step("Summary", [*command, *summary]) | {"dependencies": [{"dependsOn": "Work"}]},
        ],
    }


def _step(name: str, command: Sequence[str]) -> dict[str, Any]:
    action = {"command": command[0], "args": list(command[1:])}
    return {"name": name, "script": {"actions": {"onRun": action}}}
