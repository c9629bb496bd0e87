"""The command `vrn-batch`."""

from __future__ import annotations

import argparse
import contextlib
import importlib
import itertools
import json
import os
import signal
import sys
from collections import deque
from collections.abc import Callable, Iterable, Iterator, Sequence
from typing import Any

from .arguments import parser
from .arrow import expect_table, write_parquet
from .ledger import read_ledger
from .printing import Printer, result_text
from .results import FarmError, Result
from .run import Run, as_completed
from .text import escaped

_TROUBLE = 2  # the exit code if anything could not be done


def main(arguments: Sequence[str] | None = None) -> int:
    """Runs the command, and returns its exit code."""
    options = parser().parse_args(arguments)
    try:
        code = _COMMANDS[options.command](options)
        sys.stdout.flush()
        return code
    except KeyboardInterrupt:
        return 128 + signal.SIGINT
    except BrokenPipeError:
        os.dup2(os.open(os.devnull, os.O_WRONLY), 1)  # the flush at exit must not fail again
        return _TROUBLE
    except (FarmError, OSError, ValueError, ImportError) as error:
        print(f"vrn-batch: {escaped(str(error))}", file=sys.stderr)
        return _TROUBLE


def _check(options: argparse.Namespace) -> int:
    from .ops import checking

    work = checking(catalogue=options.types, ignored=tuple(options.ignore), pedantic=options.pedantic)
    return _work(options, work)


def _convert(options: argparse.Namespace) -> int:
    from .ops import convert

    return _work(options, convert(options.target))


def _call(options: argparse.Namespace) -> int:
    module, _, name = options.function.partition(":")
    sys.path.insert(0, os.getcwd())
    function: Any = importlib.import_module(module)
    for part in name.split("."):
        if not hasattr(function, part):
            raise FarmError(f"{options.function}: the module {module} has no {name or 'function'}; write MODULE:FUNCTION")
        function = getattr(function, part)
    return _work(options, function)


def _scan(options: argparse.Namespace) -> int:
    from .table import scan

    expect_table(options.output)
    with _executor(options) as executor:
        table = scan(_paths(options), options.column, executor=executor, **_run_options(options))
    for problem in table.run.report.problems:
        print(result_text(problem, sys.stderr.isatty()), file=sys.stderr)
    table.to_parquet(options.output)
    return table.run.exit_code


def _summary(options: argparse.Namespace) -> int:
    results = (record.as_result() for ledger in options.ledgers for record in read_ledger(ledger))
    return _print_report(options, results)


def _template(options: argparse.Namespace) -> int:
    from .jobs import openjd

    arguments = options.arguments[1:] if options.arguments[:1] == ["--"] else options.arguments
    task = parser().parse_args(arguments)  # a mistake must not wait for the farm
    if vars(task).get("ledger") or vars(task).get("part"):
        raise FarmError("the tasks of a template have ledgers and parts of their own; leave out --ledger and --part")
    print(json.dumps(openjd(arguments, ledger=options.ledger, parts=options.parts, name=options.name), indent=2))
    return 0


def _work(options: argparse.Namespace, function: Callable[[str], Any]) -> int:
    with _executor(options) as executor:
        results = as_completed(
            _paths(options),
            function,
            executor=executor,
            ledger=options.ledger,
            again=[status for status in options.again.split(",") if status],
            **_run_options(options),
        )
        with contextlib.closing(results):
            return _print_report(options, results)


def _run_options(options: argparse.Namespace) -> dict[str, Any]:
    return {
        "workers": options.jobs or None,
        "retries": options.retries,
        "timeout": options.timeout,
        "memory": options.memory,
        "part": options.part,
    }


@contextlib.contextmanager
def _executor(options: argparse.Namespace) -> Iterator[Any]:
    if "://" not in options.executor:
        if options.executor not in ("threads", "processes", "loky"):
            raise FarmError(f"--executor {options.executor}: threads, processes, loky, or an address such as tcp://host:8786")
        yield options.executor
        return
    try:
        from distributed import Client
    except ImportError:
        raise FarmError("a Dask scheduler needs the package distributed; install vrn[dask]") from None
    with Client(options.executor, set_as_default=False) as client:  # type: ignore[no-untyped-call]
        yield client


def _paths(options: argparse.Namespace) -> str | Iterator[str]:
    if not options.paths and not options.files_from:
        raise FarmError("no paths; name files, folders or patterns")
    if options.files_from:
        return itertools.chain(options.paths, _lines(options.files_from))
    return str(options.paths[0]) if len(options.paths) == 1 else iter(options.paths)


def _lines(name: str) -> Iterator[str]:
    """The lines of a file that are not empty. The file is opened now, to notice in time if it cannot be."""
    file = open(
        0 if name == "-" else name, encoding=sys.getfilesystemencoding(), errors="surrogateescape", newline="\n"
    )

    def lines() -> Iterator[str]:
        with file:
            yield from (path for line in file if (path := line.rstrip("\n")))

    return lines()


def _print_report(options: argparse.Namespace, results: Iterable[Result]) -> int:
    if options.parquet:
        expect_table(options.parquet)
    printer = Printer(options.format, options.quiet)
    printed = printer.printed(results)
    if options.parquet:
        write_parquet(Run(result._replace(value=None) for result in printed).report.to_arrow(), options.parquet)
    else:
        deque(printed, maxlen=0)  # keeps nothing
    return 0 if options.exit_zero else printer.exit_code


_COMMANDS: dict[str, Callable[[argparse.Namespace], int]] = {
    "check": _check,
    "convert": _convert,
    "scan": _scan,
    "call": _call,
    "summary": _summary,
    "template": _template,
}


if __name__ == "__main__":
    sys.exit(main())
