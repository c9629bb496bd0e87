// The meshes of a model in world space, for formats without nodes.
#pragma once

#include "convert/model/Model.h"

#include <algorithm>
#include <string>

namespace vrn::convert {

// A geometry as one node shows it.
struct WorldMesh {
    const Geometry* geometry = nullptr;
    const Node* source = nullptr; // the node
    u32 material = none;
    Matrix world = identity;
    bool isMirrored = false; // then the corners of faces are in reverse order, so that their front stays in front
    bool isFirst = true;     // no mesh before this one has the geometry: its losses are reported here
};

// The geometries of all nodes in their order, except those with points beyond the range of a float in world space,
// which are added to the losses. Throws ContentError for `path` if there are none.
[[nodiscard]] std::vector<WorldMesh> worldMeshes(const Model& model, const std::string& path, Losses& losses);

// Vectors in world space, computed with doubles: points, or normals of length 1; without a transform, as they are.
// `vectors` are x y z one after another, and may be those of `out`.
void transformPoints(const WorldMesh& mesh, std::span<const float> vectors, std::span<float> out);
void transformNormals(const WorldMesh& mesh, std::span<const float> vectors, std::span<float> out);

// A texture coordinate counted from the lower edge of the image instead of the upper one, and whether that is exact for
// the first uvset of a geometry.
[[nodiscard]] inline float flipped(float v) noexcept { return 1 - v; }
[[nodiscard]] bool isFlipExact(const Geometry& geometry);

// Losses that several formats have.
inline constexpr const char* lostDigits = "last digits of texture coordinates (v is flipped)";
inline constexpr const char* lostWithoutColors = "missing colours of meshes beside others (written as white)";

// The corners of a face, in reverse order after the first if the mesh is mirrored. The points of a line keep their
// order.
template <class Use> void forEachCorner(const WorldMesh& mesh, std::span<const u32> face, Use use) {
    const bool isReversed = mesh.isMirrored && face.size() > 2;
    use(face[0]);
    for (std::size_t i = 1; i < face.size(); ++i)
        use(face[isReversed ? face.size() - i : i]);
}

// Calls `use` with the vertex indices of each face, line or point.
template <class Use> void forEachFace(const Geometry& geometry, Use use) {
    std::span<const u32> corners = geometry.indices.span();
    for (std::size_t i = 0; !corners.empty(); ++i) {
        const bool isPolygon = geometry.topology == Topology::Polygons;
        const std::size_t count = isPolygon ? geometry.faceCounts[i] : cornersPerFace(geometry.topology);
        use(corners.first(count));
        corners = corners.subspan(count);
    }
}

} // namespace vrn::convert
