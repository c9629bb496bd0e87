"""A driver to be killed: `driving.py LEDGER FUNCTION [SCHEDULER_FILE]` runs a function over `lib`."""

from __future__ import annotations

import sys

import functions
from vrn.farm import as_completed


def main(ledger: str, name: str, scheduler_file: str = "") -> None:
    executor = None
    if scheduler_file:
        from distributed import Client

        executor = Client(scheduler_file=scheduler_file, set_as_default=False)
    for _ in as_completed("lib", getattr(functions, name), executor=executor, workers=2, ledger=ledger):
        pass


if __name__ == "__main__":
    main(*sys.argv[1:])
