// Reads the different forms of meshes of a scene.
#pragma once

#include "convert/model/Model.h"

namespace vrn::convert {

// Whether a node is a mesh: it has points.
[[nodiscard]] bool isMesh(const Node& node);

// The geometry of a mesh. Nothing, with a loss, if the mesh is invalid: points that are not finite, indices out of
// range, incomplete faces. Attributes that do not match the points are dropped individually.
[[nodiscard]] std::optional<Geometry> readMesh(const Node& mesh, const TargetFormat& target, Losses& losses);

} // namespace vrn::convert
