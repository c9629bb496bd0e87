#include "convert/export/StlWriter.h"

#include "convert/export/NumberLines.h"
#include "convert/export/WorldMeshes.h"
#include "convert/model/ModelBuilder.h"
#include "convert/shared/Errors.h"
#include "convert/shared/LittleEndian.h"

#include <bit>
#include <cmath>

namespace vrn::convert {

namespace {

// The normal of the plane of a triangle, then its corners.
using Facet = std::array<float, 12>;

// Some facets, whose corners are set, and then their normals for all of them together: the square roots and divisions
// of several facets are computed in parallel.
class Facets {
public:
    static constexpr std::size_t capacity = 64;

    Facet& add() { return facets_[count_++]; }
    [[nodiscard]] bool isFull() const noexcept { return count_ == capacity; }
    void clear() noexcept { count_ = 0; }

    // Normals of length 1; 0 0 0 for a triangle without an area. The squares of products of two floats fit a double.
    // The loops go over all facets, also those that are not set, so that compilers use vector instructions.
    std::span<const Facet> withNormals() {
        std::array<double, capacity> x;
        std::array<double, capacity> y;
        std::array<double, capacity> z;
        for (std::size_t i = 0; i < capacity; ++i)
            setCrossProduct(facets_[i], x[i], y[i], z[i]);
        for (std::size_t i = 0; i < capacity; ++i) {
            const double size = std::sqrt(x[i] * x[i] + y[i] * y[i] + z[i] * z[i]);
            const double scale = 1 / (size + std::numeric_limits<double>::min());
            x[i] *= scale;
            y[i] *= scale;
            z[i] *= scale;
        }
        for (std::size_t i = 0; i < capacity; ++i) {
            facets_[i][0] = static_cast<float>(x[i]);
            facets_[i][1] = static_cast<float>(y[i]);
            facets_[i][2] = static_cast<float>(z[i]);
        }
        return std::span(facets_).first(count_);
    }

private:
    static void setCrossProduct(const Facet& facet, double& x, double& y, double& z) {
        const auto edge = [&](std::size_t corner, std::size_t axis) {
            return static_cast<double>(facet[3 + 3 * corner + axis]) - static_cast<double>(facet[3 + axis]);
        };
        const Vector a = {edge(1, 0), edge(1, 1), edge(1, 2)};
        const Vector b = {edge(2, 0), edge(2, 1), edge(2, 2)};
        x = a[1] * b[2] - a[2] * b[1];
        y = a[2] * b[0] - a[0] * b[2];
        z = a[0] * b[1] - a[1] * b[0];
    }

    std::array<Facet, capacity> facets_{};
    std::size_t count_ = 0;
};

// All faces are triangles: buildModel() has left out or split the others.
template <class Use> void forEachFacet(const WorldMesh& mesh, Use use) {
    const float* const points = mesh.geometry->points.span().data();
    const std::span<const u32> corners = mesh.geometry->indices.span();
    const bool isMoved = mesh.world != identity;
    Facets facets;
    const auto flush = [&] {
        std::ranges::for_each(facets.withNormals(), use);
        facets.clear();
    };
    for (std::size_t i = 0; i < corners.size(); i += 3) {
        Facet& facet = facets.add();
        const auto setCorner = [&](std::size_t at, u32 corner) {
            std::memcpy(&facet[at], points + 3 * std::size_t(corner), 3 * sizeof(float));
        };
        setCorner(3, corners[i]);
        setCorner(6, corners[i + (mesh.isMirrored ? 2 : 1)]);
        setCorner(9, corners[i + (mesh.isMirrored ? 1 : 2)]);
        if (isMoved)
            transformPoints(mesh, std::span(facet).subspan(3), std::span(facet).subspan(3));
        if (facets.isFull())
            flush();
    }
    flush();
}

void writeBinary(ByteSink& out, const std::vector<WorldMesh>& meshes, u64 facets) {
    out.add(std::string(80, ' ')); // must not begin with "solid"
    out.add(littleEndian32(facets));
    for (const WorldMesh& mesh : meshes)
        forEachFacet(mesh, [&](const Facet& facet) {
            constexpr std::size_t attributes = 2; // no bits of them are set
            char* const to = out.reserve(sizeof facet + attributes);
            std::memcpy(to, facet.data(), sizeof facet);
            if constexpr (std::endian::native == std::endian::big)
                for (std::size_t i = 0; i < sizeof facet; i += sizeof(float))
                    std::reverse(to + i, to + i + sizeof(float));
            std::memset(to + sizeof facet, 0, attributes);
            out.advance(sizeof facet + attributes);
        });
}

void writeAscii(ByteSink& out, const std::vector<WorldMesh>& meshes) {
    out.add("solid scene\n");
    for (const WorldMesh& mesh : meshes)
        forEachFacet(mesh, [&](const Facet& facet) {
            addNumberLines<float>(out, "facet normal ", std::span(facet).first(3), 3);
            out.add("outer loop\n");
            addNumberLines<float>(out, "vertex ", std::span(facet).subspan(3), 3);
            out.add("endloop\nendfacet\n");
        });
    out.add("endsolid scene\n");
}

} // namespace

void writeStl(const Scene& scene, const std::string& path, Losses& losses, const TexturePaths& paths,
              const WriteOptions& options) {
    const Model model = buildModel(scene, TargetFormat{}, paths, losses);
    const std::vector<WorldMesh> meshes = worldMeshes(model, path, losses);
    u64 facets = 0;
    for (const WorldMesh& mesh : meshes)
        facets += mesh.geometry->indices.size() / 3;
    if (facets > std::numeric_limits<u32>::max())
        throw ContentError(path, "the scene has too many triangles for an STL file");
    vor::OutputFile file(path);
    ByteSink out(file);
    if (options.isAscii)
        writeAscii(out, meshes);
    else
        writeBinary(out, meshes, facets);
    out.flush();
    file.commit();
}

} // namespace vrn::convert
