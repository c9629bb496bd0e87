#include "convert/import/AssimpImport.h"

#include "convert/import/ImportContext.h"
#include "convert/import/ModelFiles.h"
#include "convert/shared/Extension.h"
#include "scene/core/File.h"

#include <algorithm>
#include <assimp/Importer.hpp>
#include <assimp/ProgressHandler.hpp>
#include <filesystem>
#include <new>
#include <optional>

namespace vrn::convert {

namespace {

// What cannot be read at all is another thing than what makes no sense.
void openOrThrow(const std::string& path) {
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(path, error);
    if (std::filesystem::exists(status) && !is_regular_file(status) && !is_directory(status))
        throw FileError(path, "only regular files can be converted from formats other than .vrn");
    File file = File::open(std::string_view(path));
    char first = 0;
    (void)file.read(first);
    if (!file.error().isEmpty())
        throw FileError(path, file.error().buf());
}

// Hands on how far Assimp has come.
class Teller : public Assimp::ProgressHandler {
public:
    explicit Teller(const ReadListener& listener) : listener_(listener) {}

    bool Update(float) override { return true; }
    void UpdateFileRead(int step, int steps) override { // some are larger than an int can say
        if (step > 0 && step <= steps)
            listener_(static_cast<double>(step) / steps);
    }

private:
    const ReadListener& listener_;
};

// Nothing is joined, split, flipped or made anew: the file as it stands.
const aiScene* readWith(Assimp::Importer& importer, const std::string& path) {
    // Pivots as nodes of their own would be helpers that nobody asked for.
    importer.SetPropertyBool(AI_CONFIG_IMPORT_FBX_PRESERVE_PIVOTS, false);
    const aiScene* scene = importer.ReadFile(path, 0U);
    if (!scene && std::string_view(importer.GetErrorString()).find("bad_alloc") != std::string_view::npos)
        throw std::bad_alloc();
    if (!scene)
        throw ContentError(path, importer.GetErrorString());
    if (!scene->mRootNode)
        throw ContentError(path, "there is no scene in it");
    return scene;
}

void findAnimated(ImportContext& import) {
    for (const aiAnimation* animation : std::span(import.from.mAnimations, import.from.mNumAnimations))
        for (const aiNodeAnim* channel : std::span(animation->mChannels, animation->mNumChannels))
            import.animated.emplace(textOf(channel->mNodeName));
}

void noteUnused(ImportContext& import) {
    for (unsigned i = 0; i < import.from.mNumMaterials; ++i)
        if (!import.materials.contains(i) && !isAdded(import, i))
            import.losses.add("materials that no mesh has", String(import.from.mMaterials[i]->GetName().C_Str()));
}

} // namespace

void importModel(const std::string& path, Scene& scene, const TexturePaths& paths, Losses& losses,
                 const ReadListener& listener) {
    openOrThrow(path);
    const std::string extension = extensionOf(path);
    const bool isGltf = extension == ".glb" || extension == ".gltf";
    const std::optional<GltfFile> gltf =
        isGltf ? std::optional<GltfFile>(std::in_place, path) : std::optional<GltfFile>(std::in_place);
    if (const std::string danger = gltf->danger(); !danger.empty())
        throw ContentError(path, danger);
    Assimp::Importer importer;
    importer.SetIOHandler(isGltf ? new ModelFiles(path, gltf->bytes()) : new ModelFiles()); // which it deletes
    if (listener)
        importer.SetProgressHandler(new Teller(listener)); // which it deletes
    const aiScene* from = readWith(importer, path);
    ImportContext import{
        .from = *from, .scene = scene, .losses = losses, .isGltf = isGltf, .gltf = *gltf, .paths = paths};
    findAnimated(import);
    importMeshes(import);
    importNodes(import);
    importCameras(import);
    importLights(import);
    importAnimations(import);
    noteUnused(import);
    for (const std::string& lost : gltf->losses())
        losses.add(lost, String(std::filesystem::path(path).filename().string()));
}

} // namespace vrn::convert
