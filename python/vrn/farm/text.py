"""Text from files, for terminals, which it must not control, and for other programs, which want UTF-8."""

from __future__ import annotations

import re

_UNSAFE = re.compile("[\x00-\x1f\x7f-\x9f\udc80-\udcff\u2028\u2029\u202a-\u202e\u2066-\u2069]")
_NO_CHARACTERS = re.compile("[\ud800-\udfff]")
_HALVES = re.compile("[\ud800-\udc7f\udd00-\udfff]")
_SHORT = {"\n": "\\n", "\t": "\\t", "\r": "\\r"}


def escaped(text: str) -> str:
    r"""The text with `\n`, `\t`, `\r` and `\xHH` for control characters and bytes that are not UTF-8."""
    return _UNSAFE.sub(lambda match: _SHORT.get(match[0]) or _bytes(match[0]), text)


def encodable(text: str) -> str:
    """The text with U+FFFD for what is neither a character nor a byte of a path: half of a pair of surrogates."""
    return _HALVES.sub("\ufffd", text)


def utf8(text: str) -> str:
    """The text with U+FFFD for each byte that is not UTF-8."""
    return _NO_CHARACTERS.sub("\ufffd", text)


def _bytes(character: str) -> str:
    return "".join(f"\\x{byte:02X}" for byte in character.encode("utf-8", "surrogateescape"))
