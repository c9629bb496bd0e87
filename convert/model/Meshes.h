// Meshes of a scene, in whichever of the forms that it has for them, as geometries.
#pragma once

#include "convert/model/Model.h"

namespace vrn::convert {

// Whether a node is a mesh: it has points.
[[nodiscard]] bool isMesh(const Node& node);

// Nothing, with a loss noted, if the mesh makes no sense as a whole: points that are not finite, indices of points
// that are not there, faces without their corners. Attributes that do not fit the points are left out alone.
[[nodiscard]] std::optional<Geometry> readMesh(const Node& mesh, const Target& target, Losses& losses);

} // namespace vrn::convert
