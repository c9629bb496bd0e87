"""What a prim of a stage holds, and which of it nobody has read."""

from __future__ import annotations

from typing import Any

import numpy as np
from pxr import Usd

from .arrays import Array, from_usd
from .losses import Losses

_METADATA = {
    # What says how prims are composed and found, not what they are.
    "apiSchemas", "clips", "clipSets", "customData", "displayName", "documentation", "hidden", "inheritPaths",
    "instanceable", "kind", "payload", "references", "specializes", "specifier", "typeName", "variantSelection",
    "variantSetNames", "active", "propertyOrder", "primOrder", "comment", "sdrMetadata", "info:id", "displayGroupOrder",
}  # fmt: skip


class Authored:
    """The properties of a prim by name. What is never read is lost."""

    def __init__(self, prim: Usd.Prim, losses: Losses) -> None:
        self.prim = prim
        self._losses = losses
        self._read: set[str] = set()
        self._read_variants: set[str] = set()

    def lose(self, what: str, name: str = "") -> None:
        path = str(self.prim.GetPath())
        self._losses.add(what, f"{path}.{name}" if name else path)

    def has(self, name: str) -> bool:
        """Whether the stage says something about an attribute."""
        attribute = self.prim.GetAttribute(name)
        return bool(attribute) and attribute.HasAuthoredValue()

    def value(self, name: str, default: Any = None) -> Any:
        """The value of an attribute that does not change with time, or the first one of one that does."""
        self._read.add(name)
        attribute = self.prim.GetAttribute(name)
        if not attribute:
            return default
        value = attribute.Get()
        if attribute.ValueMightBeTimeVarying() or (value is None and attribute.GetNumTimeSamples()):
            if attribute.ValueMightBeTimeVarying():
                self.lose(f"time samples of {name} of {self.prim.GetTypeName()}", name)
            value = attribute.Get(Usd.TimeCode.EarliestTime())
        return default if value is None else value

    def array(self, name: str) -> Array | None:
        """The elements of an array; None if there are none."""
        value = self.value(name)
        if value is None or not len(value):
            return None
        return from_usd(value)

    def number(self, name: str, default: float) -> float:
        """A finite number."""
        value = self.value(name, default)
        if np.isfinite(value):
            return float(value)
        self.lose("numbers that are not finite", name)
        return default

    def mark(self, *names: str) -> None:
        """Says that these properties are read by other means."""
        self._read.update(names)

    def mark_variants(self, *names: str) -> None:
        """Says that all variants of these sets are read."""
        self._read_variants.update(names)

    def targets(self, name: str) -> list[Any]:
        """The paths that a relationship leads to."""
        self._read.add(name)
        relationship = self.prim.GetRelationship(name)
        return list(relationship.GetForwardedTargets()) if relationship else []

    def custom(self, key: str) -> Any:
        return self.prim.GetCustomDataByKey(key)

    def add_unread(self, *ignored: str) -> None:
        """Reports the properties and the metadata that nothing has read."""
        kind = self.prim.GetTypeName() or "untyped prim"
        for found in self.prim.GetAuthoredProperties():
            name = found.GetName()
            if name in self._read or name in ignored or name.startswith(("vrn:", "ui:")):
                continue
            if isinstance(found, Usd.Attribute) and not (found.HasAuthoredValue() or found.HasAuthoredConnections()):
                continue
            if isinstance(found, Usd.Relationship) and not found.GetTargets():
                continue
            self.lose(f"property {name} of {kind}", name)
        for name in self.prim.GetAllAuthoredMetadata():
            if name not in _METADATA:
                self.lose(f"metadata {name} of {kind}")
        for name in {name for opinion in self.prim.GetPrimStack() for name in opinion.customData}:
            if name != "vrn":
                self.lose(f"custom data {name} of {kind}")
        self.add_unread_variants()

    def add_unread_variants(self) -> None:
        """Reports variants that are not selected, unless their set is read."""
        sets = self.prim.GetVariantSets()
        for name in sets.GetNames():
            if name not in self._read_variants and len(sets.GetVariantSet(name).GetVariantNames()) > 1:
                return self.lose("variants that are not selected")
        return None
