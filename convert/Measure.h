// The size and place of the meshes of a scene, as a conversion interprets them.
//
//     for (const MeshMeasure& mesh : measure(scene).meshes)
//         print(mesh.source->name(), mesh.points, mesh.triangles);
#pragma once

#include "scene/Scene.h"

#include <array>
#include <optional>
#include <vector>

namespace vrn::convert {

// A box that contains points, with its sides along the axes.
struct Bounds {
    std::array<float, 3> min;
    std::array<float, 3> max;
};

struct MeshMeasure {
    const vor::velmo_sdk::impl::Node* source;
    const char* topology = nullptr; // polygons, triangles, lines or points; null for a mesh that cannot be converted
    vor::u64 points = 0;
    vor::u64 faces = 0;             // polygons or triangles
    vor::u64 triangles = 0;         // that the faces consist of
    std::optional<Bounds> bounds{}; // of the points, without a transform
};

struct SceneMeasure {
    std::vector<MeshMeasure> meshes; // in the order of the nodes
    // Of the meshes where the nodes that show them are, and of meshes that no node shows. None without meshes.
    std::optional<Bounds> bounds{};
};

// Linear in the scene and in the points of the meshes each time that a node shows them.
[[nodiscard]] SceneMeasure measure(const vor::velmo_sdk::impl::Scene& scene);

} // namespace vrn::convert
