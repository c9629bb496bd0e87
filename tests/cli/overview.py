"""Parses the help of `vrn`."""
import re

from command import run


def commands():
    """The names of the commands, in the order of the help."""
    listed = run("--help").stdout.decode().partition("Subcommands:\n")[2].partition("\n\n")[0]
    return re.findall(r"^  ([a-z]+) ", listed, re.M)


def options(command):
    """The names of the options in the help of a command."""
    text = run(command, "--help").stdout.decode().partition("\nOptions:\n")[2].partition("\n\n")[0]
    return sorted(name for names in re.findall(r"^  (-[-\w,]+)", text, re.M) for name in names.split(","))
