#include "convert/import/AssimpImport.h"

#include "convert/import/AssimpValues.h"
#include "convert/import/ImportAnimations.h"
#include "convert/import/ImportCamerasAndLights.h"
#include "convert/import/ImportMaterials.h"
#include "convert/import/ImportMeshes.h"
#include "convert/import/ImportNodes.h"
#include "convert/import/ImportSkins.h"
#include "convert/import/ModelFiles.h"
#include "convert/shared/Extension.h"
#include "scene/core/File.h"

#include <assimp/Importer.hpp>
#include <assimp/ProgressHandler.hpp>
#include <filesystem>
#include <new>
#include <optional>

namespace vrn::convert {

namespace {

// Distinguishes files that cannot be read, a FileError, from invalid ones, a ContentError.
void checkReadable(const std::string& path) {
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(path, error);
    if (std::filesystem::exists(status) && !is_regular_file(status) && !is_directory(status))
        throw FileError(path, "only regular files can be converted from formats other than .vrn");
    vor::File file = vor::File::open(std::string_view(path));
    char first = 0;
    (void)file.read(first);
    if (!file.error().isEmpty())
        throw FileError(path, file.error().buf());
}

// Forwards Assimp's progress.
class ProgressForwarder : public Assimp::ProgressHandler {
public:
    explicit ProgressForwarder(const ReadListener& listener) : listener_(listener) {}

    bool Update(float) override { return true; } // false would cancel

    // For large files, the byte counts overflow.
    void UpdateFileRead(int step, int steps) override {
        if (step > 0 && step <= steps)
            listener_(static_cast<double>(step) / steps);
    }

private:
    const ReadListener& listener_;
};

// Imports without post-processing: vertices are not joined, faces not split, normals not generated.
const aiScene* readWith(Assimp::Importer& importer, const std::string& path) {
    // Otherwise Assimp adds helper nodes for pivots.
    importer.SetPropertyBool(AI_CONFIG_IMPORT_FBX_PRESERVE_PIVOTS, false);
    const aiScene* scene = importer.ReadFile(path, 0U);
    if (!scene && std::string_view(importer.GetErrorString()).find("bad_alloc") != std::string_view::npos)
        throw std::bad_alloc();
    if (!scene)
        throw ContentError(path, importer.GetErrorString());
    if (!scene->mRootNode)
        throw ContentError(path, "it contains no scene");
    return scene;
}

void collectAnimatedNodes(ImportContext& context) {
    for (const aiAnimation* animation : std::span(context.from.mAnimations, context.from.mNumAnimations))
        for (const aiNodeAnim* channel : std::span(animation->mChannels, animation->mNumChannels))
            context.animatedNodes.emplace(viewOf(channel->mNodeName));
}

void reportUnusedMaterials(ImportContext& context) {
    for (unsigned i = 0; i < context.from.mNumMaterials; ++i)
        if (!context.materials.contains(i) && !isDefaultMaterial(context, i))
            context.losses.add("unused materials", String(context.from.mMaterials[i]->GetName().C_Str()));
}

} // namespace

void importModel(const std::string& path, Scene& scene, const TexturePaths& paths, Losses& losses,
                 const ReadListener& listener) {
    checkReadable(path);
    const std::string extension = extensionOf(path);
    const bool isGltf = extension == ".glb" || extension == ".gltf";
    const std::optional<GltfFile> gltfFile =
        isGltf ? std::optional<GltfFile>(std::in_place, path) : std::optional<GltfFile>(std::in_place);
    if (const std::string reason = gltfFile->rejection(); !reason.empty())
        throw ContentError(path, reason);
    Assimp::Importer importer;
    importer.SetIOHandler(isGltf ? new ModelFiles(path, gltfFile->preparedBytes())
                                 : new ModelFiles()); // owned by the importer
    if (listener)
        importer.SetProgressHandler(new ProgressForwarder(listener)); // owned by the importer
    const aiScene* from = readWith(importer, path);
    ImportContext context{
        .from = *from, .scene = scene, .losses = losses, .isGltf = isGltf, .gltf = *gltfFile, .paths = paths};
    collectAnimatedNodes(context);
    importMeshes(context);
    importNodes(context);
    importSkins(context);
    importCameras(context);
    importLights(context);
    importAnimations(context);
    reportUnusedMaterials(context);
    for (const std::string& loss : gltfFile->losses())
        losses.add(loss, String(std::filesystem::path(path).filename().string()));
}

} // namespace vrn::convert
