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

TYPE_CHECKING = False
if TYPE_CHECKING:
    from . import farm, typing, usd
    from ._errors import ConversionError, Diagnostic, DiagnosticsError, Error, ParseError, RemovedError
    from ._results import Difference, Loss
    from ._values import Mat3, Mat4, Pos2, Pos3, Quat, Rgba, Vec2, Vec3, Vec4
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

# Every name is imported with its first use: a program that may need a scene starts as fast as without this package.
_MODULES = ("farm", "typing", "usd")
_HOMES = {
    **dict.fromkeys(
        ("ConversionError", "Diagnostic", "DiagnosticsError", "Error", "ParseError", "RemovedError"), "_errors"
    ),
    **dict.fromkeys(("Difference", "Loss"), "_results"),
    **dict.fromkeys(("Mat3", "Mat4", "Pos2", "Pos3", "Quat", "Rgba", "Vec2", "Vec3", "Vec4"), "_values"),
    **dict.fromkeys(("batch", "ops", "scan"), "farm"),
}  # the others are in the module in C++

if not TYPE_CHECKING:

    def __getattr__(name: str) -> object:
        """The value of a public name that nobody has used yet."""
        import sys

        if name not in __all__:
            raise AttributeError(f"module {__name__!r} has no attribute {name!r}")
        home = name if name in _MODULES else _HOMES.get(name, "_vrn")
        __import__(f"{__name__}.{home}")  # importing importlib takes longer
        module = sys.modules[f"{__name__}.{home}"]
        globals()[name] = value = module if home == name else getattr(module, name)
        return value

    def __dir__() -> list[str]:
        return sorted({*globals(), *__all__})
