// The axes and the unit of length of a file, and the scene in the axes and unit that VRN has: Y up, in metres.
//
//     Placement placement;             // Y up, in metres
//     placement.axes = axesWithUp('Z');
//     placement.metres = 0.01;         // the file is in centimetres
//     place(scene, placement, losses);
#pragma once

#include "convert/shared/Losses.h"
#include "convert/shared/Transform.h"

#include <optional>

namespace vrn::convert {

struct Placement {
    Matrix axes = identity; // from those of the file to those of VRN, without translation
    double metres = 1;      // the length of a unit of the file

    [[nodiscard]] Matrix matrix() const;
};

// What the user says about a file; it has precedence over what the file says.
struct PlacementOptions {
    std::optional<char> up{};       // X, Y or Z
    std::optional<double> metres{}; // the length of a unit
    double factor = 1;              // scales everything in addition
};

[[nodiscard]] Placement withOptions(Placement placement, const PlacementOptions& options);

// The rotation that turns an axis, X, Y or Z, up, and its inverse.
[[nodiscard]] Matrix axesWithUp(char axis);
[[nodiscard]] Matrix axesFromUp(char axis);

// Puts all nodes of the scene below a new node with the transform of the placement, and scales their distances. Does
// nothing if the placement changes nothing.
void place(Scene& scene, const Placement& placement, Losses& losses);

// Scales what the transform of a node does not scale: the clipping planes and sizes of cameras, and the ranges of
// lights.
void scaleDistances(Scene& scene, double factor, Losses& losses);

} // namespace vrn::convert
