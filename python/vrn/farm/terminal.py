"""Text for terminals: what comes from files must not control them."""

from __future__ import annotations

import re

_UNSAFE = re.compile("[\x00-\x1f\x7f-\x9f\udc80-\udcff\u2028\u2029\u202a-\u202e\u2066-\u2069]")
_SHORT = {"\n": "\\n", "\t": "\\t", "\r": "\\r"}


def escaped(text: str) -> str:
    r"""The text with `\n`, `\t`, `\r` and `\xHH` for control characters and bytes that are not UTF-8."""
    return _UNSAFE.sub(lambda match: _SHORT.get(match[0]) or _bytes(match[0]), text)


def _bytes(character: str) -> str:
    return "".join(f"\\x{byte:02X}" for byte in character.encode("utf-8", "surrogateescape"))
