#include "convert/Measure.h"

#include "convert/model/ModelBuilder.h"
#include "convert/model/ShownMeshes.h"

#include <algorithm>
#include <limits>
#include <unordered_map>

namespace vrn::convert {

namespace {

const char* nameOf(Topology topology) noexcept {
    switch (topology) {
    case Topology::Points:
        return "points";
    case Topology::Lines:
        return "lines";
    case Topology::Triangles:
        return "triangles";
    case Topology::Polygons:
        break;
    }
    return "polygons";
}

// The bounds of points, after they are transformed with doubles.
class Extent {
public:
    void add(std::span<const float> points, const Matrix& m) {
        for (std::size_t i = 0; i + 2 < points.size(); i += 3) {
            const Vector point = {static_cast<double>(points[i]), static_cast<double>(points[i + 1]),
                                  static_cast<double>(points[i + 2])};
            for (std::size_t axis = 0; axis < 3; ++axis) {
                const double at = point[0] * m[axis] + point[1] * m[4 + axis] + point[2] * m[8 + axis] + m[12 + axis];
                min_[axis] = std::min(min_[axis], at);
                max_[axis] = std::max(max_[axis], at);
            }
        }
    }
    [[nodiscard]] std::optional<Bounds> bounds() const {
        if (min_[0] > max_[0])
            return std::nullopt;
        Bounds bounds{};
        for (std::size_t axis = 0; axis < 3; ++axis) {
            bounds.min[axis] = static_cast<float>(min_[axis]);
            bounds.max[axis] = static_cast<float>(max_[axis]);
        }
        return bounds;
    }

private:
    static constexpr double infinity = std::numeric_limits<double>::infinity();
    Vector min_ = {infinity, infinity, infinity};
    Vector max_ = {-infinity, -infinity, -infinity};
};

MeshMeasure measureOf(const Geometry& geometry) {
    MeshMeasure mesh{.source = geometry.source, .topology = nameOf(geometry.topology), .points = geometry.vertices()};
    if (geometry.topology == Topology::Polygons) {
        mesh.faces = geometry.faceCounts.size();
        for (const u32 corners : geometry.faceCounts)
            mesh.triangles += std::max(corners, 2U) - 2;
    } else if (geometry.topology == Topology::Triangles) {
        mesh.faces = mesh.triangles = geometry.indices.size() / 3;
    }
    Extent extent;
    extent.add(geometry.points.span(), identity);
    mesh.bounds = extent.bounds();
    return mesh;
}

std::vector<MeshMeasure> meshesOf(const Scene& scene, const Model& model) {
    std::unordered_map<const Node*, const Geometry*> geometries;
    for (const Geometry& geometry : model.geometries)
        geometries.emplace(geometry.source, &geometry);
    std::vector<MeshMeasure> meshes;
    for (const Node& node : scene.nodes()) {
        const auto found = geometries.find(&node);
        if (found != geometries.end())
            meshes.push_back(measureOf(*found->second));
        else if (node.type() == "mesh" && !node.isDefinition())
            meshes.push_back({.source = &node});
    }
    return meshes;
}

} // namespace

SceneMeasure measure(const Scene& scene) {
    constexpr TargetFormat all{.hasPolygons = true, .hasLinesAndPoints = true};
    Losses ignored;
    const Model model = buildModel(scene, all, {}, ignored);
    Extent extent;
    forEachShownMesh(model, [&](const ModelNode&, u32 geometry, const Matrix& world) {
        extent.add(model.geometries[geometry].points.span(), world);
    });
    return {meshesOf(scene, model), extent.bounds()};
}

} // namespace vrn::convert
