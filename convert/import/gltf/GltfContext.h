// The state that the steps of importing a glTF file share.
#pragma once

#include "convert/import/gltf/GltfAccessors.h"
#include "convert/shared/Losses.h"
#include "convert/shared/NodeInputs.h"
#include "convert/shared/NodeMaker.h"
#include "convert/shared/TexturePaths.h"
#include "scene/Scene.h"

#include <vector>

namespace vrn::convert {

struct GltfContext {
    GltfValue root;
    GltfBuffers& buffers;
    GltfAccessors& accessors;
    Scene& scene;
    Losses& losses;
    const TexturePaths& paths;
    NodeMaker maker{scene};
    // The counterparts of the objects in the file, by their indices there; null for those that were left out.
    std::vector<Node*> textures{};
    std::vector<Node*> materials{};
    std::vector<std::vector<Node*>> meshes{}; // one node for each primitive
    std::vector<Node*> nodes{};
    std::vector<Node*> skins{};

    // A node for an object of the file, with its name and its `extras`.
    Node& create(const char* type, const GltfValue& object, const char* fallback) {
        Node& node = maker.create(type, object["name"].text(), fallback);
        keepExtras(node, "extras", object);
        return node;
    }

    // The application's own data in an object, as JSON text.
    static void keepExtras(Node& node, const char* input, const GltfValue& object) {
        if (const GltfValue extras = object["extras"]; extras.exists())
            setAt(node, input, AttrData::string(extras.json()));
    }

    // A new object of the array at a path.
    [[nodiscard]] Input& append(Node& node, std::string_view path) const {
        Input* object = appendObject(node, path);
        if (!object)
            root.refuse("it has more " + std::string(path) + " than the limit of arrays");
        return *object;
    }

    // Appends an attribute that only the application gives a meaning; `read` reads its accessor as a type.
    void appendAttribute(Node& node, std::string_view list, std::string_view name, const GltfValue& accessor,
                         auto read) const {
        Input& attribute = append(node, list);
        setMember(attribute, "name", AttrData::string(name));
        setMember(attribute, "values", read(floatTypeOf(accessors.componentsOf(accessor))));
        if (accessors.areMatrices2(accessor))
            setMember(attribute, "matrices", AttrData::boolean(true));
    }

    // The weights of morph targets.
    static void setWeights(Node& node, const GltfValue& weights) {
        if (!weights.exists())
            return;
        AttrData values = AttrData::buffer(DataType::Float, weights.size());
        weights.forEach([&](const GltfValue& weight, u64 i) {
            values.elements<float>()[i] = static_cast<float>(weight.number(0));
        });
        set(node, "weights", std::move(values));
    }

    [[nodiscard]] Node* materialOf(const GltfValue& index) const {
        return index.exists() ? materials[index.indexIn(root["materials"])] : nullptr;
    }
};

} // namespace vrn::convert
