"""Scenes in the VRN text format: read, check, change, query, write and convert them.

>>> import vrn
>>> scene = vrn.read("city.vrn")
>>> for node in scene.nodes(type="mesh"):
...     print(node.name, node["points"].shape)
box (8, 3)
>>> scene["cam1"]["fov"] = 50.0
>>> scene.write("city.vrn")
()

Values of buffers are numpy arrays that share the memory of the scene. The package never prints.
"""

from ._vrn import (
    Adopted,
    Catalogue,
    Input,
    Limits,
    Node,
    Output,
    Report,
    Scene,
    __version__,
    adopt,
    check,
    convert,
    diff,
    format,
    loads,
    read,
    readable_formats,
    writable_formats,
)

TYPE_CHECKING = False
if TYPE_CHECKING:
    from . import farm, typing, usd
    from ._errors import ConversionError, Diagnostic, DiagnosticsError, Error, ParseError, RemovedError
    from ._results import Difference, Loss
    from ._values import Mat3, Mat4, Pos2, Pos3, Quat, Rgba, Vec2, Vec3, Vec4
    from .farm import batch, ops, scan

__all__ = [
    "Adopted",
    "Catalogue",
    "ConversionError",
    "Diagnostic",
    "DiagnosticsError",
    "Difference",
    "Error",
    "Input",
    "Limits",
    "Loss",
    "Mat3",
    "Mat4",
    "Node",
    "Output",
    "ParseError",
    "Pos2",
    "Pos3",
    "Quat",
    "RemovedError",
    "Report",
    "Rgba",
    "Scene",
    "Vec2",
    "Vec3",
    "Vec4",
    "__version__",
    "adopt",
    "batch",
    "check",
    "convert",
    "diff",
    "farm",
    "format",
    "loads",
    "ops",
    "read",
    "readable_formats",
    "scan",
    "typing",
    "usd",
    "writable_formats",
]

# The modules of names that are imported with their first use, so that importing the package takes little time.
_HOMES = {
    **dict.fromkeys(
        ("ConversionError", "Diagnostic", "DiagnosticsError", "Error", "ParseError", "RemovedError"), "_errors"
    ),
    **dict.fromkeys(("Difference", "Loss"), "_results"),
    **dict.fromkeys(("Mat3", "Mat4", "Pos2", "Pos3", "Quat", "Rgba", "Vec2", "Vec3", "Vec4"), "_values"),
    **dict.fromkeys(("batch", "ops", "scan"), "farm"),
}

if not TYPE_CHECKING:

    def __getattr__(name: str) -> object:
        """The value of a public name that nobody has used yet."""
        import importlib

        if name in ("farm", "typing", "usd"):
            return importlib.import_module(f".{name}", __name__)
        if name not in _HOMES:
            raise AttributeError(f"module {__name__!r} has no attribute {name!r}")
        value = getattr(importlib.import_module(f".{_HOMES[name]}", __name__), name)
        globals()[name] = value
        return value

    def __dir__() -> list[str]:
        return sorted({*globals(), *__all__})
