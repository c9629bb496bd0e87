// Writes the members of a glTF file except meshes, materials and buffers.
#pragma once

#include "convert/export/GltfMeshes.h"

namespace vrn::convert {

class GltfSceneWriter {
public:
    // Inverse bind matrices, animations and instances go into `buffer`.
    GltfSceneWriter(const Model& model, GltfMeshes& meshes, GltfBuffer& buffer, GltfExtensions& extensions,
                    Losses& losses, JsonText& json)
        : model_(model), meshes_(meshes), buffer_(buffer), extensions_(extensions), losses_(losses), json_(json) {}

    void writeNodes();
    void writeCameras();
    void writeSkins();
    void writeAnimations();
    void writeExtensions(); // with lights and variants; last, because it lists those that were used

private:
    void writeScenes();
    void writeRoots(const std::vector<u32>& roots);
    void reportDeepNodes();
    void writeNode(const ModelNode& node);
    void writeNodeExtensions(const ModelNode& node);
    void writeTransform(const ModelNode& node);
    void writeLight(const Light& light);

    const Model& model_;
    GltfMeshes& meshes_;
    GltfBuffer& buffer_;
    GltfExtensions& extensions_;
    Losses& losses_;
    JsonText& json_;
};

} // namespace vrn::convert
