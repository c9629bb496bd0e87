"""What the help of `vrn` lists."""
import re

from command import run


def commands():
    """The commands by name, as the help lists them."""
    listed = run("--help").stdout.decode().partition("Subcommands:\n")[2].partition("\n\n")[0]
    return re.findall(r"^  ([a-z]+) ", listed, re.M)


def options(command):
    """The options of a command that its help tells of."""
    text = run(command, "--help").stdout.decode().partition("\nOptions:\n")[2].partition("\n\n")[0]
    return sorted(name for names in re.findall(r"^  (-[-\w,]+)", text, re.M) for name in names.split(","))
