#include "convert/export/ObjWriter.h"

#include "convert/export/MaterialLibrary.h"
#include "convert/export/NumberLines.h"
#include "convert/export/SingleLine.h"
#include "convert/export/WorldMeshes.h"
#include "convert/model/Inputs.h"
#include "convert/model/ModelBuilder.h"
#include "convert/shared/UniqueNames.h"

#include <filesystem>
#include <optional>

namespace vrn::convert {

namespace {

constexpr std::size_t verticesPerPart = 4096;
constexpr const char* changedName =
    "names that are not unique, begin or end with spaces, or contain control characters";

class ObjWriter {
public:
    ObjWriter(vor::OutputFile& file, const Model& model, Losses& losses)
        : out_(file), model_(model), losses_(losses),
          hasColors_(std::ranges::any_of(model.geometries, [](const Geometry& g) { return !g.colors.empty(); })) {}

    // The names of the materials in the library, one for each.
    const std::vector<std::string>& addLibrary(const std::string& file) {
        (void)materialNames_.make(noMaterialName);
        for (const Material& material : model_.materials)
            materials_.push_back(uniqueName(*material.source, materialNames_));
        out_.add("mtllib " + singleLine(file) + '\n');
        return materials_;
    }

    void add(const WorldMesh& mesh) {
        const Geometry& geometry = *mesh.geometry;
        out_.add("o " + uniqueName(*mesh.source, objectNames_) + '\n');
        out_.add("g " + groupName(mesh) + '\n'); // a group holds until the next one, too
        useMaterial(mesh.material);
        const Corners corners = cornersOf(geometry);
        addPoints(mesh);
        if (corners.hasCoordinates)
            addTextureCoordinates(geometry);
        if (corners.hasNormals)
            addNormals(mesh);
        addFaces(mesh, corners);
        points_ += geometry.vertices();
        coordinates_ += corners.hasCoordinates ? geometry.vertices() : 0;
        normals_ += corners.hasNormals ? geometry.vertices() : 0;
        if (mesh.isFirst)
            addLosses(geometry, corners);
    }

    void finish() { out_.flush(); }

private:
    std::string uniqueName(const Node& node, UniqueNames& names) {
        const std::string original(displayName(node).view());
        std::string name = names.make(singleLine(original));
        if (name != original)
            losses_.add(changedName, node);
        return name;
    }

    std::string groupName(const WorldMesh& mesh) {
        const Node& source = *mesh.geometry->source;
        const std::string original(displayName(source).view());
        std::string name = singleLine(original);
        if (name != original && mesh.isFirst)
            losses_.add(changedName, source);
        return name;
    }

    // What the corners of a mesh refer to besides points.
    struct Corners {
        static constexpr std::size_t maxLength = 3 * 21; // three integers of 64 bits with what follows each
        bool hasCoordinates;
        bool hasNormals;
    };
    static Corners cornersOf(const Geometry& geometry) {
        const bool arePoints = geometry.topology == Topology::Points;
        const bool areLines = geometry.topology == Topology::Lines;
        return {.hasCoordinates = !geometry.uvsets.empty() && !arePoints,
                .hasNormals = !geometry.normals.empty() && !arePoints && !areLines};
    }

    void addLosses(const Geometry& geometry, const Corners& corners) {
        const auto add = [&](bool isLost, const char* what) {
            if (isLost)
                losses_.add(what, *geometry.source);
        };
        add(hasColors_ && geometry.colors.empty(), lostWithoutColors);
        add(hasAlpha(geometry), "alpha of the colours of meshes");
        add(!geometry.normals.empty() && !corners.hasNormals, "normals of points and lines");
        add(!geometry.uvsets.empty() && !corners.hasCoordinates, "texture coordinates of points");
        add(corners.hasCoordinates && !isFlipExact(geometry), lostDigits);
    }

    static bool hasAlpha(const Geometry& geometry) {
        for (std::size_t i = 3; i < geometry.colors.size(); i += 4)
            if (geometry.colors[i] != 1)
                return true;
        return false;
    }

    // A material holds until the next one.
    void useMaterial(u32 material) {
        if (material == material_)
            return;
        material_ = material;
        out_.add("usemtl " + (material == none ? noMaterialName : materials_[material]) + '\n');
    }

    // Passes the numbers of some vertices at a time to `use`, which gets them with `components` each.
    template <class Use> static void inParts(std::span<const float> numbers, std::size_t components, Use use) {
        while (!numbers.empty()) {
            const auto part = numbers.first(std::min(numbers.size(), verticesPerPart * components));
            use(part);
            numbers = numbers.subspan(part.size());
        }
    }

    void addPoints(const WorldMesh& mesh) {
        std::vector<float> points;
        std::span<const float> colors = mesh.geometry->colors.span();
        inParts(mesh.geometry->points.span(), 3, [&](std::span<const float> part) {
            points.resize(part.size());
            transformPoints(mesh, part, points);
            if (!hasColors_)
                return addNumberLines<float>(out_, "v ", points, 3);
            const std::size_t count = std::min(part.size() / 3 * 4, colors.size());
            addColored(points, colors.first(count));
            colors = colors.subspan(count);
        });
    }

    // Colours after the coordinates are an extension that most programs read. Some count them from the first colour of
    // the file, so that all points have one or none has.
    void addColored(std::span<const float> points, std::span<const float> colors) {
        std::vector<float> both;
        both.reserve(2 * points.size());
        for (std::size_t i = 0; i < points.size() / 3; ++i) {
            both.insert(both.end(), &points[3 * i], &points[3 * i] + 3);
            if (colors.empty())
                both.insert(both.end(), 3, 1.F);
            else
                both.insert(both.end(), &colors[4 * i], &colors[4 * i] + 3);
        }
        addNumberLines<float>(out_, "v ", both, 6);
    }

    void addTextureCoordinates(const Geometry& geometry) {
        std::vector<float> coordinates;
        inParts(geometry.uvsets[0].span(), 2, [&](std::span<const float> part) {
            coordinates.assign(part.begin(), part.end());
            for (std::size_t i = 1; i < part.size(); i += 2)
                coordinates[i] = flipped(part[i]);
            addNumberLines<float>(out_, "vt ", coordinates, 2);
        });
    }

    void addNormals(const WorldMesh& mesh) {
        std::vector<float> normals;
        inParts(mesh.geometry->normals.span(), 3, [&](std::span<const float> part) {
            normals.resize(part.size());
            transformNormals(mesh, part, normals);
            addNumberLines<float>(out_, "vn ", normals, 3);
        });
    }

    void addFaces(const WorldMesh& mesh, const Corners& corners) {
        const Geometry& geometry = *mesh.geometry;
        const bool arePoints = geometry.topology == Topology::Points;
        const bool areLines = geometry.topology == Topology::Lines;
        const char* const prefix = arePoints ? "p " : areLines ? "l " : "f ";
        if (!corners.hasCoordinates && !corners.hasNormals && geometry.topology != Topology::Polygons)
            return addSimpleFaces(mesh, prefix);
        forEachFace(geometry, [&](std::span<const u32> face) {
            char* const first = out_.reserve(2 + face.size() * Corners::maxLength + vor::listSlack);
            char* to = std::copy_n(prefix, 2, first);
            forEachCorner(mesh, face, [&](u32 corner) { to = writeCorner(to, corner, corners); });
            to[-1] = '\n';
            out_.advance(static_cast<std::size_t>(to - first));
        });
    }

    // Faces of corners that have points only, all with the same number of them.
    void addSimpleFaces(const WorldMesh& mesh, const char* prefix) {
        const std::size_t perFace = cornersPerFace(mesh.geometry->topology);
        std::vector<u64> indices;
        indices.reserve(verticesPerPart + perFace);
        const auto flush = [&] {
            addNumberLines<u64>(out_, prefix, indices, perFace);
            indices.clear();
        };
        forEachFace(*mesh.geometry, [&](std::span<const u32> face) {
            forEachCorner(mesh, face, [&](u32 corner) { indices.push_back(points_ + corner + 1); });
            if (indices.size() >= verticesPerPart)
                flush();
        });
        flush();
    }

    // Writes `point`, `point/coordinates`, `point//normal` or `point/coordinates/normal`, and a space.
    char* writeCorner(char* to, u32 corner, const Corners& corners) const {
        to = writeIndex(to, points_ + corner);
        if (corners.hasCoordinates || corners.hasNormals)
            *to++ = '/';
        if (corners.hasCoordinates)
            to = writeIndex(to, coordinates_ + corner);
        if (corners.hasNormals) {
            *to++ = '/';
            to = writeIndex(to, normals_ + corner);
        }
        *to++ = ' ';
        return to;
    }

    // Indices start at 1.
    static char* writeIndex(char* to, u64 index) {
        ++index;
        return vor::writeNumberList(std::span<const u64>(&index, 1), to) - 1; // without the space
    }

    ByteSink out_;
    const Model& model_;
    Losses& losses_;
    UniqueNames materialNames_;
    UniqueNames objectNames_;
    std::vector<std::string> materials_;
    u32 material_ = none;
    bool hasColors_; // of any mesh
    u64 points_ = 0; // written so far
    u64 coordinates_ = 0;
    u64 normals_ = 0;
};

} // namespace

void writeObj(const Scene& scene, const std::string& path, Losses& losses, const TexturePaths& paths) {
    constexpr TargetFormat obj{.hasPolygons = true,
                               .hasLinesAndPoints = true,
                               .hasMaterials = true,
                               .hasNormals = true,
                               .hasColors = true,
                               .maxUvsets = 1};
    const Model model = buildModel(scene, obj, paths, losses);
    const std::vector<WorldMesh> meshes = worldMeshes(model, path, losses);
    vor::OutputFile file(path);
    ObjWriter writer(file, model, losses);
    std::optional<vor::OutputFile> library;
    if (!model.materials.empty()) {
        const std::string name = std::filesystem::path(path).replace_extension(".mtl").string();
        library.emplace(name);
        writeMaterialLibrary(*library, model, writer.addLibrary(std::filesystem::path(name).filename().string()),
                             losses);
    }
    for (const WorldMesh& mesh : meshes)
        writer.add(mesh);
    writer.finish();
    if (library)
        library->commit();
    file.commit();
}

} // namespace vrn::convert
