// What comes from our own reader of FBX files: transforms, animations, axes and units. Assimp reads the rest.
#pragma once

#include "convert/import/assimp/ImportContext.h"
#include "convert/import/fbx/FbxScene.h"

namespace vrn::convert {

class FbxImport {
public:
    // Throws FileError and ContentError.
    FbxImport(const std::string& path, Losses& losses);

    [[nodiscard]] const Placement& placement() const noexcept { return scene_.placement(); }

    // What Assimp is to read: the file without animations, because Assimp ends the program for some that are valid, and
    // without a type of values that it does not know.
    [[nodiscard]] std::string contentForAssimp() const;

    // Call before importNodes(). Throws ContentError if the nodes are not those of the file.
    void setTransforms(ImportContext& context);

    // Call after setTransforms(), before importCameras().
    void setViews(ImportContext& context) const;

    // Call after importNodes().
    void hideNodes(ImportContext& context) const;
    void importAnimations(ImportContext& context) const;

private:
    void setView(aiCamera& camera, i64 model) const;

    FbxFile file_;
    FbxScene scene_;
    const std::string& path_;
    std::unordered_map<i64, const aiNode*> nodes_{}; // by the number of their model
};

} // namespace vrn::convert
