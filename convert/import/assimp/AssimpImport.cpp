#include "convert/import/assimp/AssimpImport.h"

#include "convert/import/Readable.h"
#include "convert/import/assimp/AssimpValues.h"
#include "convert/import/assimp/ImportAnimations.h"
#include "convert/import/assimp/ImportCamerasAndLights.h"
#include "convert/import/assimp/ImportMaterials.h"
#include "convert/import/assimp/ImportMeshes.h"
#include "convert/import/assimp/ImportNodes.h"
#include "convert/import/assimp/ImportSkins.h"
#include "convert/import/assimp/ModelFiles.h"

#include <assimp/Importer.hpp>
#include <assimp/ProgressHandler.hpp>
#include <new>

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
    Assimp::Importer importer;
    importer.SetIOHandler(new ModelFiles()); // owned by the importer
    if (listener)
        importer.SetProgressHandler(new ProgressForwarder(listener)); // owned by the importer
    const aiScene* from = readWith(importer, path);
    ImportContext context{.from = *from, .scene = scene, .losses = losses, .paths = paths};
    collectAnimatedNodes(context);
    importMeshes(context);
    importNodes(context);
    importSkins(context);
    importCameras(context);
    importLights(context);
    importAnimations(context);
    reportUnusedMaterials(context);
}

} // namespace vrn::convert
