"""The arguments of the command `vrn-batch`."""

from __future__ import annotations

import argparse
import re
from typing import Any

from .._vrn import __version__
from .run import AGAIN

_EXIT_CODES = "exit status: 0 no errors; 1 errors in files; 2 invalid arguments, or files that could not be worked on"
_UNITS = {"": 1, "K": 1 << 10, "M": 1 << 20, "G": 1 << 30}


def parser() -> argparse.ArgumentParser:
    """Parses the arguments; the member `command` is the name of the command among them."""
    parser = argparse.ArgumentParser("vrn-batch", description="Work on many VRN files.", epilog=_EXIT_CODES)
    parser.add_argument("--version", action="version", version=f"vrn-batch {__version__}")
    commands = parser.add_subparsers(title="commands", metavar="COMMAND", dest="command", required=True)

    check = _command(commands, "check", "report errors and warnings")
    check.add_argument("--types", metavar="FILE", help="a catalogue of node types, or builtin")
    check.add_argument("--ignore", metavar="KIND", action="append", default=[], help="omit findings of this kind")
    check.add_argument("--pedantic", action="store_true", help="report unused nodes, too")
    _add_run_options(check)

    convert = _command(commands, "convert", "convert files")
    convert.add_argument("target", help="of each file, such as out/{parent}/{stem}.glb")
    _add_run_options(convert)

    scan = _command(commands, "scan", "write values of all files as one Parquet table")
    scan.add_argument("-c", "--column", metavar="PATH", action="append", required=True, help="as in vrn query")
    scan.add_argument("-o", "--output", metavar="FILE", required=True, help="the table")
    _add_paths(scan)
    _add_workers(scan)

    call = _command(commands, "call", "apply a Python function to each path")
    call.add_argument("function", metavar="MODULE:FUNCTION", help="of one path")
    _add_run_options(call)

    summary = _command(commands, "summary", "report what is recorded in ledgers")
    summary.add_argument("ledgers", nargs="+", metavar="LEDGER")
    _add_report(summary)

    template = _command(commands, "template", "print a job template in Open Job Description for a render farm")
    template.add_argument("--parts", type=_count, required=True, metavar="N", help="tasks that share the files")
    template.add_argument("--name", default="vrn-batch", help="of the job")
    template.add_argument("--ledger", required=True, metavar="FILE", help="the start of the names of ledgers")
    template.add_argument("arguments", nargs=argparse.REMAINDER, metavar="-- COMMAND ...", help="of vrn-batch")
    return parser


def _command(commands: Any, name: str, what: str) -> argparse.ArgumentParser:
    parser: argparse.ArgumentParser = commands.add_parser(
        name, help=what, description=what.capitalize() + ".", epilog=_EXIT_CODES
    )
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
    parser.add_argument("-j", "--jobs", type=_count, default=0, metavar="N", help="workers; 0 is one a processor")
    parser.add_argument("--retries", type=_count, default=0, metavar="N", help="further tries of files that failed")
    parser.add_argument("--timeout", type=float, metavar="SECONDS", help="that one file may take")
    parser.add_argument("--memory", type=_bytes, metavar="BYTES", help="that one file may take, such as 4G")


def _count(text: str) -> int:
    if not re.fullmatch(r"[0-9]{1,9}", text):
        raise argparse.ArgumentTypeError(f"{text!r} is not a number from 0")
    return int(text)


def _part(text: str) -> tuple[int, int]:
    match = re.fullmatch(r"([0-9]{1,9})/([0-9]{1,9})", text)
    if not match or not 1 <= int(match[1]) <= int(match[2]):
        raise argparse.ArgumentTypeError(f"{text!r} is not K/N with K from 1 to N")
    return int(match[1]), int(match[2])


def _bytes(text: str) -> int:
    match = re.fullmatch(r"([0-9]{1,18})([KMG]?)", text)
    if not match:
        raise argparse.ArgumentTypeError(f"{text!r} is not a number of bytes such as 4G")
    return int(match[1]) * _UNITS[match[2]]
