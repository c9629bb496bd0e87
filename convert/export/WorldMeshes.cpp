#include "convert/export/WorldMeshes.h"

#include "convert/model/Inputs.h"
#include "convert/model/ShownMeshes.h"
#include "convert/shared/Errors.h"

#include <cmath>
#include <cstring>
#include <unordered_map>
#include <unordered_set>

namespace vrn::convert {

namespace {

// The largest absolute value of each coordinate.
Vector largestOf(const Geometry& geometry) {
    Vector largest{};
    for (std::size_t i = 0; i < geometry.points.size(); ++i)
        largest[i % 3] = std::max(largest[i % 3], std::abs(static_cast<double>(geometry.points[i])));
    return largest;
}

// Whether all points with coordinates up to the largest are finite in world space.
bool fitsInWorld(const Vector& largest, const Matrix& world) {
    const auto bound = [&](std::size_t axis) {
        double sum = std::abs(world[12 + axis]);
        for (std::size_t i = 0; i < 3; ++i)
            sum += std::abs(world[4 * i + axis]) * largest[i];
        return sum;
    };
    return std::ranges::all_of(world, fitsFloat) && fitsFloat(bound(0)) && fitsFloat(bound(1)) && fitsFloat(bound(2));
}

// The cofactors of the linear part, which transform normals: the transposed inverse times the determinant.
std::array<double, 9> cofactors(const Matrix& m) {
    std::array<double, 9> all{};
    for (std::size_t row = 0; row < 3; ++row)
        for (std::size_t column = 0; column < 3; ++column) {
            const std::size_t a = (row + 1) % 3;
            const std::size_t b = (row + 2) % 3;
            const std::size_t c = (column + 1) % 3;
            const std::size_t d = (column + 2) % 3;
            all[3 * row + column] = m[4 * a + c] * m[4 * b + d] - m[4 * a + d] * m[4 * b + c];
        }
    return all;
}

double determinant(const Matrix& m) {
    const std::array<double, 9> minors = cofactors(m);
    return m[0] * minors[0] + m[1] * minors[1] + m[2] * minors[2];
}

class MeshPlacer {
public:
    MeshPlacer(const Model& model, const std::string& path, Losses& losses)
        : model_(model), path_(path), losses_(losses) {}

    std::vector<WorldMesh> placeAll() {
        const std::vector<bool> isShown = shownNodes(model_);
        checkSize(isShown);
        reportNodes(isShown);
        forEachShownMesh(
            model_, [&](const ModelNode& node, u32 geometry, const Matrix& world) { place(node, geometry, world); });
        return std::move(meshes_);
    }

private:
    void reportNodes(const std::vector<bool>& isShown) {
        for (std::size_t i = 0; i < model_.nodes.size(); ++i) {
            const ModelNode& node = model_.nodes[i];
            if (!isShown[i])
                losses_.add("nodes outside the scene that is shown first", *node.source);
            else if (node.geometry == none)
                losses_.add("nodes without a mesh", *node.source);
            else if (node.parent != none)
                losses_.add("parents of nodes", *node.source);
        }
    }

    void place(const ModelNode& node, u32 index, const Matrix& world) {
        const Geometry& geometry = model_.geometries[index];
        if (world != identity && !fitsInWorld(largestOfMesh(index), world))
            return losses_.add("meshes whose transformed points exceed the range of a float", *node.source);
        if (world != identity)
            losses_.add("transforms of nodes (applied to the points)", *node.source);
        meshes_.push_back({.geometry = &geometry,
                           .source = node.source,
                           .material = node.material != none ? node.material : geometry.material,
                           .world = world,
                           .isMirrored = determinant(world) < 0,
                           .isFirst = seen_.insert(index).second});
    }

    const Vector& largestOfMesh(u32 index) {
        const auto [largest, isNew] = largest_.try_emplace(index);
        if (isNew)
            largest->second = largestOf(model_.geometries[index]);
        return largest->second;
    }

    // A small file can show a large mesh, or a mesh of many parts, very often. No reader takes the result.
    void checkSize(const std::vector<bool>& isShown) const {
        u64 meshes = 0;
        u64 points = 0;
        for (std::size_t i = 0; i < model_.nodes.size(); ++i) {
            const ModelNode& node = model_.nodes[i];
            if (node.geometry == none || !isShown[i])
                continue;
            const u64 times = std::max<u64>(node.instances.count, 1);
            u64 vertices = model_.geometries[node.geometry].vertices();
            for (const u32 part : node.parts)
                vertices += model_.geometries[part].vertices();
            refuseAbove(maxMeshes, meshes, times, 1 + node.parts.size(), "meshes");
            refuseAbove(maxPoints, points, times, vertices, "points");
        }
    }

    void refuseAbove(u64 most, u64& sum, u64 times, u64 each, const char* what) const {
        if (each > (most - sum) / times)
            throw ContentError(path_, "the instances of its meshes have more than " + std::to_string(most) + " " +
                                          what + " together; convert to .glb, which has instances");
        sum += times * each;
    }

    static constexpr u64 maxMeshes = 4'000'000;
    static constexpr u64 maxPoints = 0xFFFFFFFF; // what 32 bits number
    const Model& model_;
    const std::string& path_;
    Losses& losses_;
    std::vector<WorldMesh> meshes_;
    std::unordered_set<u32> seen_;            // geometries
    std::unordered_map<u32, Vector> largest_; // coordinates of each geometry
};

} // namespace

std::vector<WorldMesh> worldMeshes(const Model& model, const std::string& path, Losses& losses) {
    std::vector<WorldMesh> meshes = MeshPlacer(model, path, losses).placeAll();
    if (meshes.empty())
        throw ContentError(path, "the scene has no mesh that can be written");
    return meshes;
}

bool isFlipExact(const Geometry& geometry) {
    if (geometry.uvsets.empty())
        return true;
    const std::span<const float> coordinates = geometry.uvsets[0].span();
    for (std::size_t i = 1; i < coordinates.size(); i += 2)
        if (flipped(flipped(coordinates[i])) != coordinates[i])
            return false;
    return true;
}

void transformPoints(const WorldMesh& mesh, std::span<const float> vectors, std::span<float> out) {
    if (mesh.world == identity) {
        std::memmove(out.data(), vectors.data(), vectors.size_bytes());
        return;
    }
    const Matrix& m = mesh.world;
    for (std::size_t i = 0; i < vectors.size(); i += 3) {
        const double x = static_cast<double>(vectors[i]);
        const double y = static_cast<double>(vectors[i + 1]);
        const double z = static_cast<double>(vectors[i + 2]);
        for (std::size_t axis = 0; axis < 3; ++axis)
            out[i + axis] = static_cast<float>(x * m[axis] + y * m[4 + axis] + z * m[8 + axis] + m[12 + axis]);
    }
}

void transformNormals(const WorldMesh& mesh, std::span<const float> vectors, std::span<float> out) {
    if (mesh.world == identity) {
        std::memmove(out.data(), vectors.data(), vectors.size_bytes());
        return;
    }
    const std::array<double, 9> m = cofactors(mesh.world);
    const double sign = mesh.isMirrored ? -1 : 1;
    for (std::size_t i = 0; i < vectors.size(); i += 3) {
        const double x = static_cast<double>(vectors[i]);
        const double y = static_cast<double>(vectors[i + 1]);
        const double z = static_cast<double>(vectors[i + 2]);
        Vector normal{};
        for (std::size_t axis = 0; axis < 3; ++axis)
            normal[axis] = x * m[axis] + y * m[3 + axis] + z * m[6 + axis];
        const double size = length(normal);
        for (std::size_t axis = 0; axis < 3; ++axis)
            out[i + axis] = static_cast<float>(size > 0 ? sign * normal[axis] / size : normal[axis]);
    }
}

} // namespace vrn::convert
