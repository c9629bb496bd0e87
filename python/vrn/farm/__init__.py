"""Work on many files: batches for threads, processes and clusters, with a ledger, and blame for single files.

>>> run = vrn.batch("examples/*_scene.vrn", vrn.ops.check, ledger="check.ledger")
>>> for result in run:
...     print(result.path, result.status)
examples/first_scene.vrn ok

Each module has one idea; they are listed from what starts a run to what does the work:

- `run`, `table`, `command` with `arguments` and `printing`: what users call.
- `driver`: the loop that sends batches and judges what comes back.
- `manifest`: which files. `targets`: what is made of them. `sizing`: how many in a batch. `ledger`: what is done.
- `executors`, `dask`: where batches run. `jobs`: runs as jobs of render farms.
- `worker`, `guard`, `child`: batches, within limits, in processes of their own. `packing`: outcomes on their way back.
- `ops`, `work`, `identity`: what is done with a file. `results`: what came of it.
- `report`, `json_lines`, `sarif`, `arrow`, `progress`, `text`: how that is told.
"""

from __future__ import annotations

import importlib
from typing import TYPE_CHECKING, Any

if TYPE_CHECKING:
    from . import ops
    from .jobs import openjd
    from .results import Answer, FarmError, Result, Status
    from .report import RunReport
    from .run import Run, as_completed, batch
    from .table import Table, scan

_HOMES = {
    "Answer": "results",
    "FarmError": "results",
    "Result": "results",
    "Run": "run",
    "RunReport": "report",
    "Status": "results",
    "Table": "table",
    "as_completed": "run",
    "batch": "run",
    "openjd": "jobs",
    "ops": "ops",
    "scan": "table",
}

__all__ = [
    "Answer",
    "FarmError",
    "Result",
    "Run",
    "RunReport",
    "Status",
    "Table",
    "as_completed",
    "batch",
    "openjd",
    "ops",
    "scan",
]


def __getattr__(name: str) -> Any:
    if name not in _HOMES:
        raise AttributeError(f"module {__name__!r} has no attribute {name!r}")
    module = importlib.import_module(f".{_HOMES[name]}", __name__)
    return module if name == "ops" else getattr(module, name)
