#include "convert/export/PlyWriter.h"

#include "convert/export/NumberLines.h"
#include "convert/export/WorldMeshes.h"
#include "convert/model/ModelBuilder.h"
#include "convert/shared/Errors.h"

#include <bit>
#include <cmath>

namespace vrn::convert {

namespace {

// What the vertices of all meshes have: an attribute of any mesh is one of all.
struct VertexLayout {
    bool hasNormals = false;
    bool hasColors = false;
    bool hasCoordinates = false;
};

struct Counts {
    u64 vertices = 0;
    u64 faces = 0;
    u64 edges = 0;
    std::size_t largestFace = 0;
};

bool isFlat(const Geometry& geometry) {
    return geometry.topology == Topology::Triangles || geometry.topology == Topology::Polygons;
}

// Some readers take a line break at the start of the data for the end of the header.
bool beginsWithLineBreak(float number, std::endian order) {
    const u32 bits = std::bit_cast<u32>(number);
    const u32 first = order == std::endian::little ? bits & 0xFF : bits >> 24;
    return first == '\n' || first == '\r';
}

// Writes records of numbers, as binary or as text. Numbers are put at a cursor, which each function returns advanced.
class RecordWriter {
public:
    RecordWriter(vor::OutputFile& file, bool isAscii, std::endian order)
        : out_(file), isAscii_(isAscii), isSwapped_(order != std::endian::native) {}

    void text(std::string_view text) { out_.add(text); }

    [[nodiscard]] char* begin(std::size_t numbers) {
        first_ = out_.reserve(numbers * vor::listNumberCapacity + vor::listSlack);
        return first_;
    }
    [[nodiscard]] char* real(char* to, float number) const {
        return isAscii_ ? vor::writeNumberList(std::span<const float>(&number, 1), to)
                        : put(to, std::bit_cast<u32>(number));
    }
    [[nodiscard]] char* byte(char* to, u32 number) const {
        if (isAscii_)
            return asText(to, number);
        *to = static_cast<char>(number);
        return to + 1;
    }
    [[nodiscard]] char* integer(char* to, u32 number) const { return isAscii_ ? asText(to, number) : put(to, number); }
    void end(char* to) {
        if (isAscii_)
            to[-1] = '\n'; // instead of the space after the last number
        out_.advance(static_cast<std::size_t>(to - first_));
    }
    void finish() { out_.flush(); }

private:
    [[nodiscard]] char* put(char* to, u32 bits) const {
        bits = isSwapped_ ? __builtin_bswap32(bits) : bits;
        std::memcpy(to, &bits, sizeof bits);
        return to + sizeof bits;
    }
    static char* asText(char* to, u32 number) { return vor::writeNumberList(std::span<const u32>(&number, 1), to); }

    ByteSink out_;
    bool isAscii_;
    bool isSwapped_;
    char* first_ = nullptr;
};

// Points are the vertices that are listed; other meshes have all.
std::size_t verticesOf(const Geometry& geometry) {
    return geometry.topology == Topology::Points ? geometry.indices.size() : geometry.vertices();
}
std::size_t vertexAt(const Geometry& geometry, std::size_t i) {
    return geometry.topology == Topology::Points ? geometry.indices[i] : i;
}

class PlyWriter {
public:
    PlyWriter(vor::OutputFile& file, const std::vector<WorldMesh>& meshes, Losses& losses, bool isAscii)
        : order_(orderFor(meshes)), isAscii_(isAscii || beginsWithLineBreak(firstNumber(meshes), order_)),
          out_(file, isAscii_, order_), meshes_(meshes), losses_(losses) {
        for (const WorldMesh& mesh : meshes)
            count(*mesh.geometry);
    }

    void write(const std::string& path) {
        if (counts_.vertices > std::numeric_limits<u32>::max())
            throw ContentError(path, "the scene has too many points for a PLY file");
        writeHeader();
        for (const WorldMesh& mesh : meshes_)
            writeVertices(mesh);
        writeFaces(true);
        writeFaces(false);
        out_.finish();
    }

private:
    // Little endian, unless the data would begin with a line break.
    static std::endian orderFor(const std::vector<WorldMesh>& meshes) {
        return beginsWithLineBreak(firstNumber(meshes), std::endian::little) ? std::endian::big : std::endian::little;
    }

    static float firstNumber(const std::vector<WorldMesh>& meshes) {
        const Geometry& geometry = *meshes[0].geometry;
        std::array<float, 3> first{};
        transformPoints(meshes[0], geometry.points.span().subspan(3 * vertexAt(geometry, 0), 3), first);
        return first[0];
    }

    void count(const Geometry& geometry) {
        layout_.hasNormals |= !geometry.normals.empty();
        layout_.hasColors |= !geometry.colors.empty();
        layout_.hasCoordinates |= !geometry.uvsets.empty();
        counts_.vertices += verticesOf(geometry);
        forEachFace(geometry, [&](std::span<const u32> face) {
            counts_.faces += isFlat(geometry);
            counts_.edges += geometry.topology == Topology::Lines;
            counts_.largestFace = std::max(counts_.largestFace, face.size());
        });
    }

    void writeHeader() {
        const char* const binary = order_ == std::endian::little ? "binary_little_endian" : "binary_big_endian";
        const std::string index = counts_.vertices > std::numeric_limits<i32>::max() ? "uint" : "int";
        std::string header = std::string("ply\nformat ") + (isAscii_ ? "ascii" : binary) + " 1.0\n";
        header += "element vertex " + std::to_string(counts_.vertices) +
                  "\nproperty float x\nproperty float y\nproperty float z\n";
        if (layout_.hasNormals)
            header += "property float nx\nproperty float ny\nproperty float nz\n";
        if (layout_.hasColors)
            header += "property uchar red\nproperty uchar green\nproperty uchar blue\nproperty uchar alpha\n";
        if (layout_.hasCoordinates)
            header += "property float s\nproperty float t\n";
        if (counts_.faces != 0)
            header += "element face " + std::to_string(counts_.faces) + "\nproperty list " +
                      (hasLongFaces() ? "uint " : "uchar ") + index + " vertex_indices\n";
        if (counts_.edges != 0)
            header += "element edge " + std::to_string(counts_.edges) + "\nproperty " + index + " vertex1\nproperty " +
                      index + " vertex2\n";
        out_.text(header + "end_header\n");
    }

    [[nodiscard]] bool hasLongFaces() const noexcept { return counts_.largestFace > 255; }

    void writeVertices(const WorldMesh& mesh) {
        const Geometry& geometry = *mesh.geometry;
        const auto addLoss = [&](bool isLost, const char* what) {
            if (isLost && mesh.isFirst)
                losses_.add(what, *geometry.source);
        };
        addLoss(layout_.hasNormals && geometry.normals.empty(),
                "missing normals of meshes beside others (written as 0)");
        addLoss(layout_.hasColors && geometry.colors.empty(), lostWithoutColors);
        addLoss(layout_.hasCoordinates && geometry.uvsets.empty(),
                "missing uvsets of meshes beside others (written as 0)");
        addLoss(!isFlipExact(geometry), lostDigits);
        bool areBytes = true;
        for (std::size_t first = 0; first < verticesOf(geometry); first += verticesPerPart) {
            const std::size_t count = std::min(verticesPerPart, verticesOf(geometry) - first);
            const Part part = transformedPart(mesh, first, count);
            for (std::size_t i = 0; i < count; ++i) {
                char* to = writeVectors(out_.begin(maxVertexNumbers), part, i);
                if (layout_.hasColors)
                    areBytes &= writeColor(to, geometry, vertexAt(geometry, first + i));
                if (layout_.hasCoordinates)
                    to = writeCoordinates(to, geometry, vertexAt(geometry, first + i));
                out_.end(to);
            }
        }
        addLoss(!areBytes, "colour precision beyond 8 bits");
    }

    // The points and normals of some vertices in world space; no normals if no mesh has any.
    struct Part {
        std::vector<float> points;
        std::vector<float> normals;
    };

    Part transformedPart(const WorldMesh& mesh, std::size_t first, std::size_t count) const {
        const Geometry& geometry = *mesh.geometry;
        Part part{.points = gather(geometry.points.span(), geometry, first, count), .normals = {}};
        transformPoints(mesh, part.points, part.points);
        if (!layout_.hasNormals)
            return part;
        part.normals.resize(3 * count);
        if (!geometry.normals.empty()) {
            part.normals = gather(geometry.normals.span(), geometry, first, count);
            transformNormals(mesh, part.normals, part.normals);
        }
        return part;
    }

    static std::vector<float> gather(std::span<const float> vectors, const Geometry& geometry, std::size_t first,
                                     std::size_t count) {
        std::vector<float> gathered(3 * count);
        for (std::size_t i = 0; i < count; ++i)
            std::memcpy(&gathered[3 * i], &vectors[3 * vertexAt(geometry, first + i)], 3 * sizeof(float));
        return gathered;
    }

    char* writeVectors(char* to, const Part& part, std::size_t i) const {
        for (std::size_t axis = 0; axis < 3; ++axis)
            to = out_.real(to, part.points[3 * i + axis]);
        if (!part.normals.empty())
            for (std::size_t axis = 0; axis < 3; ++axis)
                to = out_.real(to, part.normals[3 * i + axis]);
        return to;
    }

    // Returns whether bytes hold the colour exactly.
    bool writeColor(char*& to, const Geometry& geometry, std::size_t i) const {
        bool isExact = true;
        for (std::size_t channel = 0; channel < 4; ++channel) {
            const float value = geometry.colors.empty() ? 1.F : geometry.colors[4 * i + channel];
            const float rounded = std::round(std::clamp(value, 0.F, 1.F) * 255);
            isExact &= value == rounded / 255;
            to = out_.byte(to, static_cast<u32>(rounded));
        }
        return isExact;
    }

    char* writeCoordinates(char* to, const Geometry& geometry, std::size_t i) const {
        const bool isEmpty = geometry.uvsets.empty();
        to = out_.real(to, isEmpty ? 0 : geometry.uvsets[0][2 * i]);
        return out_.real(to, isEmpty ? 0 : flipped(geometry.uvsets[0][2 * i + 1]));
    }

    // The faces or the edges.
    void writeFaces(bool flat) {
        u32 firstVertex = 0;
        for (const WorldMesh& mesh : meshes_) {
            const Geometry& geometry = *mesh.geometry;
            if (flat ? isFlat(geometry) : geometry.topology == Topology::Lines)
                forEachFace(geometry, [&](std::span<const u32> face) { writeFace(mesh, face, firstVertex, flat); });
            firstVertex += static_cast<u32>(verticesOf(geometry));
        }
    }

    void writeFace(const WorldMesh& mesh, std::span<const u32> face, u32 firstVertex, bool hasCount) {
        char* to = out_.begin(1 + face.size());
        const auto count = static_cast<u32>(face.size());
        if (hasCount)
            to = hasLongFaces() ? out_.integer(to, count) : out_.byte(to, count);
        forEachCorner(mesh, face, [&](u32 corner) { to = out_.integer(to, firstVertex + corner); });
        out_.end(to);
    }

    static constexpr std::size_t verticesPerPart = 4096;
    static constexpr std::size_t maxVertexNumbers = 12;

    std::endian order_;
    bool isAscii_;
    RecordWriter out_;
    const std::vector<WorldMesh>& meshes_;
    Losses& losses_;
    VertexLayout layout_;
    Counts counts_;
};

} // namespace

void writePly(const Scene& scene, const std::string& path, Losses& losses, const TexturePaths& paths,
              const WriteOptions& options) {
    constexpr TargetFormat ply{
        .hasPolygons = true, .hasLinesAndPoints = true, .hasNormals = true, .hasColors = true, .maxUvsets = 1};
    const Model model = buildModel(scene, ply, paths, losses);
    const std::vector<WorldMesh> meshes = worldMeshes(model, path, losses);
    vor::OutputFile file(path);
    PlyWriter(file, meshes, losses, options.isAscii).write(path);
    file.commit();
}

} // namespace vrn::convert
