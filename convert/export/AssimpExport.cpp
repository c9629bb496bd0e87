#include "convert/export/AssimpExport.h"

#include "convert/model/ExportContext.h"
#include "convert/model/Inputs.h"
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

namespace {

static_assert(sizeof(aiVector3D) == 3 * sizeof(float) && sizeof(aiColor4D) == 4 * sizeof(float),
              "lists of numbers are copied as they stand");

// As one line of a text, which a name must not end, and not longer than Assimp's texts may be.
std::string lineOf(std::string_view text) {
    constexpr std::size_t mostBytes = 900;
    std::string line(text.substr(0, mostBytes));
    for (char& c : line)
        if (static_cast<unsigned char>(c) < ' ' || c == '\x7F')
            c = '_';
    if (line.ends_with('\\')) // that would go on with the next line
        line.back() = '_';
    return line;
}

// Whether all points of a geometry are finite where it stands, however they lie between its bounds.
bool fitsFloats(const Geometry& geometry, const Matrix& world) {
    std::array<double, 3> most{};
    for (std::size_t i = 0; i < geometry.points.size(); ++i)
        most[i % 3] = std::max(most[i % 3], std::abs(static_cast<double>(geometry.points[i])));
    const auto reach = [&](std::size_t axis) {
        double sum = std::abs(world[12 + axis]);
        for (std::size_t i = 0; i < 3; ++i)
            sum += std::abs(world[4 * i + axis]) * most[i];
        return sum;
    };
    return std::ranges::all_of(world, fitsFloat) && fitsFloat(reach(0)) && fitsFloat(reach(1)) && fitsFloat(reach(2));
}

// Meshes hang from one root, each with its place in the world: the formats know no more, and a deep hierarchy would be
// walked by recursion.
class SceneBuilder {
public:
    SceneBuilder(const Model& model, Losses& losses) : model_(model), losses_(losses) {}

    // Null if there is no mesh.
    std::unique_ptr<aiScene> build() {
        addMaterials();
        const std::vector<Matrix> worlds = worldMatrices(model_.placements);
        for (std::size_t i = 0; i < model_.placements.size(); ++i)
            if (model_.placements[i].geometry != none)
                add(model_.placements[i], worlds[i]);
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
        const aiString nameOfNone(materialNames_.make(AI_DEFAULT_MATERIAL_NAME)); // it is known to mean none
        for (const Material& material : model_.materials) {
            auto made = std::make_unique<aiMaterial>();
            const aiString name(uniqueName(*material.source, materialNames_));
            made->AddProperty(&name, AI_MATKEY_NAME);
            addColor(*made, material.baseColor, AI_MATKEY_COLOR_DIFFUSE);
            addColor(*made, material.emission, AI_MATKEY_COLOR_EMISSIVE);
            const auto opacity = static_cast<float>(material.baseColor[3]);
            made->AddProperty(&opacity, 1, AI_MATKEY_OPACITY);
            if (material.baseColorMap.texture != none)
                addTexture(*made, model_.textures[material.baseColorMap.texture]);
            materials_.push_back(std::move(made));
            losses_.add("materials but for colour, opacity, emission and the map of the colour", *material.source);
        }
        auto without = std::make_unique<aiMaterial>(); // for meshes that have none
        without->AddProperty(&nameOfNone, AI_MATKEY_NAME);
        materials_.push_back(std::move(without));
    }

    std::string uniqueName(const Node& node, UniqueNames& names) {
        const std::string own(displayName(node).view());
        std::string name = names.make(lineOf(own));
        if (name != own)
            losses_.add("names that others have, too, or that do not fit into a line", node);
        return name;
    }

    static void addColor(aiMaterial& material, std::span<const double> color, const char* key, unsigned type,
                         unsigned index) {
        const aiColor3D made(static_cast<float>(color[0]), static_cast<float>(color[1]), static_cast<float>(color[2]));
        material.AddProperty(&made, 1, key, type, index);
    }

    void addTexture(aiMaterial& material, const Texture& texture) {
        if (!texture.encoded.empty())
            losses_.add("images that stand in the scene itself", *texture.source);
        if (texture.file.empty())
            return;
        const aiString file(lineOf(texture.file));
        if (texture.file != file.C_Str())
            losses_.add("paths of textures that do not fit into a line", *texture.source);
        material.AddProperty(&file, AI_MATKEY_TEXTURE_DIFFUSE(0));
    }

    void add(const Placement& placement, const Matrix& world) {
        if (!fitsFloats(model_.geometries[placement.geometry], world))
            return losses_.add("meshes whose points would be beyond the range of a float", *placement.source);
        auto node = std::make_unique<aiNode>(uniqueName(*placement.source, nodeNames_));
        for (unsigned row = 0; row < 4; ++row)
            for (unsigned column = 0; column < 4; ++column)
                node->mTransformation[row][column] = static_cast<float>(world[4 * column + row]);
        node->mNumMeshes = 1;
        node->mMeshes = new unsigned[1]{meshOf(placement)};
        nodes_.push_back(std::move(node));
        if (world != identity)
            losses_.add("places of nodes, which are worked into their points", *placement.source);
    }

    unsigned meshOf(const Placement& placement) {
        const Geometry& geometry = model_.geometries[placement.geometry];
        const u32 own = placement.material != none ? placement.material : geometry.material;
        const u32 material = own != none ? own : static_cast<u32>(model_.materials.size());
        const auto [found, isNew] =
            meshNumbers_.emplace(std::pair(placement.geometry, material), static_cast<unsigned>(meshes_.size()));
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
            addCoordinates(*mesh, geometry);
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
        const auto isByte = [](float part) { return part == std::round(std::clamp(part, 0.F, 1.F) * 255) / 255; };
        if (!std::ranges::all_of(geometry.colors, isByte))
            losses_.add("digits of colours beyond 8 bits", *geometry.source);
    }

    // They begin in the lower left corner of the picture there, in the upper left one here.
    void addCoordinates(aiMesh& mesh, const Geometry& geometry) {
        const std::span<const float> coordinates = geometry.uvsets[0].span();
        mesh.mNumUVComponents[0] = 2;
        mesh.mTextureCoords[0] = new aiVector3D[mesh.mNumVertices];
        bool isSame = true;
        for (std::size_t i = 0; i < mesh.mNumVertices; ++i) {
            const float v = 1 - coordinates[2 * i + 1];
            mesh.mTextureCoords[0][i] = {coordinates[2 * i], v, 0};
            isSame &= 1 - v == coordinates[2 * i + 1];
        }
        if (!isSame)
            losses_.add("last digits of coordinates of uvsets, which are turned upside down", *geometry.source);
    }

    static void addFaces(aiMesh& mesh, const Geometry& geometry) {
        const unsigned each = geometry.topology == Topology::Points ? 1 : geometry.topology == Topology::Lines ? 2 : 3;
        const bool isMixed = geometry.topology == Topology::Polygons;
        mesh.mPrimitiveTypes = isMixed     ? aiPrimitiveType_POLYGON | aiPrimitiveType_TRIANGLE
                               : each == 3 ? aiPrimitiveType_TRIANGLE
                               : each == 2 ? aiPrimitiveType_LINE
                                           : aiPrimitiveType_POINT;
        const std::size_t count = isMixed ? geometry.faceCounts.size() : geometry.indices.size() / each;
        mesh.mNumFaces = static_cast<unsigned>(count);
        mesh.mFaces = new aiFace[count];
        std::span<const u32> corners = geometry.indices.span();
        for (std::size_t i = 0; i < count; ++i) {
            aiFace& face = mesh.mFaces[i];
            face.mNumIndices = isMixed ? geometry.faceCounts[i] : each;
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
    std::map<std::pair<u32, u32>, unsigned> meshNumbers_;
};

} // namespace

void exportModel(const Model& model, const char* format, const std::string& path, Losses& losses) {
    const std::unique_ptr<aiScene> scene = SceneBuilder(model, losses).build();
    if (!scene)
        throw ContentError(path, "the scene has no mesh that could be written");
    Assimp::Exporter exporter;
    Assimp::ExportProperties properties;
    properties.SetPropertyString(AI_CONFIG_EXPORT_BLOB_NAME, std::filesystem::path(path).stem().string());
    const aiExportDataBlob* blob = exporter.ExportToBlob(scene.get(), format, 0U, &properties);
    if (!blob)
        throw ContentError(path, exporter.GetErrorString());
    OutputFile file(path);
    file.write(std::string_view(static_cast<const char*>(blob->data), blob->size));
    for (const aiExportDataBlob* beside = blob->next; beside; beside = beside->next) {
        OutputFile other((std::filesystem::path(path).parent_path() / beside->name.C_Str()).string());
        other.write(std::string_view(static_cast<const char*>(beside->data), beside->size));
        other.commit();
    }
    file.commit();
}

} // namespace vrn::convert
