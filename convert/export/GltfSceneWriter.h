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
    // An array member with an object per item; omitted if there are no items.
    template <class Items> void writeArray(const char* name, const Items& items, auto writeItem) {
        if (std::empty(items))
            return;
        json_.key(name).array([&] {
            for (const auto& item : items)
                json_.object([&] { writeItem(item); });
        });
    }

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
