#include "convert/export/AssimpExport.h"

#include "convert/model/Inputs.h"
#include "convert/model/ModelBuilder.h"
#include "convert/model/NodeHierarchy.h"
#include "convert/shared/Errors.h"
#include "convert/shared/UniqueNames.h"
#include "scene/core/OutputFile.h"

#include <algorithm>
#include <assimp/Exporter.hpp>
#include <assimp/scene.h>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <map>
#include <memory>

namespace vrn::convert {

using vor::OutputFile;

namespace {

static_assert(sizeof(aiVector3D) == 3 * sizeof(float) && sizeof(aiColor4D) == 4 * sizeof(float),
              "arrays are copied as floats");

// Names must not contain line breaks in OBJ, nor exceed the capacity of an aiString.
std::string singleLine(std::string_view text) {
    constexpr std::size_t maxBytes = 900;
    std::string line(text.substr(0, maxBytes));
    for (char& c : line)
        if (static_cast<unsigned char>(c) < ' ' || c == '\x7F')
            c = '_';
    if (line.ends_with('\\')) // it would continue the line
        line.back() = '_';
    return line;
}

// Whether all points between the bounds of a geometry are finite in world space.
bool fitsInWorld(const Geometry& geometry, const Matrix& world) {
    std::array<double, 3> largest{};
    for (std::size_t i = 0; i < geometry.points.size(); ++i)
        largest[i % 3] = std::max(largest[i % 3], std::abs(static_cast<double>(geometry.points[i])));
    const auto bound = [&](std::size_t axis) {
        double sum = std::abs(world[12 + axis]);
        for (std::size_t i = 0; i < 3; ++i)
            sum += std::abs(world[4 * i + axis]) * largest[i];
        return sum;
    };
    return std::ranges::all_of(world, fitsFloat) && fitsFloat(bound(0)) && fitsFloat(bound(1)) && fitsFloat(bound(2));
}

// Builds a flat hierarchy with world matrices: the formats have no nodes, and Assimp recurses over deep hierarchies.
class SceneBuilder {
public:
    SceneBuilder(const Model& model, Losses& losses) : model_(model), losses_(losses) {}

    // Null if there is no mesh.
    std::unique_ptr<aiScene> build() {
        addMaterials();
        const std::vector<Matrix> worlds = worldMatrices(model_.nodes);
        for (std::size_t i = 0; i < model_.nodes.size(); ++i)
            if (model_.nodes[i].geometry != none)
                add(model_.nodes[i], worlds[i]);
        if (nodes_.empty())
            return nullptr;
        auto scene = std::make_unique<aiScene>();
        scene->mRootNode = new aiNode("scene");
        scene->mRootNode->mNumChildren = static_cast<unsigned>(nodes_.size());
        scene->mRootNode->mChildren = new aiNode*[nodes_.size()];
        for (std::size_t i = 0; i < nodes_.size(); ++i) {
            scene->mRootNode->mChildren[i] = nodes_[i].release();
            scene->mRootNode->mChildren[i]->mParent = scene->mRootNode;
        }
        moveTo(scene->mMeshes, scene->mNumMeshes, meshes_);
        moveTo(scene->mMaterials, scene->mNumMaterials, materials_);
        return scene;
    }

private:
    template <class T> static void moveTo(T**& list, unsigned& count, std::vector<std::unique_ptr<T>>& from) {
        count = static_cast<unsigned>(from.size());
        list = new T*[from.size()];
        for (std::size_t i = 0; i < from.size(); ++i)
            list[i] = from[i].release();
    }

    void addMaterials() {
        const aiString defaultName(materialNames_.make(AI_DEFAULT_MATERIAL_NAME)); // imported as no material
        for (const Material& material : model_.materials) {
            auto added = std::make_unique<aiMaterial>();
            const aiString name(uniqueName(*material.source, materialNames_));
            added->AddProperty(&name, AI_MATKEY_NAME);
            addColor(*added, material.baseColor, AI_MATKEY_COLOR_DIFFUSE);
            addColor(*added, material.emission, AI_MATKEY_COLOR_EMISSIVE);
            const auto opacity = static_cast<float>(material.baseColor[3]);
            added->AddProperty(&opacity, 1, AI_MATKEY_OPACITY);
            if (material.baseColorMap.texture != none)
                addTexture(*added, model_.textures[material.baseColorMap.texture]);
            materials_.push_back(std::move(added));
            losses_.add("material properties other than base colour, opacity, emission and base colour map",
                        *material.source);
        }
        auto defaultMaterial = std::make_unique<aiMaterial>(); // for meshes without a material
        defaultMaterial->AddProperty(&defaultName, AI_MATKEY_NAME);
        materials_.push_back(std::move(defaultMaterial));
    }

    std::string uniqueName(const Node& node, UniqueNames& names) {
        const std::string original(displayName(node).view());
        std::string name = names.make(singleLine(original));
        if (name != original)
            losses_.add("names that are not unique, too long or contain control characters", node);
        return name;
    }

    static void addColor(aiMaterial& material, std::span<const double> color, const char* key, unsigned type,
                         unsigned index) {
        const aiColor3D value(static_cast<float>(color[0]), static_cast<float>(color[1]), static_cast<float>(color[2]));
        material.AddProperty(&value, 1, key, type, index);
    }

    void addTexture(aiMaterial& material, const Texture& texture) {
        if (!texture.encoded.empty())
            losses_.add("embedded images", *texture.source);
        if (texture.file.empty())
            return;
        const aiString file(singleLine(texture.file));
        if (texture.file != file.C_Str())
            losses_.add("texture paths that are too long or contain control characters", *texture.source);
        material.AddProperty(&file, AI_MATKEY_TEXTURE_DIFFUSE(0));
    }

    void add(const ModelNode& node, const Matrix& world) {
        if (!fitsInWorld(model_.geometries[node.geometry], world))
            return losses_.add("meshes whose transformed points exceed the range of a float", *node.source);
        auto added = std::make_unique<aiNode>(uniqueName(*node.source, nodeNames_));
        for (unsigned row = 0; row < 4; ++row)
            for (unsigned column = 0; column < 4; ++column)
                added->mTransformation[row][column] = static_cast<float>(world[4 * column + row]);
        added->mNumMeshes = 1;
        added->mMeshes = new unsigned[1]{meshIndex(node)};
        nodes_.push_back(std::move(added));
        if (world != identity)
            losses_.add("transforms of nodes (applied to the points)", *node.source);
    }

    unsigned meshIndex(const ModelNode& node) {
        const Geometry& geometry = model_.geometries[node.geometry];
        const u32 assigned = node.material != none ? node.material : geometry.material;
        const u32 material = assigned != none ? assigned : static_cast<u32>(model_.materials.size());
        const auto [found, isNew] =
            meshIndices_.emplace(std::pair(node.geometry, material), static_cast<unsigned>(meshes_.size()));
        if (isNew)
            meshes_.push_back(makeMesh(geometry, material));
        return found->second;
    }

    std::unique_ptr<aiMesh> makeMesh(const Geometry& geometry, u32 material) {
        auto mesh = std::make_unique<aiMesh>();
        mesh->mName = uniqueName(*geometry.source, meshNames_);
        mesh->mMaterialIndex = material;
        mesh->mNumVertices = static_cast<unsigned>(geometry.vertices());
        mesh->mVertices = copy<aiVector3D>(geometry.points.span());
        if (!geometry.normals.empty())
            mesh->mNormals = copy<aiVector3D>(geometry.normals.span());
        if (!geometry.colors.empty())
            addColors(*mesh, geometry);
        if (!geometry.uvsets.empty())
            addTextureCoordinates(*mesh, geometry);
        addFaces(*mesh, geometry);
        return mesh;
    }

    template <class T> static T* copy(std::span<const float> numbers) {
        T* list = new T[numbers.size() * sizeof(float) / sizeof(T)];
        std::memcpy(static_cast<void*>(list), numbers.data(), numbers.size_bytes());
        return list;
    }

    void addColors(aiMesh& mesh, const Geometry& geometry) {
        mesh.mColors[0] = copy<aiColor4D>(geometry.colors.span());
        const auto isByte = [](float value) { return value == std::round(std::clamp(value, 0.F, 1.F) * 255) / 255; };
        if (!std::ranges::all_of(geometry.colors, isByte))
            losses_.add("colour precision beyond 8 bits", *geometry.source);
    }

    // The origin is the lower left corner of the image in Assimp, and the upper left one here.
    void addTextureCoordinates(aiMesh& mesh, const Geometry& geometry) {
        const std::span<const float> coordinates = geometry.uvsets[0].span();
        mesh.mNumUVComponents[0] = 2;
        mesh.mTextureCoords[0] = new aiVector3D[mesh.mNumVertices];
        bool isExact = true;
        for (std::size_t i = 0; i < mesh.mNumVertices; ++i) {
            const float v = 1 - coordinates[2 * i + 1];
            mesh.mTextureCoords[0][i] = {coordinates[2 * i], v, 0};
            isExact &= 1 - v == coordinates[2 * i + 1];
        }
        if (!isExact)
            losses_.add("last digits of texture coordinates (v is flipped)", *geometry.source);
    }

    static void addFaces(aiMesh& mesh, const Geometry& geometry) {
        const unsigned faceCorners = geometry.topology == Topology::Points  ? 1
                                     : geometry.topology == Topology::Lines ? 2
                                                                            : 3;
        const bool isMixed = geometry.topology == Topology::Polygons;
        mesh.mPrimitiveTypes = isMixed            ? aiPrimitiveType_POLYGON | aiPrimitiveType_TRIANGLE
                               : faceCorners == 3 ? aiPrimitiveType_TRIANGLE
                               : faceCorners == 2 ? aiPrimitiveType_LINE
                                                  : aiPrimitiveType_POINT;
        const std::size_t count = isMixed ? geometry.faceCounts.size() : geometry.indices.size() / faceCorners;
        mesh.mNumFaces = static_cast<unsigned>(count);
        mesh.mFaces = new aiFace[count];
        std::span<const u32> corners = geometry.indices.span();
        for (std::size_t i = 0; i < count; ++i) {
            aiFace& face = mesh.mFaces[i];
            face.mNumIndices = isMixed ? geometry.faceCounts[i] : faceCorners;
            face.mIndices = new unsigned[face.mNumIndices];
            std::ranges::copy(corners.first(face.mNumIndices), face.mIndices);
            corners = corners.subspan(face.mNumIndices);
        }
    }

    const Model& model_;
    Losses& losses_;
    UniqueNames materialNames_;
    UniqueNames nodeNames_;
    UniqueNames meshNames_;
    std::vector<std::unique_ptr<aiNode>> nodes_;
    std::vector<std::unique_ptr<aiMesh>> meshes_;
    std::vector<std::unique_ptr<aiMaterial>> materials_;
    std::map<std::pair<u32, u32>, unsigned> meshIndices_;
};

// Writes with the Assimp exporter of the ID `format`.
void write(const Model& model, const char* format, const std::string& path, Losses& losses) {
    const std::unique_ptr<aiScene> scene = SceneBuilder(model, losses).build();
    if (!scene)
        throw ContentError(path, "the scene has no mesh that can be written");
    Assimp::Exporter exporter;
    Assimp::ExportProperties properties;
    properties.SetPropertyString(AI_CONFIG_EXPORT_BLOB_NAME, std::filesystem::path(path).stem().string());
    const aiExportDataBlob* blob = exporter.ExportToBlob(scene.get(), format, 0U, &properties);
    if (!blob)
        throw ContentError(path, exporter.GetErrorString());
    OutputFile file(path);
    file.write(std::string_view(static_cast<const char*>(blob->data), blob->size));
    for (const aiExportDataBlob* next = blob->next; next; next = next->next) {
        OutputFile library((std::filesystem::path(path).parent_path() / next->name.C_Str()).string());
        library.write(std::string_view(static_cast<const char*>(next->data), next->size));
        library.commit();
    }
    file.commit();
}

} // namespace

void writeObj(const Scene& scene, const std::string& path, Losses& losses, const TexturePaths& paths) {
    constexpr TargetFormat obj{.hasPolygons = true, .hasLinesAndPoints = true, .hasMaterials = true, .maxUvsets = 1};
    write(buildModel(scene, obj, paths, losses), "obj", path, losses);
}

void writePly(const Scene& scene, const std::string& path, Losses& losses, const TexturePaths& paths) {
    constexpr TargetFormat ply{.hasPolygons = true, .maxPolygonCorners = 255, .hasColors = true, .maxUvsets = 1};
    write(buildModel(scene, ply, paths, losses), "ply", path, losses);
}

void writeStl(const Scene& scene, const std::string& path, Losses& losses, const TexturePaths& paths) {
    constexpr TargetFormat stl{};
    write(buildModel(scene, stl, paths, losses), "stlb", path, losses);
}

} // namespace vrn::convert
