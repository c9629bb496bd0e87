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

// Some facets at a time, so that the square roots and divisions of several are computed in parallel. For compilers to
// use vector instructions, the loops go over arrays of one number of each facet, also of those that are not set.
class FacetBlock {
public:
    static constexpr std::size_t capacity = 64;

    // The facets of at most `capacity` triangles, three corners each. They are valid until the next call.
    std::span<const Facet> take(const WorldMesh& mesh, std::span<const u32> corners) {
        const std::size_t count = corners.size() / 3;
        const float* const points = mesh.geometry->points.span().data();
        const bool isMoved = mesh.world != identity;
        const std::size_t second = mesh.isMirrored ? 2 : 1;
        for (std::size_t i = 0; i < count; ++i) {
            Facet& facet = facets_[i];
            const auto setCorner = [&](std::size_t at, u32 corner) {
                std::memcpy(&facet[at], points + 3 * std::size_t(corner), 3 * sizeof(float));
            };
            setCorner(3, corners[3 * i]);
            setCorner(6, corners[3 * i + second]);
            setCorner(9, corners[3 * i + 3 - second]);
            if (isMoved)
                transformPoints(mesh, std::span(facet).subspan(3), std::span(facet).subspan(3));
            setEdges(i);
        }
        setNormals();
        for (std::size_t i = 0; i < count; ++i) {
            facets_[i][0] = normals_[0][i];
            facets_[i][1] = normals_[1][i];
            facets_[i][2] = normals_[2][i];
        }
        return std::span(facets_).first(count);
    }

private:
    template <class Number> using Numbers = std::array<std::array<Number, capacity>, 3>;

    // From the first corner to the others.
    void setEdges(std::size_t i) {
        const Facet& facet = facets_[i];
        const auto set = [&](std::size_t axis) {
            const auto from = static_cast<double>(facet[3 + axis]);
            a_[axis][i] = static_cast<double>(facet[6 + axis]) - from;
            b_[axis][i] = static_cast<double>(facet[9 + axis]) - from;
        };
        set(0);
        set(1);
        set(2);
    }

    // Of length 1; 0 0 0 for a triangle without an area. The squares of products of two floats fit a double.
    void setNormals() {
        for (std::size_t i = 0; i < capacity; ++i) {
            const double x = a_[1][i] * b_[2][i] - a_[2][i] * b_[1][i];
            const double y = a_[2][i] * b_[0][i] - a_[0][i] * b_[2][i];
            const double z = a_[0][i] * b_[1][i] - a_[1][i] * b_[0][i];
            const double scale = 1 / (std::sqrt(x * x + y * y + z * z) + std::numeric_limits<double>::min());
            normals_[0][i] = static_cast<float>(x * scale);
            normals_[1][i] = static_cast<float>(y * scale);
            normals_[2][i] = static_cast<float>(z * scale);
        }
    }

    std::array<Facet, capacity> facets_{};
    Numbers<double> a_{};
    Numbers<double> b_{};
    Numbers<float> normals_{};
};

// All faces are triangles: buildModel() has left out or split the others.
template <class Use> void forEachBlock(const WorldMesh& mesh, Use use) {
    FacetBlock block;
    std::span<const u32> corners = mesh.geometry->indices.span();
    while (!corners.empty()) {
        const auto part = corners.first(std::min(corners.size(), 3 * FacetBlock::capacity));
        use(block.take(mesh, part));
        corners = corners.subspan(part.size());
    }
}

void writeBinary(ByteSink& out, const std::vector<WorldMesh>& meshes, u64 facets) {
    out.add(std::string(80, ' ')); // must not begin with "solid"
    out.add(littleEndian32(facets));
    for (const WorldMesh& mesh : meshes)
        forEachBlock(mesh, [&](std::span<const Facet> block) {
            constexpr std::size_t attributes = 2; // no bits of them are set
            char* to = out.reserve(block.size() * (sizeof(Facet) + attributes));
            for (const Facet& facet : block) {
                std::memcpy(to, facet.data(), sizeof facet);
                if constexpr (std::endian::native == std::endian::big)
                    for (std::size_t i = 0; i < sizeof facet; i += sizeof(float))
                        std::reverse(to + i, to + i + sizeof(float));
                std::memset(to + sizeof facet, 0, attributes);
                to += sizeof facet + attributes;
            }
            out.advance(block.size() * (sizeof(Facet) + attributes));
        });
}

void writeAscii(ByteSink& out, const std::vector<WorldMesh>& meshes) {
    out.add("solid scene\n");
    for (const WorldMesh& mesh : meshes)
        forEachBlock(mesh, [&](std::span<const Facet> block) {
            for (const Facet& facet : block) {
                addNumberLines<float>(out, "facet normal ", std::span(facet).first(3), 3);
                out.add("outer loop\n");
                addNumberLines<float>(out, "vertex ", std::span(facet).subspan(3), 3);
                out.add("endloop\nendfacet\n");
            }
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
