#include "convert/import/assimp/AssimpImport.h"

#include "convert/import/assimp/AssimpLog.h"
#include "convert/import/assimp/AssimpValues.h"
#include "convert/import/assimp/BvhCheck.h"
#include "convert/import/assimp/ColladaRepair.h"
#include "convert/import/assimp/DxfCheck.h"
#include "convert/import/assimp/FbxImport.h"
#include "convert/import/assimp/ImportAnimations.h"
#include "convert/import/assimp/ImportCamerasAndLights.h"
#include "convert/import/assimp/ImportMaterials.h"
#include "convert/import/assimp/ImportMeshes.h"
#include "convert/import/assimp/ImportNodes.h"
#include "convert/import/assimp/ImportSkins.h"
#include "convert/import/assimp/ModelFiles.h"
#include "convert/import/assimp/MtlTransforms.h"
#include "convert/import/assimp/ObjCheck.h"
#include "convert/import/assimp/ObjVertices.h"
#include "convert/import/assimp/PlyCheck.h"
#include "convert/import/assimp/StlText.h"
#include "convert/shared/Extension.h"
#include "convert/shared/FileContent.h"
#include "convert/shared/Readable.h"

#include <algorithm>
#include <assimp/Importer.hpp>
#include <assimp/ProgressHandler.hpp>
#include <assimp/config.h>
#include <assimp/postprocess.h>
#include <cmath>
#include <new>
#include <optional>
#include <span>
#include <utility>
#include <vector>

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

constexpr char nothingRead[] = "nothing in it can be read";

// Readers mark scenes that may have nothing but nodes.
bool isEmpty(const aiScene& scene) {
    const bool isMarked = (scene.mFlags & AI_SCENE_FLAGS_INCOMPLETE) != 0;
    return scene.mNumMeshes == 0 && scene.mNumCameras == 0 && scene.mNumLights == 0 && scene.mNumAnimations == 0 &&
           (scene.mRootNode->mNumChildren == 0 || !isMarked);
}

// Some readers forget kinds of faces, and the validation would refuse what is in order otherwise.
void correctPrimitiveTypes(const aiScene& scene) {
    for (aiMesh* mesh : std::span(scene.mMeshes, scene.mNumMeshes))
        for (const aiFace& face : std::span(mesh->mFaces, mesh->mNumFaces))
            if (face.mNumIndices != 0)
                mesh->mPrimitiveTypes |= static_cast<unsigned>(AI_PRIMITIVE_TYPE_FOR_N_INDICES(face.mNumIndices));
}

// The validation refuses point clouds without faces, too, so they have one meanwhile.
class FacesOfPointClouds {
public:
    explicit FacesOfPointClouds(const aiScene& scene) {
        for (aiMesh* mesh : std::span(scene.mMeshes, scene.mNumMeshes))
            if (mesh->mNumFaces == 0 && mesh->mNumVertices != 0) {
                mesh->mFaces = new aiFace[1]; // owned by the mesh
                mesh->mFaces[0].mIndices = new unsigned[1]{0};
                mesh->mFaces[0].mNumIndices = 1;
                mesh->mNumFaces = 1;
                mesh->mPrimitiveTypes |= aiPrimitiveType_POINT;
                clouds_.push_back(mesh);
            }
    }
    void remove() {
        for (aiMesh* mesh : clouds_) {
            delete[] std::exchange(mesh->mFaces, nullptr);
            mesh->mNumFaces = 0;
        }
    }

private:
    std::vector<aiMesh*> clouds_{};
};

// The validation refuses scenes without meshes, such as the motion of a skeleton, unless they are marked.
void markWithoutMeshes(const aiScene& scene) {
    if (scene.mNumMeshes == 0)
        const_cast<aiScene&>(scene).mFlags |= AI_SCENE_FLAGS_INCOMPLETE;
}

const aiScene* validated(Assimp::Importer& importer, const aiScene& scene) {
    correctPrimitiveTypes(scene);
    markWithoutMeshes(scene);
    FacesOfPointClouds faces(scene);
    const aiScene* valid = importer.ApplyPostProcessing(aiProcess_ValidateDataStructure);
    if (valid) // otherwise the scene is gone
        faces.remove();
    return valid;
}

// Imports without post-processing except a validation: vertices are not joined, faces not split, normals not generated.
const aiScene* readWith(Assimp::Importer& importer, const std::string& path, const std::string& alias) {
    importer.SetPropertyBool(AI_CONFIG_IMPORT_FBX_PRESERVE_PIVOTS, false); // our own reader multiplies them out
    importer.SetPropertyBool(AI_CONFIG_IMPORT_NO_SKELETON_MESHES, true);   // made up for files without meshes
    const aiScene* scene = importer.ReadFile(alias, 0U);
    if (scene && scene->mRootNode && isEmpty(*scene))
        throw ContentError(path, nothingRead);
    if (scene)
        scene = validated(importer, *scene);
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

void refuseWithoutMeshes(const ImportContext& context, const std::string& path) {
    const bool hasMesh = std::ranges::any_of(context.meshes, [](const auto& mesh) { return mesh.second != nullptr; });
    if (context.from.mNumMeshes != 0 && !hasMesh)
        throw ContentError(path, nothingRead);
}

void collectAnimatedNodes(ImportContext& context) {
    for (const aiAnimation* animation : std::span(context.from.mAnimations, context.from.mNumAnimations))
        for (const aiNodeAnim* channel : std::span(animation->mChannels, animation->mNumChannels))
            context.animatedNodes.emplace(viewOf(channel->mNodeName));
}

void reportUnusedMaterials(ImportContext& context) {
    for (unsigned i = 0; i < context.from.mNumMaterials; ++i)
        if (!context.materials.contains(i) && !isDefaultMaterial(context, i))
            context.losses.add("unused materials", labelOf(context.from.mMaterials[i]->GetName(), "material", i));
}

// Assimp recognises formats by extensions.
std::string aliasOf(const std::string& path, const std::string& format, ModelFiles& files) {
    if (extensionOf(path) == format)
        return path;
    files.replace(path + format, files.contentOf(path));
    return path + format;
}

// Checks and changes what Assimp would misread.
void prepare(const std::string& path, const std::string& format, ModelFiles& files, Losses& losses) {
    if (format == ".obj") {
        const std::string content = readText(path);
        checkObj(content, path, losses);
        if (std::string changed = withUniformVertices(content, path, losses); !changed.empty())
            files.replace(path, std::move(changed));
    } else if (format == ".stl") {
        if (std::string changed = withLowerCaseKeywords(readText(path)); !changed.empty())
            files.replace(path, std::move(changed));
    } else if (format == ".bvh") {
        checkBvh(readText(path), path);
    } else if (format == ".dxf") {
        checkDxf(readText(path), path, losses);
    } else if (format == ".dae") {
        files.replace(path, withNamedCameras(readText(path)));
    } else if (format == ".ply") {
        const std::string content = readText(path);
        checkPly(content, path, losses);
        if (beginsDataWithLineEnd(content))
            files.replace(path, withLineEndBeforeData(content));
    }
}

} // namespace

std::set<std::string> assimpExtensions() {
    std::string list;
    Assimp::Importer().GetExtensionList(list); // `*.3ds;*.obj;...`
    std::set<std::string> extensions;
    for (std::size_t begin = 0; begin < list.size();) {
        const std::size_t end = std::min(list.find(';', begin), list.size());
        extensions.insert(list.substr(begin + 1, end - begin - 1));
        begin = end + 1;
    }
    return extensions;
}

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
    MtlTransforms mtl(losses);
    files->onLibrary([&](const std::string& library) { return mtl.take(library); });
    std::optional<FbxImport> fbx;
    if (format == ".fbx")
        files->replace(path, fbx.emplace(path, losses).contentForAssimp());
    else
        prepare(path, format, *files, losses);
    const aiScene* from = readWith(importer, path, aliasOf(path, format, *files));
    ImportContext context{.from = *from, .scene = scene, .losses = losses, .paths = paths, .mtl = mtl};
    context.isTriangulated = options.isTriangulated;
    if (fbx) {
        fbx->setTransforms(context);
        fbx->setViews(context);
        context.placement = fbx->placement();
    } else if (hasPlacedRoot(format)) {
        context.placement = placementOf(*from);
    } else {
        context.rootMatrix = matrixOf(from->mRootNode->mTransformation);
    }
    context.placement = withOptions(context.placement, options.placement);
    collectAnimatedNodes(context);
    importMeshes(context);
    refuseWithoutMeshes(context, path);
    importNodes(context);
    importSkins(context);
    importCameras(context);
    importLights(context);
    if (fbx) {
        fbx->hideNodes(context);
        fbx->importAnimations(context);
    } else {
        importAnimations(context);
    }
    reportUnusedMaterials(context);
    scaleDistances(scene, context.placement.metres, losses);
}

} // namespace vrn::convert
