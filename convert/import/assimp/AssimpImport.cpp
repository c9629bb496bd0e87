#include "convert/import/assimp/AssimpImport.h"

#include "convert/import/Readable.h"
#include "convert/import/assimp/AssimpLog.h"
#include "convert/import/assimp/AssimpValues.h"
#include "convert/import/assimp/FbxImport.h"
#include "convert/import/assimp/ImportAnimations.h"
#include "convert/import/assimp/ImportCamerasAndLights.h"
#include "convert/import/assimp/ImportMaterials.h"
#include "convert/import/assimp/ImportMeshes.h"
#include "convert/import/assimp/ImportNodes.h"
#include "convert/import/assimp/ImportSkins.h"
#include "convert/import/assimp/ModelFiles.h"
#include "convert/shared/Extension.h"

#include <assimp/Importer.hpp>
#include <assimp/ProgressHandler.hpp>
#include <assimp/config.h>
#include <assimp/postprocess.h>
#include <cmath>
#include <new>
#include <optional>

namespace vrn::convert {

namespace {

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

// Imports without post-processing except a validation: vertices are not joined, faces not split, normals not generated.
const aiScene* readWith(Assimp::Importer& importer, const std::string& path) {
    importer.SetPropertyBool(AI_CONFIG_IMPORT_FBX_PRESERVE_PIVOTS, false); // our own reader multiplies them out
    importer.SetPropertyBool(AI_CONFIG_IMPORT_NO_SKELETON_MESHES, true);   // made up for files without meshes
    const aiScene* scene = importer.ReadFile(path, aiProcess_ValidateDataStructure);
    if (!scene && std::string_view(importer.GetErrorString()).find("bad_alloc") != std::string_view::npos)
        throw std::bad_alloc();
    if (!scene)
        throw ContentError(path, importer.GetErrorString());
    if (!scene->mRootNode)
        throw ContentError(path, "it contains no scene");
    return scene;
}

// Whether Assimp gives the axes and the unit of such files to the root, which has no other transform.
bool hasPlacedRoot(const std::string& extension) {
    return extension == ".dae" || extension == ".zae" || extension == ".3ds";
}

Placement placementOf(const aiScene& scene) {
    const Matrix matrix = matrixOf(scene.mRootNode->mTransformation);
    Placement placement{.axes = matrix, .metres = length({matrix[0], matrix[1], matrix[2]})};
    for (std::size_t i = 0; i < 12; ++i)
        placement.axes[i] /= placement.metres;
    return placement;
}

void refuseEmpty(const ImportContext& context, const std::string& path) {
    const aiScene& from = context.from;
    const bool hasMesh = std::ranges::any_of(context.meshes, [](const auto& mesh) { return mesh.second != nullptr; });
    const bool hasNodes = from.mRootNode->mNumChildren != 0 || from.mNumCameras != 0 || from.mNumLights != 0;
    if (!hasMesh && (from.mNumMeshes != 0 || !hasNodes))
        throw ContentError(path, "nothing in it can be read");
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
                 const ReadOptions& options, const ReadListener& listener) {
    checkReadable(path);
    const AssimpLog log(losses);
    const std::string format = options.format.empty() ? extensionOf(path) : options.format;
    Assimp::Importer importer;
    auto* files = new ModelFiles();
    importer.SetIOHandler(files); // owned by the importer
    if (listener)
        importer.SetProgressHandler(new ProgressForwarder(listener)); // owned by the importer
    std::optional<FbxImport> fbx;
    if (format == ".fbx") {
        fbx.emplace(path, losses);
        files->replace(path, fbx->contentForAssimp());
    }
    const aiScene* from = readWith(importer, path);
    ImportContext context{.from = *from, .scene = scene, .losses = losses, .paths = paths};
    if (fbx) {
        fbx->setTransforms(context);
        context.placement = fbx->placement();
    } else if (hasPlacedRoot(format)) {
        context.placement = placementOf(*from);
    } else {
        context.rootMatrix = matrixOf(from->mRootNode->mTransformation);
    }
    context.placement = withOptions(context.placement, options.placement);
    collectAnimatedNodes(context);
    importMeshes(context);
    refuseEmpty(context, path);
    importNodes(context);
    importSkins(context);
    importCameras(context);
    importLights(context);
    if (fbx)
        fbx->importAnimations(context);
    else
        importAnimations(context);
    reportUnusedMaterials(context);
    scaleDistances(scene, context.placement.metres, losses);
}

} // namespace vrn::convert
