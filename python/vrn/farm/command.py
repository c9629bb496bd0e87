"""The command `vrn-batch`."""

from __future__ import annotations

import argparse
import contextlib
import importlib
import json
import os
import re
import signal
import sys
from collections.abc import Callable, Iterable, Iterator, Sequence
from typing import Any

from .._vrn import __version__
from .ledger import read_ledger
from .progress import Progress
from .report import Report, SarifLog, json_line, write_parquet
from .results import FarmError, Result, Status
from .run import AGAIN, Run, as_completed
from .terminal import escaped

TROUBLE = 2
"""The exit code if anything could not be done."""

_EXIT_CODES = "exit status: 0 no errors; 1 errors in files; 2 invalid arguments, or files that could not be worked on"
_UNITS = {"": 1, "K": 1 << 10, "M": 1 << 20, "G": 1 << 30}


def main(arguments: Sequence[str] | None = None) -> int:
    """Runs the command, and returns its exit code."""
    given = sys.argv[1:] if arguments is None else list(arguments)
    options = _parser().parse_args(given)
    try:
        code: int = options.run(options)
        sys.stdout.flush()
        return code
    except KeyboardInterrupt:
        return 128 + signal.SIGINT
    except BrokenPipeError:
        os.dup2(os.open(os.devnull, os.O_WRONLY), 1)  # the flush at exit must not fail again
        return TROUBLE
    except (FarmError, OSError, ValueError, ImportError) as error:
        print(f"vrn-batch: {escaped(str(error))}", file=sys.stderr)
        return TROUBLE


def _parser() -> argparse.ArgumentParser:
    parser = argparse.ArgumentParser("vrn-batch", description="Work on many VRN files.", epilog=_EXIT_CODES)
    parser.add_argument("--version", action="version", version=f"vrn-batch {__version__}")
    commands = parser.add_subparsers(title="commands", metavar="COMMAND", required=True)

    check = _command(commands, "check", "report errors and warnings", _check)
    check.add_argument("--types", metavar="FILE", help="a catalogue of node types, or builtin")
    check.add_argument("--ignore", metavar="KIND", action="append", default=[], help="omit findings of this kind")
    check.add_argument("--pedantic", action="store_true", help="report unused nodes, too")
    _add_run_options(check)

    convert = _command(commands, "convert", "convert files", _convert)
    convert.add_argument("target", help="of each file, such as out/{parent}/{stem}.glb")
    _add_run_options(convert)

    scan = _command(commands, "scan", "write values of all files as one Parquet table", _scan)
    scan.add_argument("-c", "--column", metavar="PATH", action="append", required=True, help="as in vrn query")
    scan.add_argument("-o", "--output", metavar="FILE", required=True, help="the table")
    _add_paths(scan)
    _add_workers(scan)

    call = _command(commands, "call", "apply a Python function to each path", _call)
    call.add_argument("function", metavar="MODULE:FUNCTION", help="of one path")
    _add_run_options(call)

    summary = _command(commands, "summary", "report what is recorded in ledgers", _summary)
    summary.add_argument("ledgers", nargs="+", metavar="LEDGER")
    _add_report(summary)

    template = _command(commands, "template", "print a job template in Open Job Description for a render farm", _template)
    template.add_argument("--parts", type=int, required=True, metavar="N", help="tasks that share the files")
    template.add_argument("--name", default="vrn-batch", help="of the job")
    template.add_argument("--ledger", required=True, metavar="FILE", help="the start of the names of ledgers")
    template.add_argument("arguments", nargs=argparse.REMAINDER, metavar="-- COMMAND ...", help="of vrn-batch")
    return parser


def _command(commands: Any, name: str, what: str, run: Callable[[argparse.Namespace], int]) -> argparse.ArgumentParser:
    parser: argparse.ArgumentParser = commands.add_parser(
        name, help=what, description=what.capitalize() + ".", epilog=_EXIT_CODES
    )
    parser.set_defaults(run=run)
    return parser


def _add_run_options(parser: argparse.ArgumentParser) -> None:
    _add_paths(parser)
    _add_report(parser)
    _add_workers(parser)
    parser.add_argument("--ledger", metavar="FILE", help="record what is done, and go on from there the next time")
    parser.add_argument(
        "--again", metavar="STATUSES", default=",".join(sorted(AGAIN)), help="do not count as done (%(default)s)"
    )


def _add_paths(parser: argparse.ArgumentParser) -> None:
    parser.add_argument("paths", nargs="*", metavar="PATH", help="files, folders, patterns, URLs")
    parser.add_argument("--files-from", metavar="FILE", help="read paths from the lines of a file; - is standard input")
    parser.add_argument("--part", type=_part, metavar="K/N", help="work on the K-th of N parts of the files")


def _add_report(parser: argparse.ArgumentParser) -> None:
    parser.add_argument("--format", choices=["text", "json", "sarif"], default="text", help="of the report")
    parser.add_argument("--parquet", metavar="FILE", help="write a table of the results, too")
    parser.add_argument("-q", "--quiet", action="store_true", help="no progress, and no summary")
    parser.add_argument("--exit-zero", action="store_true", help="exit with 0 in spite of problems of files")


def _add_workers(parser: argparse.ArgumentParser) -> None:
    parser.add_argument(
        "--executor", default="threads", metavar="WHERE", help="threads, processes, loky, or the address of a Dask scheduler"
    )
    parser.add_argument("-j", "--jobs", type=int, default=0, metavar="N", help="workers; 0 is one a processor")
    parser.add_argument("--retries", type=int, default=0, metavar="N", help="further tries of files that failed")
    parser.add_argument("--timeout", type=float, metavar="SECONDS", help="that one file may take")
    parser.add_argument("--memory", type=_bytes, metavar="BYTES", help="that one file may take, such as 4G")


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

    with _executor(options) as executor:
        run = {"executor": executor, **_run_options(options)}
        table = scan(_paths(options), options.column, **run)
    for problem in table.run.report.problems:
        print(_text(problem, sys.stderr.isatty()), file=sys.stderr)
    table.to_parquet(options.output)
    return table.run.exit_code


def _summary(options: argparse.Namespace) -> int:
    results = (record.as_result() for ledger in options.ledgers for record in read_ledger(ledger))
    return _print_report(options, results)


def _template(options: argparse.Namespace) -> int:
    from .jobs import openjd

    arguments = options.arguments[1:] if options.arguments[:1] == ["--"] else options.arguments
    _parser().parse_args(arguments)  # a mistake must not wait for the farm
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
    if options.files_from or len(options.paths) > 1:
        return _all_paths(options)
    return str(options.paths[0])


def _all_paths(options: argparse.Namespace) -> Iterator[str]:
    yield from options.paths
    if options.files_from:
        name = 0 if options.files_from == "-" else options.files_from
        with open(name, encoding=sys.getfilesystemencoding(), errors="surrogateescape", newline="\n") as file:
            yield from (path for line in file if (path := line.rstrip("\n")))


def _print_report(options: argparse.Namespace, results: Iterable[Result]) -> int:
    """Prints results as they come, then the summary."""
    printer = _Printer(options)
    kept: list[Result] = []
    for result in results:
        printer.add(result)
        if options.parquet:
            kept.append(result._replace(value=None))
    printer.end()
    if options.parquet:
        write_parquet(Report(Run(kept)).to_arrow(), options.parquet)
    return 0 if options.exit_zero else printer.exit_code


class _Printer:
    """Prints the report in the wanted format, and the progress between its lines."""

    def __init__(self, options: argparse.Namespace) -> None:
        sys.stdout.reconfigure(errors="surrogateescape")  # type: ignore[union-attr]
        self.exit_code = 0
        self._format = options.format
        self._is_quiet = options.quiet
        self._counts: dict[Status, int] = {}
        self._progress = Progress(sys.stderr, not options.quiet)
        self._is_terminal = sys.stdout.isatty()
        self._sarif = SarifLog(self._write) if self._format == "sarif" else None

    def add(self, result: Result) -> None:
        self.exit_code = max(self.exit_code, result.exit_code)
        self._counts[result.status] = self._counts.get(result.status, 0) + 1
        if self._sarif:
            self._sarif.add(result)
        elif self._format == "json":
            self._write(json_line(result))
        elif result.diagnostics or result.exit_code:
            self._write(_text(result, self._is_terminal) + "\n")
        self._progress.add(result)

    def end(self) -> None:
        self._progress.hide()
        if self._sarif:
            self._sarif.end()
        elif self._format == "text" and not self._is_quiet:
            counts = ", ".join(f"{self._counts[status]} {status}" for status in Status if status in self._counts)
            files = sum(self._counts.values())
            self._write(f"{files} {'file' if files == 1 else 'files'}: {counts or 'no results'}\n")

    def _write(self, text: str) -> None:
        self._progress.hide()
        sys.stdout.write(text)


def _text(result: Result, is_terminal: bool) -> str:
    """What was found in a file, a line each, and why there is no more."""
    lines = [f"{result.path}:{found}" for found in result.diagnostics]
    if not lines or result.verdict is not Status.ERRORS:
        lines += [f"{result.path}: {result.verdict}" + (f": {result.error}" if result.error else "")] if result.exit_code else []
    return "\n".join(map(escaped, lines) if is_terminal else lines)


def _part(text: str) -> tuple[int, int]:
    match = re.fullmatch(r"(\d+)/(\d+)", text)
    if not match or not 1 <= int(match[1]) <= int(match[2]):
        raise argparse.ArgumentTypeError(f"{text!r} is not K/N with K from 1 to N")
    return int(match[1]), int(match[2])


def _bytes(text: str) -> int:
    match = re.fullmatch(r"(\d+)([KMG]?)", text)
    if not match:
        raise argparse.ArgumentTypeError(f"{text!r} is not a number of bytes such as 4G")
    return int(match[1]) * _UNITS[match[2]]


if __name__ == "__main__":
    sys.exit(main())
