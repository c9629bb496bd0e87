"""Animations: channels with keys of a node, and time samples of attributes."""

from __future__ import annotations

from collections.abc import Callable
from dataclasses import dataclass
from typing import TYPE_CHECKING, Any

import numpy as np
from pxr import Sdf, Usd, UsdSkel

import vrn

from . import morphs
from .arrays import Array, finite, from_usd, to_usd
from .given import Given
from .hierarchy import has_transform
from .losses import Losses
from .names import text_for_usd
from .skins import animation_of
from .transforms import SAMPLES_PER_SECOND, Motion

if TYPE_CHECKING:
    from .reading import Reader

TYPES = Sdf.ValueTypeNames
CODES_PER_SECOND = 24.0
INTERPOLATION = "vrn:interpolation"
_COMPONENTS = {"translation": 3, "rotation": 4, "scale": 3, "weights": 0}
_DETAILS = ("name", "loop", "extras")


@dataclass
class Channel:
    """The keys of one vector of a node, in seconds, linear in between."""

    times: Array
    values: Array
    is_stepped: bool = False

    def codes(self) -> Array:
        """The times as time codes. A step has two keys: the old value just before the time, and the new one."""
        codes = self.times.astype(np.float64) * CODES_PER_SECOND
        if not self.is_stepped:
            return codes
        doubled = np.repeat(codes, 2)[1:]
        doubled[0::2] = codes
        doubled[1::2] = np.nextafter(codes[1:], -np.inf)
        return doubled

    def keys(self) -> Array:
        return np.repeat(self.values, 2, 0)[:-1] if self.is_stepped else self.values

    def write(self, attribute: Usd.Attribute, convert: Callable[[Any], Any]) -> None:
        for code, value in zip(self.codes(), self.keys(), strict=True):
            attribute.Set(convert(value), float(code))
        if self.is_stepped:
            attribute.SetCustomDataByKey(INTERPOLATION, "step")


class Channels:
    """The channels of the animation of a scene, by node and path."""

    def __init__(self, scene: vrn.Scene, losses: Losses) -> None:
        self._losses = losses
        self._channels: dict[str, dict[str, Channel]] = {}
        self.details: dict[str, Any] = {}
        animations = [node for node in scene.nodes(type="animation") if not node.is_definition]
        for further in animations[1:]:
            losses.add("animations after the first one", further.name)
        if animations:
            self._read(animations[0])

    def of(self, node: vrn.Node) -> dict[str, Channel]:
        return self._channels.get(node.name, {})

    @property
    def last_code(self) -> float:
        ends = [channel.codes()[-1] for channels in self._channels.values() for channel in channels.values()]
        return float(max(ends, default=0.0))

    def _read(self, node: vrn.Node) -> None:
        given = Given(node, self._losses)
        self.details["node"] = node.name
        for name in _DETAILS:
            found = given.find(name)
            if found is not None and isinstance(found.value, (str, bool)):
                self.details[name] = text_for_usd(found.value) if isinstance(found.value, str) else found.value
        if not given.count("channels"):
            given.lose("animations without channels")
        for i in range(given.count("channels")):
            self._read_channel(given, f"channels[{i}]")
        given.find("channelCount")
        duration = given.number("duration", 0)
        if duration > 0 and self._channels and duration != np.float32(self.last_code / CODES_PER_SECOND):
            self.details["duration"] = duration
        given.add_unread()

    def _read_channel(self, given: Given, prefix: str) -> None:
        for member in ("times", "values", "interpolation", "path"):
            given.find(f"{prefix}.{member}")  # a channel that is left out is one loss
        target = given.link(f"{prefix}.target")
        path = given.text(f"{prefix}.path")
        interpolation = given.text(f"{prefix}.interpolation") or "linear"
        times = given.floats(f"{prefix}.times", 1)
        if target is None or not has_transform(target):
            return given.lose("animation channels with a missing target or one without a transform", prefix)
        if path not in _COMPONENTS:
            return given.lose("animation channels with a path other than those of transforms and weights", prefix)
        if interpolation not in ("linear", "step", "cubic"):
            return given.lose("animation channels with an unknown interpolation", prefix)
        if times is None or not finite(times) or times[0] < 0 or (np.diff(times) <= 0).any():
            return given.lose("animation channels with times that are missing, negative or not increasing", prefix)
        count = len(times) * (3 if interpolation == "cubic" else 1)
        components = _COMPONENTS[path]
        values = given.floats(f"{prefix}.values", components) if components else given.floats(f"{prefix}.values", 1)
        if values is None or not finite(values) or values.size % count or (components and len(values) != count):
            return given.lose("animation channels with values that do not match the times and the path", prefix)
        values = values.reshape(count, -1)
        channels = self._channels.setdefault(target.name, {})
        if path in channels:
            return given.lose("animation channels with the target and path of an earlier channel", prefix)
        if interpolation == "cubic":
            given.lose("tangents of animation channels (sampled 30 times a second)", prefix)
            channels[path] = _sampled(times, values.reshape(len(times), 3, -1), path == "rotation")
        else:
            channels[path] = Channel(times, values, interpolation == "step")


def _sampled(times: Array, values: Array, is_rotation: bool) -> Channel:
    """A cubic spline with tangents as linear keys."""
    seconds = times.astype(np.float64)
    grid = np.arange(seconds[0], seconds[-1], 1 / SAMPLES_PER_SECOND)
    at = np.unique(np.concatenate([seconds, grid]).astype(np.float32)).astype(np.float64)
    index = np.clip(np.searchsorted(seconds, at, "right") - 1, 0, max(len(seconds) - 2, 0))
    after = np.minimum(index + 1, len(seconds) - 1)
    length = (seconds[after] - seconds[index])[:, None]
    u = np.divide(at[:, None] - seconds[index][:, None], length, out=np.zeros_like(length), where=length > 0)
    points = (
        (2 * u**3 - 3 * u**2 + 1) * values[index, 1]
        + (u**3 - 2 * u**2 + u) * length * values[index, 2]
        + (3 * u**2 - 2 * u**3) * values[after, 1]
        + (u**3 - u**2) * length * values[after, 0]
    )
    if is_rotation:
        points = points / np.maximum(np.linalg.norm(points, axis=1, keepdims=True), 1e-30)
    return Channel(at, points)


def write_weights(
    prims: list[Usd.Prim], skeleton: Usd.Prim, weights: Array | None, channel: Channel | None, name: str
) -> None:
    """The weights of the morph targets of meshes, in the animation of their skeleton."""
    animation = animation_of(skeleton)
    tokens = list(animation.GetBlendShapesAttr().Get() or ())
    first = len(tokens)
    targets = morphs.tokens_of(prims[0])
    # The names in an animation stand for one weight each, so those of different nodes must differ.
    own = [f"{name}_{target}" for target in targets] if first else targets
    for prim in prims:
        UsdSkel.BindingAPI(prim).GetBlendShapesAttr().Set(own)
    tokens += own
    animation.CreateBlendShapesAttr(tokens)
    attribute = animation.CreateBlendShapeWeightsAttr()
    start = weights if weights is not None else np.zeros(len(own), np.float32)
    _append(attribute, first, start, channel)


def _append(attribute: Usd.Attribute, first: int, start: Array, channel: Channel | None) -> None:
    """Adds weights after the first ones, at all times at which either change."""
    before = {time: from_usd(attribute.Get(time)) for time in attribute.GetTimeSamples()}
    codes = np.array(sorted({*before, *(channel.codes() if channel else ())}))
    static = attribute.Get()
    fixed = np.concatenate([from_usd(static) if static else np.zeros(first, np.float32), start])
    for code in codes:
        values = fixed.copy()
        if before:
            keys = np.array(sorted(before))
            table = np.array([before[key] for key in keys])
            values[:first] = [np.interp(code, keys, table[:, i]) for i in range(first)]
        if channel:
            keys, table = channel.codes(), channel.keys()
            values[first:] = [np.interp(code, keys, table[:, i]) for i in range(table.shape[1])]
        attribute.Set(to_usd(values, TYPES.FloatArray), float(code))
    attribute.Set(to_usd(fixed, TYPES.FloatArray))
    if channel and channel.is_stepped and not before:
        attribute.SetCustomDataByKey(INTERPOLATION, "step")


# --- reading


class AnimationReader:
    """Collects the motions of a stage, which become one animation."""

    def __init__(self, reader: Reader) -> None:
        self._reader = reader
        self._per_second = reader.stage.GetTimeCodesPerSecond() or CODES_PER_SECOND
        self._channels: list[tuple[vrn.Node, str, str, Array, Array]] = []

    def add(self, node: vrn.Node, motion: Motion) -> None:
        times, values = motion.times, motion.values
        interpolation = "linear"
        held = self._reader.stage.GetInterpolationType() == Usd.InterpolationTypeHeld
        if motion.attribute is not None and motion.attribute.GetCustomDataByKey(INTERPOLATION) == "step":
            # Every second key is the old value just before a step.
            times, values, interpolation = times[0::2], values[0::2], "step"
        elif held:
            interpolation = "step"
        seconds = (times / self._per_second).astype(np.float32)
        kept = np.concatenate([[True], np.diff(seconds) > 0])
        if not kept.all():
            self._reader.losses.add("keys at times that are equal in single precision", node.name)
        self._channels.append((node, motion.path, interpolation, seconds[kept], values[kept]))

    def read_poses(self, skeleton: Usd.Prim, joints: dict[str, vrn.Node]) -> None:
        """The poses of the joints of a skeleton."""
        animation = bound_animation(skeleton)
        if animation is None:
            return
        tokens = [str(token) for token in animation.GetJointsAttr().Get() or ()]
        parts = (
            ("translation", animation.GetTranslationsAttr(), 3),
            ("rotation", animation.GetRotationsAttr(), 4),
            ("scale", animation.GetScalesAttr(), 3),
        )
        for path, attribute, components in parts:
            times = attribute.GetTimeSamples()
            poses = [from_usd(attribute.Get(time)) for time in times] or [from_usd(attribute.Get() or [])]
            if any(pose.shape != (len(tokens), components) or not finite(pose) for pose in poses):
                if tokens and attribute.HasAuthoredValue():
                    self._reader.losses.add("poses that do not match the joints", str(attribute.GetPath()))
                continue
            stacked = np.array(poses, np.float64)
            for i, token in enumerate(tokens):
                if token not in joints:
                    continue
                joints[token][path] = stacked[0, i].tolist()
                if len(times) > 1 and not (stacked[:, i] == stacked[0, i]).all():
                    self.add(joints[token], Motion(path, np.array(times), stacked[:, i]))

    def read_weights(self, instance: vrn.Node, mesh: Usd.Prim) -> None:
        """The weights of the morph targets of a mesh, for the instance that shows it."""
        targets = [str(token) for token in morphs.tokens_of(mesh)]
        skeleton = UsdSkel.BindingAPI(mesh).GetInheritedSkeleton()
        animation = bound_animation(skeleton.GetPrim()) if skeleton and targets else None
        if animation is None:
            return
        tokens = [str(token) for token in animation.GetBlendShapesAttr().Get() or ()]
        places = [tokens.index(target) if target in tokens else -1 for target in targets]
        if all(place < 0 for place in places):
            return
        attribute = animation.GetBlendShapeWeightsAttr()
        times = attribute.GetTimeSamples()
        poses = [attribute.Get(), *(attribute.Get(time) for time in times)]
        values = [from_usd(pose) for pose in poses if pose is not None]
        if not values or any(len(pose) != len(tokens) or not finite(pose) for pose in values):
            self._reader.losses.add("weights that do not match the blend shapes", str(attribute.GetPath()))
            return
        table = np.concatenate([np.array(values, np.float32), np.zeros((len(values), 1), np.float32)], 1)[:, places]
        if table[0].any():
            instance.add("weights", "float[]", table[0])
        if len(times) > 1:
            self.add(instance, Motion("weights", np.array(times), table[-len(times) :], attribute))

    def finish(self) -> None:
        if not self._channels:
            return
        details = self._reader.layer_data("animation")
        name = details.get("node", "animation")
        node = self._reader.add("animation", name if isinstance(name, str) else "animation")
        entries = node.add("channels", "Object[]")
        for target, path, interpolation, seconds, values in self._channels:
            entry = entries.append()
            entry.add("target", "Node", target)
            entry.add("path", "String", path)
            entry.add("interpolation", "String", interpolation)
            entry.add("times", "float[]", seconds)
            if path == "weights":
                entry.add("values", "float[]", values.astype(np.float32).reshape(-1))
            else:
                entry.add("values", "quatf[]" if path == "rotation" else "vec3f[]", values.astype(np.float32))
        last = max(float(channel[3][-1]) for channel in self._channels)
        node.add("duration", "Real", float(details.get("duration", last)))
        node.add("channelCount", "UInt", len(self._channels))
        for key in _DETAILS:
            if isinstance(details.get(key), (str, bool)):
                node[key] = details[key]


def bound_animation(skeleton: Usd.Prim) -> UsdSkel.Animation | None:
    prim = UsdSkel.BindingAPI(skeleton).GetInheritedAnimationSource()
    return UsdSkel.Animation(prim) if prim and prim.IsA(UsdSkel.Animation) else None
